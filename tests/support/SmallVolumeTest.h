// SPDX-License-Identifier: MIT
#pragma once

#include "storage/Paths.h"
#include "support/FaultTest.h"
#include "support/SmallVolume.h"

#include <QCoreApplication>
#include <QtTest>

#include <optional>

namespace cartloom
{

/// Faults with the storage folder on a small volume.
class SmallVolumeTest : public FaultTest
{
    Q_OBJECT

protected:
    static constexpr long long plenty = 64 * 1024 * 1024;
    static inline const auto full = QStringLiteral("Your disk is full. Free some space and try again.");

    std::optional<SmallVolume> m_volume;

    /// True if the operation failed for lack of space. Checks the details and that nothing has changed.
    bool failed(const char* step, bool ofTheGameDownload = false)
    {
        if (message() != full)
            return false;
        const auto details = m_model->errorDetails();
        const auto told = QStringLiteral("No space left on device");
        const bool isTheTools = !details.startsWith(QLatin1String(step)) && details.contains(told);
        const auto ours = QLatin1String(step) + QStringLiteral("\nNSPOSIXErrorDomain 28\n") + told;
        shows({full, isTheTools ? details : ours}, ofTheGameDownload);
        nothingChanged();
        return true;
    }

protected Q_SLOTS:
    void init()
    {
        FaultTest::init();
        std::filesystem::create_directories(Paths::support());
        m_volume.emplace(Paths::support(), plenty);
    }

    void cleanup()
    {
        m_recorder.reset();
        m_model.reset();
        m_volume.reset();
        FaultTest::cleanup();
    }
};

/// The main function of a test that mounts small volumes. Skips the test if that is not allowed.
template <typename Test>
int runWithSmallVolumes(int argc, char** argv)
{
    if (!SmallVolume::prepare()) {
        qInfo("skipped: this system does not let this user mount a volume");
        // SKIP_RETURN_CODE of the test.
        constexpr int skipped = 77;
        return skipped;
    }
    QCoreApplication application(argc, argv);
    Test test;
    return QTest::qExec(&test, argc, argv);
}

} // namespace cartloom
