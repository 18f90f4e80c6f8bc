// SPDX-License-Identifier: MIT
#include "game/AppError.h"
#include "platform/Errors.h"
#include "support/InstallTest.h"
#include "support/Unprivileged.h"

#include <QtTest>

#include <system_error>

namespace fs = std::filesystem;
using namespace cartloom;

class InstallationTest : public InstallTest
{
    Q_OBJECT

private Q_SLOTS:
    void aFirstInstallationLeavesTheEmulatorAndItsTagAndNothingElse()
    {
        QCOMPARE(install(makeRelease(QStringLiteral("v147"))), Paths::ares() / "ares.app");
        QCOMPARE(Sandbox::storage(),
                 (QStringList{QStringLiteral("Ares"), QStringLiteral("ares-version.txt")}));
        QCOMPARE(readFile(Paths::aresVersion()), QByteArray("v147"));
        QCOMPARE(AresInstaller::installedVersion(), QStringLiteral("v147"));
    }

    void progressIsReportedAsTheDownloaderReportsIt()
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

    void aReleaseOfUnknownSizeIsInstalledWhateverItsSize_data()
    {
        QTest::addColumn<qint64>("size");
        QTest::newRow("zero") << qint64(0);
        QTest::newRow("negative") << qint64(-5);
    }

    void aReleaseOfUnknownSizeIsInstalledWhateverItsSize()
    {
        QFETCH(const qint64, size);
        auto release = makeRelease(QStringLiteral("v147"));
        release.size = size;
        QCOMPARE(install(release), Paths::ares() / "ares.app");
    }

    void aDownloadOfAnotherSizeIsDamaged()
    {
        writeSparse(archive(), {}, 1233);
        const AresRelease release{QStringLiteral("v147"), QStringLiteral("ares-macos.zip"),
                                  QUrl::fromLocalFile(toText(archive())), 1234};
        const auto failure = installFailure<AppError>(release).value();
        QCOMPARE(failure.message,
                 QStringLiteral(
                     "The Ares download is damaged (got 1233 bytes, expected 1234). Please try again."));
        QCOMPARE(failure.details, QString());
        QCOMPARE(Sandbox::storage(), QStringList());
    }

    void anEmulatorOneFolderDownInTheArchiveIsFound()
    {
        QCOMPARE(install(makeRelease(QStringLiteral("v147"), "ares-v147")),
                 Paths::ares() / "ares-v147/ares.app");
    }

    void anArchiveWithoutTheEmulatorIsRefused_data()
    {
        QTest::addColumn<QString>("place");
        QTest::newRow("nested more than five levels") << QStringLiteral("1/2/3/4/5");
        QTest::newRow("hidden") << QStringLiteral(".hidden");
    }

    void anArchiveWithoutTheEmulatorIsRefused()
    {
        QFETCH(const QString, place);
        const auto failure =
            installFailure<AppError>(makeRelease(QStringLiteral("v147"), toPath(place))).value();
        QCOMPARE(failure.message,
                 QStringLiteral("The Ares download did not contain ares.app. Please try again."));
        QCOMPARE(failure.details, QString());
        QCOMPARE(Sandbox::storage(), QStringList());
    }

    void anArchiveThatCannotBeUnpackedLeavesTheInstalledCopyAlone()
    {
        install(makeRelease(QStringLiteral("v147")));
        writeFile(archive(), "not a zip archive");
        const AresRelease broken{QStringLiteral("v148"), QStringLiteral("ares-macos.zip"),
                                 QUrl::fromLocalFile(toText(archive())), 0};
        QCOMPARE(installFailure<AppError>(broken).value().message,
                 QStringLiteral("Could not unpack Ares. The download may be damaged."));
        QCOMPARE(tagOf(Paths::ares()), QByteArray("v147"));
        QCOMPARE(AresInstaller::installedVersion(), QStringLiteral("v147"));
        QCOMPARE(Sandbox::storage(),
                 (QStringList{QStringLiteral("Ares"), QStringLiteral("ares-version.txt")}));
    }

    void anUpdateKeepsTheCopyBeforeIt()
    {
        install(makeRelease(QStringLiteral("v147")));
        install(makeRelease(QStringLiteral("v148")));
        QCOMPARE(tagOf(Paths::ares()), QByteArray("v148"));
        QCOMPARE(tagOf(Paths::aresOld()), QByteArray("v147"));
        QCOMPARE(AresInstaller::installedVersion(), QStringLiteral("v148"));
    }

    void onlyOneCopyIsEverKept()
    {
        for (const auto& tag : {QStringLiteral("v146"), QStringLiteral("v147"), QStringLiteral("v148")})
            install(makeRelease(tag));
        QCOMPARE(tagOf(Paths::ares()), QByteArray("v148"));
        QCOMPARE(tagOf(Paths::aresOld()), QByteArray("v147"));
        QCOMPARE(Sandbox::storage(), (QStringList{QStringLiteral("Ares"), QStringLiteral("Ares-old"),
                                                  QStringLiteral("ares-version.txt")}));
    }

    void whatAnEarlierInstallationLeftUnfinishedIsReplaced()
    {
        writeFile(Paths::aresNew() / "ares.app/half", "of an earlier one");
        install(makeRelease(QStringLiteral("v147")));
        QVERIFY(!fs::exists(Paths::ares() / "ares.app/half"));
        QVERIFY(!fs::exists(Paths::aresNew()));
    }

    void aKeptCopyThatCannotBeRemovedIsOutOfTheWayAllTheSame()
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
        const auto cleared = AresInstaller::discardOldCopy();
        QTRY_VERIFY(cleared.isFinished());
        QCOMPARE(Sandbox::storage(),
                 (QStringList{QStringLiteral("Ares"), QStringLiteral("ares-version.txt")}));
    }

    void aKeptCopyWithoutAnInstalledOneIsNotGivenUp()
    {
        writeFile(Paths::aresOld() / "ares.app/tag", "v146");
        install(makeRelease(QStringLiteral("v147")));
        QCOMPARE(tagOf(Paths::ares()), QByteArray("v147"));
        QCOMPARE(tagOf(Paths::aresOld()), QByteArray("v146"));
    }

    void aReleaseIsNeverMixedWithWhatIsLeftOfAnother()
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

    void aTreeThatMayNotBeUsedIsRefusedAndGivesItsRoomBack()
    {
        install(makeRelease(QStringLiteral("v146")));
        const auto tree = m_sandbox->scratch() / "tree-v147";
        makeAresApp(tree);
        fs::create_symlink("../../../Cartloom.conf", tree / "ares.app/Contents/evil");
        const auto failure = installFailure<AppError>(packRelease(QStringLiteral("v147"), tree)).value();
        QCOMPARE(failure.message, QStringLiteral("Could not unpack Ares. The download may be damaged."));
        QCOMPARE(failure.details,
                 QStringLiteral("ares.app/Contents/evil: a link that leads out of the folder"));
        QCOMPARE(tagOf(Paths::ares()), QByteArray("v146"));
        QCOMPARE(Sandbox::storage(),
                 (QStringList{QStringLiteral("Ares"), QStringLiteral("ares-version.txt")}));
    }

    void specialBitsOfAnArchiveAreNotInstalled()
    {
        const auto tree = m_sandbox->scratch() / "tree-v147";
        const auto program = makeAresApp(tree) / "Contents/MacOS/ares";
        fs::permissions(program, fs::perms::set_uid | fs::perms::set_gid, fs::perm_options::add);
        install(packRelease(QStringLiteral("v147"), tree));
        const auto installed = fs::status(Paths::ares() / "ares.app/Contents/MacOS/ares").permissions();
        QVERIFY((installed & (fs::perms::set_uid | fs::perms::set_gid)) == fs::perms::none);
        QVERIFY((installed & fs::perms::owner_exec) != fs::perms::none);
    }

    void anArchiveWithNothingInItHasNoEmulator()
    {
        // The end of a zip archive, without any entry before it.
        writeFile(archive(), QByteArray("PK\x05\x06", 4) + QByteArray(18, '\0'));
        const AresRelease release{QStringLiteral("v147"), QStringLiteral("ares-macos.zip"),
                                  QUrl::fromLocalFile(toText(archive())), 22};
        QCOMPARE(installFailure<AppError>(release).value().message,
                 QStringLiteral("The Ares download did not contain ares.app. Please try again."));
        QCOMPARE(Sandbox::storage(), QStringList());
    }

    void whatARunThatWasCutOffHasLeftGoesWithTheNextInstallation()
    {
        writeFile(Paths::newWorkDir("download-ares") / "ares.zip", "half");
        writeFile(Paths::newWorkDir("download-game") / "Quillet64.z64", "half");
        install(makeRelease(QStringLiteral("v147")));
        QCOMPARE(Sandbox::storage(),
                 (QStringList{QStringLiteral("Ares"), QStringLiteral("ares-version.txt")}));
    }

    void aTagThatCannotBeRecordedIsNoFailure()
    {
        fs::create_directories(Paths::aresVersion() / "in the way");
        QCOMPARE(install(makeRelease(QStringLiteral("v147"))), Paths::ares() / "ares.app");
        QCOMPARE(AresInstaller::installedVersion(), std::nullopt);
    }

    void aStorageFolderThatCannotBeMadeIsTheSystemsOwnError()
    {
        writeFile(Paths::support(), "in the way");
        QVERIFY(installFailure<std::system_error>(makeRelease(QStringLiteral("v147"))).has_value());
        QCOMPARE(readFile(Paths::support()), QByteArray("in the way"));
    }

    void aDownloadThatFailsLeavesNoWorkFolder()
    {
        const AresRelease release{QStringLiteral("v147"), QStringLiteral("ares-macos.zip"),
                                  QUrl(QStringLiteral("http://127.0.0.1:1/ares.zip")), 0};
        QCOMPARE(installFailure<PlatformError>(release).value().code, UrlError::cannotConnectToHost);
        QCOMPARE(Sandbox::storage(), QStringList());
    }

    void aCancelledDownloadLeavesTheInstalledCopyAlone()
    {
        install(makeRelease(QStringLiteral("v147")));
        const CancellationSource source;
        source.cancel();
        QCOMPARE(
            installFailure<PlatformError>(makeRelease(QStringLiteral("v148")), source.token()).value().code,
            UrlError::cancelled);
        QCOMPARE(tagOf(Paths::ares()), QByteArray("v147"));
        QCOMPARE(Sandbox::storage(),
                 (QStringList{QStringLiteral("Ares"), QStringLiteral("ares-version.txt")}));
    }
};

QTEST_GUILESS_MAIN(InstallationTest)
#include "tst_Installation.moc"
