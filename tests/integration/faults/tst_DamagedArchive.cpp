// SPDX-License-Identifier: MIT
#include "ArchiveFaultTest.h"
#include "platform/Text.h"
#include "storage/Paths.h"
#include "support/AresBundle.h"
#include "support/Checked.h"
#include "support/Snapshot.h"

#include <QtTest>

namespace fs = std::filesystem;
using namespace cartloom;

namespace
{

const auto noProgram = QStringLiteral("Could not find the program inside ares.app.");
const auto blockedHint = QStringLiteral("\n\nIf macOS blocked Ares, open System Settings, then Privacy and "
                                        "Security, scroll down and click Open Anyway next to ares.");

} // namespace

/// Archives that are damaged, or hold no emulator that can be started.
class DamagedArchiveTest : public ArchiveFaultTest
{
    Q_OBJECT

private Q_SLOTS:
    void specialBitsAreDropped_data()
    {
        QTest::addColumn<quint32>("mode");
        QTest::newRow("43 set-user-id") << 0104755U;
        QTest::newRow("43 set-group-id") << 0102755U;
        QTest::newRow("43 both, and sticky") << 0107755U;
    }

    void specialBitsAreDropped()
    {
        QFETCH(const quint32, mode);
        ZipEntry program = zipProgram();
        program.mode = mode;
        saveGame();
        restart();
        m_sites->publish(zipOf({{"ares.app/", {}, 047755, {}, {}, {}}, program}));
        CHECKED(pressPlays());
        constexpr auto special = fs::perms::set_uid | fs::perms::set_gid;
        for (const auto& entry : fs::recursive_directory_iterator(Paths::ares()))
            QCOMPARE(entry.status().permissions() & special, fs::perms::none);
    }

    void badChecksumIsRefused_data() { addOnlyRow("44 bad CRC"); }

    void badChecksumIsRefused()
    {
        ZipEntry wrong = zipProgram("ares.app/data");
        wrong.checksum = 1;
        isRefused(before({wrong}), QStringLiteral("CRC"));
    }

    void wrongSizeIsRefused_data()
    {
        QTest::addColumn<quint32>("size");
        QTest::newRow("44 says that it is shorter") << 1U;
        QTest::newRow("44 says that it is longer") << 1'000'000U;
    }

    void wrongSizeIsRefused()
    {
        QFETCH(const quint32, size);
        ZipEntry wrong = zipZeros("ares.app/data", 1000);
        wrong.size = size;
        isRefused(before({wrong}), QStringLiteral("ares.app/data"));
    }

    void truncatedArchiveIsRefused_data()
    {
        QTest::addColumn<int>("length");
        const auto whole = static_cast<int>(zipOf({zipProgram()}).size());
        for (int length = 1; length < whole; ++length)
            QTest::addRow("45 cut off after byte %d of %d", length, whole) << length;
    }

    /// The release has no size, so that the size check does not find the damage first.
    void truncatedArchiveIsRefused()
    {
        QFETCH(const int, length);
        installAres();
        saveGame();
        restart();
        m_sites->publish(zipOf({zipProgram()}).left(length));
        m_sites->answers[ScriptedSites::latest] =
            httpAnswer(200, ScriptedSites::release("v147", 0, m_sites->url(ScriptedSites::archive)));
        CHECKED(update());
        QVERIFY(!m_model->errorDetails().isEmpty());
        CHECKED(shows({damaged, m_model->errorDetails()}));
        CHECKED(nothingChanged());
        QCOMPARE(installedTag(), QByteArray("v146"));
        pressPlays();
    }

    void whatFollowsTheDirectoryIsIgnored_data()
    {
        QTest::addColumn<QByteArray>("comment");
        QTest::addColumn<int>("appended");
        QTest::newRow("45 a comment") << QByteArray("a comment") << 0;
        QTest::newRow("45 the end's mark in the comment") << QByteArray("PK\x05\x06") << 0;
        QTest::newRow("45 the end's mark in a long comment") << "PK\x05\x06" + QByteArray(1000, '\xee') << 0;
        QTest::newRow("85 a comment of 17,000 bytes") << QByteArray(17'000, 'x') << 0;
        QTest::newRow("45 64 KiB appended") << QByteArray() << 64 * 1024;
        QTest::newRow("45 a comment, and one byte less than is searched")
            << QByteArray("a comment") << 1024 * 1024 - 22 - 9;
    }

    void whatFollowsTheDirectoryIsIgnored()
    {
        QFETCH(const QByteArray, comment);
        QFETCH(const int, appended);
        QByteArray zip = zipOf({zipProgram()});
        zip.chop(2);
        zip += static_cast<char>(comment.size() & 0xff);
        zip += static_cast<char>(comment.size() >> 8);
        isTaken(zip + comment + QByteArray(appended, '\0'));
    }

    void endBeyondWhatIsSearchedIsRefused_data() { addOnlyRow("45 1 MiB appended"); }

    void endBeyondWhatIsSearchedIsRefused()
    {
        isRefused(zipOf({zipProgram()}) + QByteArray(1024 * 1024, '\0'), QStringLiteral("no end"));
    }

    void resourceForksAreNotUnpacked_data() { addOnlyRow("46 a bundle of resource forks alone"); }

    void resourceForksAreNotUnpacked()
    {
        isRefused(zipOf({zipProgram("__MACOSX/ares.app/Contents/MacOS/ares"), {"a/._ares.app", "fork"}}), {},
                  withoutApp);
    }

    void emptyArchiveIsRefused_data()
    {
        QTest::addColumn<QByteArray>("zip");
        QTest::newRow("46 zero bytes") << QByteArray();
        QTest::newRow("46 no entry") << zipOf({});
        QTest::newRow("46 empty folders") << zipOf({zipFolderEntry("a"), zipFolderEntry("a/b")});
    }

    void emptyArchiveIsRefused()
    {
        QFETCH(const QByteArray, zip);
        isRefused(zip, {}, withoutApp);
    }

    void fileInPlaceOfAFolderIsRefused_data()
    {
        QTest::addColumn<QByteArray>("zip");
        QTest::newRow("47 the bundle is a file first") << before({{"ares.app", "file"}});
        QTest::newRow("47 the bundle's folder is a file later")
            << zipOf({zipProgram(), {"ares.app/Contents", "file"}});
    }

    void fileInPlaceOfAFolderIsRefused()
    {
        QFETCH(const QByteArray, zip);
        isRefused(zip, QStringLiteral("ares.app/Contents"));
    }

    void bundleWithoutAUsableProgramIsReported_data()
    {
        QTest::addColumn<QByteArray>("zip");
        QTest::addColumn<bool>("isFound");
        ZipEntry locked = zipProgram();
        locked.mode = 0100644;
        // A program of the right kind of file, for a processor that nobody has.
        QByteArray header = QByteArray::fromHex("7f454c4602010100").leftJustified(64, '\0');
        header[16] = 2;
        header[18] = '\xfe';
        header[19] = '\x7f';
        ZipEntry foreign = zipProgram();
        foreign.contents = header;
        QTest::newRow("48 a plain file") << zipOf({{"ares.app", "file"}}) << false;
        QTest::newRow("48 an empty folder") << zipOf({zipFolderEntry("ares.app")}) << false;
        QTest::newRow("48 not executable") << zipOf({locked}) << false;
        QTest::newRow("48 for another processor") << zipOf({foreign}) << true;
        foreign.contents.clear();
        QTest::newRow("48 an empty program") << zipOf({foreign}) << true;
    }

    void blockedUpdateStaysUntilItIsPermitted_data() { addOnlyRow("48 not permitted"); }

    /// The player may permit it in the system settings; the previous copy stays kept.
    void blockedUpdateStaysUntilItIsPermitted()
    {
        installAres();
        saveGame();
        restart();
        ZipEntry forbidden = zipProgram();
        forbidden.contents = "#!/etc/passwd\n";
        m_sites->publish(zipOf({forbidden}));
        CHECKED(update());
        m_model->play();
        QVERIFY(comesToRest());
        auto failure = systemFailure(QStringLiteral("Starting Ares"), EACCES);
        failure.message += blockedHint;
        CHECKED(shows(failure));
        QVERIFY(fs::exists(Paths::aresOld()));
        scriptChild({});
        fs::copy_file(SCRIPTED_CHILD, Paths::ares() / "ares.app/Contents/MacOS/ares",
                      fs::copy_options::overwrite_existing);
        m_model->play();
        QVERIFY(goesThrough(AppModel::Stage::playing));
    }

    /// Installed as it was published; a reset or the next update gets rid of it.
    void bundleWithoutAUsableProgramIsReported()
    {
        QFETCH(const QByteArray, zip);
        QFETCH(const bool, isFound);
        Failure failure{noProgram, toText(Paths::ares() / "ares.app")};
        if (isFound) {
            failure = systemFailure(QStringLiteral("Starting Ares"), ENOEXEC);
            failure.message += blockedHint;
        }
        saveGame();
        restart();
        m_sites->publish(zip);
        CHECKED(press());
        CHECKED(shows(failure));
        QCOMPARE(snapshotOf(outside()).size(), 1);
        CHECKED(press());
        CHECKED(shows(failure));
        CHECKED(nothingChanged());
        m_model->reset();
        CHECKED(nextPressPlays());

        m_sites->publish(zip, "v148");
        CHECKED(update());
        m_model->play();
        QVERIFY(comesToRest());
        failure.message.remove(blockedHint);
        failure.message +=
            QStringLiteral("\n\nThe new Ares did not work, so the previous version was put back.");
        CHECKED(shows(failure));
        QVERIFY(!fs::exists(Paths::aresOld()));
        m_sites->mend();
        CHECKED(pressPlays());
        QCOMPARE(installedTag(), QByteArray("v147"));
    }
};

QTEST_GUILESS_MAIN(DamagedArchiveTest)
#include "tst_DamagedArchive.moc"
