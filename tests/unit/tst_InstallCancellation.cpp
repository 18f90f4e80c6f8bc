// SPDX-License-Identifier: MIT
#include "async/Cancellation.h"
#include "errors/PlatformError.h"
#include "support/Checked.h"
#include "support/InstallTest.h"
#include "support/StandInTool.h"
#include "support/ZipWriter.h"

#include <QStandardPaths>
#include <QTimer>
#include <QtTest>

#include <chrono>
#include <csignal>
#include <functional>

#include <dlfcn.h>

namespace fs = std::filesystem;
using namespace cartloom;
using namespace std::chrono_literals;

namespace
{

QByteArray quoted(const fs::path& path)
{
    return '\'' + QByteArray::fromStdString(path.native()) + '\'';
}

#ifdef Q_OS_LINUX
/// Called for each change of permissions in this process.
std::function<void()> onChangedPermissions = [] {};
#endif

} // namespace

#ifdef Q_OS_LINUX
/// Interposed: the inspection drops permission bits with it.
extern "C" int fchmodat(int folder, const char* path, mode_t mode, int flags)
{
    onChangedPermissions();
    const auto real = reinterpret_cast<decltype(&fchmodat)>(::dlsym(RTLD_NEXT, "fchmodat"));
    return real(folder, path, mode, flags);
}
#endif

/// A cancellation in each phase of an installation over an installed copy.
class InstallCancellationTest : public InstallTest
{
    Q_OBJECT

    [[nodiscard]] fs::path tools() const { return m_sandbox->scratch() / "tools"; }
    [[nodiscard]] fs::path mark() const { return m_sandbox->scratch() / "mark"; }
    [[nodiscard]] fs::path proceed() const { return m_sandbox->scratch() / "proceed"; }

    /// Fires the source as soon as the condition holds, from the event loop.
    template <typename Condition>
    static void cancelOnce(QTimer& poll, const CancellationSource& source, Condition condition)
    {
        QObject::connect(&poll, &QTimer::timeout, &poll, [&poll, source, condition] {
            if (condition()) {
                poll.stop();
                source.cancel();
            }
        });
        poll.start(0);
    }

    void onlyThePreviousCopyIsThere()
    {
        QCOMPARE(tagOf(Paths::ares()), QByteArray("v147"));
        QCOMPARE(AresInstaller::installedVersion(), QStringLiteral("v147"));
        QCOMPARE(Sandbox::storage(), installed);
    }

private Q_SLOTS:
    void tokenFiredBeforeTheDownloadStopsIt()
    {
        install(makeRelease(QStringLiteral("v147")));
        const auto asked = m_server->requests().size();
        const CancellationSource source;
        source.cancel();
        const auto failure =
            installFailure<PlatformError>(makeRelease(QStringLiteral("v148")), source.token());
        QCOMPARE(failure.value().code, UrlError::cancelled);
        QCOMPARE(m_server->requests().size(), asked);
        onlyThePreviousCopyIsThere();
    }

    void tokenFiredDuringUnpackingKillsTheTool_data()
    {
        QTest::addColumn<QByteArray>("before");
        QTest::newRow("blocked") << QByteArray();
        QTest::newRow("some of the files unpacked")
            << QByteArray("for folder; do :; done; mkdir \"$folder/ares.app\" || exit 9");
        QTest::newRow("SIGTERM ignored") << QByteArray("trap '' TERM");
        QTest::newRow("standard error closed") << QByteArray("exec 2>&-");
    }

    void tokenFiredDuringUnpackingKillsTheTool()
    {
        QFETCH(const QByteArray, before);
        install(makeRelease(QStringLiteral("v147")));
        const auto release = makeRelease(QStringLiteral("v148"));
        const StandInTool tool(tools(), before + "\necho $$ >" + quoted(mark()) + ".part\nmv " +
                                            quoted(mark()) + ".part " + quoted(mark()) +
                                            "\nexec '" SCRIPTED_CHILD "'");
        const auto survived = m_sandbox->scratch() / "survived";
        scriptChild(
            {QStringLiteral("wait ") + toText(proceed()), QStringLiteral("touch ") + toText(survived)});
        const CancellationSource source;
        QTimer poll;
        cancelOnce(poll, source, [&] {
            const bool blocked = fs::exists(mark());
            // A tool that is not killed goes on after a while.
            if (blocked)
                QTimer::singleShot(10s, &poll, [this] { writeFile(proceed(), ""); });
            return blocked;
        });
        QVERIFY(installFailure<CancellationError>(release, source.token()));
        QVERIFY(!fs::exists(survived));
        CHECKED(onlyThePreviousCopyIsThere());
        QCOMPARE(::kill(readFile(mark()).trimmed().toInt(), 0), -1);
        QCOMPARE(errno, ESRCH);
    }

#ifdef Q_OS_LINUX
    void tokenFiredDuringTheInspectionStopsBeforeTheSwap()
    {
        install(makeRelease(QStringLiteral("v147")));
        const auto release = makeRelease(QStringLiteral("v148"));
        // A bit for the inspection to drop.
        const auto realTool = toPath(QStandardPaths::findExecutable(QStringLiteral("bsdtar")));
        const StandInTool tool(tools(), quoted(realTool) + " \"$@\" && chmod g+s " +
                                            quoted(Paths::aresNew() / "ares.app"));
        const CancellationSource source;
        onChangedPermissions = [&source] { source.cancel(); };
        const auto failure = installFailure<CancellationError>(release, source.token());
        onChangedPermissions = [] {};
        QVERIFY(source.token().isCancelled());
        QVERIFY(failure);
        onlyThePreviousCopyIsThere();
    }
#endif

    void tokenFiredAfterTheSwapBeganChangesNothing()
    {
        install(makeRelease(QStringLiteral("v147")));
        const auto release = makeRelease(QStringLiteral("v148"));
        const CancellationSource source;
        QTimer poll;
        cancelOnce(poll, source, [] { return fs::exists(Paths::aresOld()); });
        QCOMPARE(install(release, source.token()), Paths::ares() / "ares.app");
        QCOMPARE(tagOf(Paths::ares()), QByteArray("v148"));
        QCOMPARE(tagOf(Paths::aresOld()), QByteArray("v147"));
        QCOMPARE(AresInstaller::installedVersion(), QStringLiteral("v148"));
    }
};

QTEST_GUILESS_MAIN(InstallCancellationTest)
#include "tst_InstallCancellation.moc"
