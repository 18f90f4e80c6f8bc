// SPDX-License-Identifier: MIT
#pragma once

#include "support/SmallVolume.h"

#include <QCoreApplication>
#include <QtTest>

namespace cartloom
{

/// What main does for a test that mounts small volumes; skips all of it where that is not allowed.
template <typename Test>
int runWithSmallVolumes(int argc, char** argv)
{
    if (!SmallVolume::prepare()) {
        qInfo("skipped: this system does not let this user mount a volume");
        // What the test runner takes for a test that was skipped.
        constexpr int skipped = 77;
        return skipped;
    }
    QCoreApplication application(argc, argv);
    Test test;
    return QTest::qExec(&test, argc, argv);
}

} // namespace cartloom
