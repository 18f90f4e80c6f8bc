// SPDX-License-Identifier: MIT
#include "errors/AppError.h"
#include "errors/PlatformError.h"
#include "support/InstallTest.h"
#include "support/Unprivileged.h"
#include "support/ZipWriter.h"

#include <QtTest>

#include <mutex>
#include <system_error>

namespace fs = std::filesystem;
using namespace cartloom;

class InstallationTest : public InstallTest
{
    Q_OBJECT

private Q_SLOTS:
    void firstInstallationLeavesTheEmulatorAndItsTagOnly()
    {
        QCOMPARE(install(makeRelease(QStringLiteral("v147"))), Paths::ares() / "ares.app");
        QCOMPARE(Sandbox::storage(), installed);
        QCOMPARE(readFile(Paths::aresVersion()), QByteArray("v147"));
        QCOMPARE(AresInstaller::installedVersion(), QStringLiteral("v147"));
    }

    void progressIsReportedUpToTheSize()
    {
        const auto release = makeRelease(QStringLiteral("v147"));
        std::mutex mutex;
        qint64 last = 0;
        resultOf(AresInstaller::install(release,
                                        [&](qint64 received, qint64) {
                                            const std::lock_guard guard(mutex);
                                            last = received;
                                        },
                                        {}));
        QCOMPARE(last, release.size);
    }

    void releaseOfUnknownSizeIsNotCheckedForIt_data()
    {
        QTest::addColumn<qint64>("size");
        QTest::newRow("zero") << qint64(0);
        QTest::newRow("negative") << qint64(-5);
    }

    void releaseOfUnknownSizeIsNotCheckedForIt()
    {
        QFETCH(const qint64, size);
        auto release = makeRelease(QStringLiteral("v147"));
        release.size = size;
        QCOMPARE(install(release), Paths::ares() / "ares.app");
    }

    void downloadOfAnotherSizeIsRefused_data()
    {
        QTest::addColumn<qint64>("size");
        QTest::addColumn<qint64>("expected");
        QTest::newRow("one less") << qint64(1233) << qint64(1234);
        QTest::newRow("one more") << qint64(1235) << qint64(1234);
        QTest::newRow("smallest size that is checked") << qint64(2) << qint64(1);
    }

    void downloadOfAnotherSizeIsRefused()
    {
        QFETCH(const qint64, size);
        QFETCH(const qint64, expected);
        writeSparse(archive(), {}, size);
        const auto failure = installFailure<AppError>(release(QStringLiteral("v147"), expected)).value();
        QCOMPARE(failure.message,
                 QStringLiteral("The Ares download is damaged (got %1 bytes, expected %2). Please try again.")
                     .arg(size)
                     .arg(expected));
        QCOMPARE(failure.details, QString());
        QCOMPARE(Sandbox::storage(), QStringList());
    }

    void endlessDownloadEndsPastTheSize_data()
    {
        QTest::addColumn<qint64>("size");
        QTest::addColumn<qint64>("limit");
        QTest::newRow("announced") << qint64(3'000'000) << qint64(3'000'000);
        QTest::newRow("not announced") << qint64(0) << qint64(1'000'000'000);
    }

    void endlessDownloadEndsPastTheSize()
    {
        QFETCH(const qint64, size);
        QFETCH(const qint64, limit);
        const RawServer endless([](RawConnection& connection, const RawRequest&) {
            connection.send("HTTP/1.1 200 OK\r\n\r\n");
            connection.sendEndlessly(QByteArray(1024 * 1024, 'x'), 2'000'000'000);
        });
        auto release = this->release(QStringLiteral("v147"), size);
        release.downloadURL = endless.url().toEncoded().toStdString();
        const auto failure = installFailure<AppError>(release).value();
        QCOMPARE(failure.message,
                 QStringLiteral("The Ares download is damaged (got %1 bytes, expected %2). Please try again.")
                     .arg(limit + 1)
                     .arg(limit));
        QCOMPARE(Sandbox::storage(), QStringList());
    }

    void emulatorOneFolderDownIsFound()
    {
        QCOMPARE(install(makeRelease(QStringLiteral("v147"), "ares-v147")),
                 Paths::ares() / "ares-v147/ares.app");
    }

    void archiveWithoutAnEmulatorInReachIsRefused_data()
    {
        QTest::addColumn<QString>("place");
        QTest::newRow("six levels down") << QStringLiteral("1/2/3/4/5");
        QTest::newRow("hidden") << QStringLiteral(".hidden");
    }

    void archiveWithoutAnEmulatorInReachIsRefused()
    {
        QFETCH(const QString, place);
        const auto failure =
            installFailure<AppError>(makeRelease(QStringLiteral("v147"), toPath(place))).value();
        QCOMPARE(failure.message,
                 QStringLiteral("The Ares download did not contain ares.app. Please try again."));
        QCOMPARE(failure.details, QString());
        QCOMPARE(Sandbox::storage(), QStringList());
    }

    void onlyTheLastCopyIsKept()
    {
        for (const auto& tag : {QStringLiteral("v146"), QStringLiteral("v147"), QStringLiteral("v148")})
            install(makeRelease(tag));
        QCOMPARE(tagOf(Paths::ares()), QByteArray("v148"));
        QCOMPARE(tagOf(Paths::aresOld()), QByteArray("v147"));
        QCOMPARE(AresInstaller::installedVersion(), QStringLiteral("v148"));
        QCOMPARE(Sandbox::storage(), (QStringList{QStringLiteral("Ares"), QStringLiteral("Ares-old"),
                                                  QStringLiteral("ares-version.txt")}));
    }

    void keptCopyStaysIfTheNewOneIsRefused_data()
    {
        QTest::addColumn<QByteArray>("archive");
        QTest::newRow("cannot be unpacked") << QByteArray("no archive");
        QTest::newRow("without an emulator") << QByteArray();
    }

    void keptCopyStaysIfTheNewOneIsRefused()
    {
        QFETCH(const QByteArray, archive);
        install(makeRelease(QStringLiteral("v146")));
        install(makeRelease(QStringLiteral("v147")));
        writeFile(this->archive(), archive.isEmpty() ? zipOf({}) : archive);
        QVERIFY(installFailure<AppError>(release(QStringLiteral("v148"), 0)));
        QCOMPARE(tagOf(Paths::ares()), QByteArray("v147"));
        QCOMPARE(tagOf(Paths::aresOld()), QByteArray("v146"));
    }

    void leftoversOfInterruptedRunsAreRemoved()
    {
        writeFile(Paths::aresNew() / "ares.app/half", "of an earlier one");
        writeFile(Paths::newWorkDir("download-ares") / "ares.zip", "half");
        writeFile(Paths::newWorkDir("download-game") / "Quillet64.z64", "half");
        install(makeRelease(QStringLiteral("v147")));
        QVERIFY(!fs::exists(Paths::ares() / "ares.app/half"));
        QCOMPARE(Sandbox::storage(), installed);
    }

    void undeletableKeptCopyIsSetAside()
    {
        install(makeRelease(QStringLiteral("v146")));
        install(makeRelease(QStringLiteral("v147")));
        const auto release = makeRelease(QStringLiteral("v148"));
        m_sandbox->giveToEveryone();
        fs::permissions(Paths::aresOld() / "ares.app/Contents", fs::perms::none);
        {
            const Unprivileged unprivileged;
            install(release);
        }
        QCOMPARE(tagOf(Paths::ares()), QByteArray("v148"));
        QCOMPARE(tagOf(Paths::aresOld()), QByteArray("v147"));
        QCOMPARE(Sandbox::storage().size(), 4);
        resultOf(AresInstaller::discardOldCopy());
        QCOMPARE(Sandbox::storage(), installed);
    }

    void keptCopyStaysIfNoneIsInstalled()
    {
        writeFile(Paths::aresOld() / "ares.app/tag", "v146");
        install(makeRelease(QStringLiteral("v147")));
        QCOMPARE(tagOf(Paths::ares()), QByteArray("v147"));
        QCOMPARE(tagOf(Paths::aresOld()), QByteArray("v146"));
    }

    void releaseIsNotMixedWithAnotherUsersFiles()
    {
        if (::geteuid() != 0)
            QSKIP("needs a second user");
        install(makeRelease(QStringLiteral("v146")));
        const auto release = makeRelease(QStringLiteral("v147"));
        writeFile(Paths::aresNew(), "of another user");
        fs::permissions(Paths::support(), fs::perms::all | fs::perms::sticky_bit);
        m_sandbox->openToEveryone();
        for (const auto& folder : {m_sandbox->home(), m_sandbox->home() / "data", m_sandbox->scratch()})
            fs::permissions(folder, fs::perms::all);
        std::optional<std::system_error> failure;
        {
            const Unprivileged unprivileged;
            failure = installFailure<std::system_error>(release);
        }
        QCOMPARE(failure.value().code().value(), EEXIST);
        QCOMPARE(tagOf(Paths::ares()), QByteArray("v146"));
        QCOMPARE(readFile(Paths::aresNew()), QByteArray("of another user"));
    }
};

QTEST_GUILESS_MAIN(InstallationTest)
#include "tst_Installation.moc"
