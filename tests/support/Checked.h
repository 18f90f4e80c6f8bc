// SPDX-License-Identifier: MIT
#pragma once

#include <QtTest>

/// Ends the calling function after a helper's check has failed: QVERIFY in a helper only leaves the helper.
#define CHECKED(...)                                                                                         \
    do {                                                                                                     \
        __VA_ARGS__;                                                                                         \
        if (QTest::currentTestFailed())                                                                      \
            return;                                                                                          \
    } while (false)
