// SPDX-License-Identifier: MIT
#include "game/RomCheck.h"
#include "platform/Text.h"
#include "storage/Paths.h"
#include "support/AresBundle.h"
#include "support/Checked.h"
#include "support/FaultTest.h"
#include "support/Unprivileged.h"

#include <QtTest>

#include <atomic>
#include <thread>

#include <sys/stat.h>

namespace fs = std::filesystem;
using namespace cartloom;
using Stage = AppModel::Stage;

namespace
{

const auto notStrict = QStringLiteral("The file does not look like a .z64 Nintendo 64 game (wrong header).");
const auto notLenient =
    QStringLiteral("That file does not look like a Nintendo 64 ROM (.z64 / .v64 / .n64).");
const auto added = QStringLiteral("Game file added. Press the button to play.");

QString wrongSize(qint64 kilobytes)
{
    return QStringLiteral("That file is not the right size for a Nintendo 64 game (%1 KB).").arg(kilobytes);
}

/// The bytes that this process has read so far; below 0 where the system does not count them.
qint64 bytesRead()
{
    QFile counters(QStringLiteral("/proc/self/io"));
    const QByteArray first = counters.open(QFile::ReadOnly) ? counters.readLine() : QByteArray();
    return first.startsWith("rchar: ") ? first.mid(7).trimmed().toLongLong() : -1;
}

} // namespace

/// Files that the player chooses: as the game, with the strict check, and as any ROM, with the lenient one.
class RomCheckTest : public FaultTest
{
    Q_OBJECT

    [[nodiscard]] fs::path rom() const { return m_sandbox->scratch() / "chosen.z64"; }

    void arrange()
    {
        installAres();
        saveGame();
        restart();
        remember();
    }

    void isRefused(const Failure& asTheGame, const Failure& asAnyRom, const fs::path& file)
    {
        arrange();
        chooseGameFile(file);
        CHECKED(shows(asTheGame));
        CHECKED(nothingChanged());
        chooseROM(file);
        CHECKED(shows(asAnyRom));
        CHECKED(nothingChanged());
        pressPlays();
    }

    void isPlayed(const fs::path& file)
    {
        const auto arguments = m_sandbox->scratch() / "arguments";
        scriptChild({QStringLiteral("args ") + toText(arguments)});
        chooseROM(file);
        QVERIFY2(goesThrough(Stage::playing), qPrintable(message()));
        QVERIFY(readFile(arguments).trimmed().endsWith(QByteArray::fromStdString(file.native())));
        CHECKED(nothingChanged());
        pressPlays();
    }

    /// Changes the length of the file from another thread as soon as the copy has begun.
    void resizeWhileItIsCopied(qint64 size)
    {
        std::atomic<bool> over = false;
        std::thread other([&] {
            while (!over && Sandbox::storage().filter(QStringLiteral(".Quillet64.z64-")).isEmpty()) {
            }
            fs::resize_file(rom(), static_cast<std::uintmax_t>(size));
        });
        chooseGameFile(rom());
        over = true;
        other.join();
    }

private Q_SLOTS:
    void sizeAndHeaderDecide_data()
    {
        QTest::addColumn<qint64>("size");
        QTest::addColumn<QByteArray>("header");
        QTest::addColumn<QString>("asTheGame");
        QTest::addColumn<QString>("asAnyRom");
        const auto row = [](const char* name, qint64 size, const QString& asTheGame, const QString& asAnyRom,
                            const QByteArray& header = bigEndianHeader) {
            QTest::addRow("73 %lld bytes, %s", static_cast<long long>(size), name)
                << size << header << asTheGame << asAnyRom;
        };
        const QString taken;
        row("nothing", 0, wrongSize(0), wrongSize(0), {});
        row("half a header", 3, wrongSize(0), wrongSize(0), bigEndianHeader.left(3));
        row("a header", 4, wrongSize(0), wrongSize(0));
        row("one below any ROM", 999'999, wrongSize(999), wrongSize(999));
        row("the smallest ROM", 1'000'000, wrongSize(1000), taken);
        row("one below the game", 9'999'999, wrongSize(9999), taken);
        row("the smallest game", 10'000'000, taken, taken);
        row("the largest game", 40'000'000, taken, taken);
        row("one beyond the game", 40'000'001, wrongSize(40'000), taken);
        row("the largest ROM", 128'000'000, wrongSize(128'000), taken);
        row("one beyond any ROM", 128'000'001, wrongSize(128'000), wrongSize(128'000));
        row("beyond 32 bits", 5'000'000'000, wrongSize(5'000'000), wrongSize(5'000'000));
        row("below the smallest game, no header", 512'000, wrongSize(512), wrongSize(512), "none");
        row("a whole number of KiB", 8'388'608, wrongSize(8388), taken);
        for (const qint64 size : {10'000'000, 40'000'000}) {
            row("byte-swapped", size, notStrict, taken, "\x37\x80\x40\x12");
            row("little-endian", size, notStrict, taken, "\x40\x12\x37\x80");
            row("no header", size, notStrict, notLenient, "none");
        }
        row("first byte wrong", 10'000'000, notStrict, notLenient, "\x81\x37\x12\x40");
        row("last byte wrong", 10'000'000, notStrict, notLenient, "\x80\x37\x12\x41");
    }

    void sizeAndHeaderDecide()
    {
        QFETCH(const qint64, size);
        QFETCH(const QByteArray, header);
        QFETCH(const QString, asTheGame);
        QFETCH(const QString, asAnyRom);
        writeSparse(rom(), header, size);
        arrange();
        if (asAnyRom.isEmpty()) {
            CHECKED(isPlayed(rom()));
        } else {
            chooseROM(rom());
            CHECKED(shows({asAnyRom, {}}));
            CHECKED(nothingChanged());
        }
        chooseGameFile(rom());
        if (asTheGame.isEmpty()) {
            QCOMPARE(m_model->notice(), added);
            QCOMPARE(fs::file_size(Paths::gameFile()), static_cast<std::uintmax_t>(size));
            CHECKED(isAtRestWithoutTraces());
            m_model->play();
            QVERIFY(goesThrough(Stage::playing));
        } else {
            CHECKED(shows({asTheGame, {}}));
            CHECKED(nothingChanged());
            CHECKED(pressPlays());
        }
    }

    void onlyTheHeaderIsRead_data()
    {
        QTest::addColumn<bool>("strict");
        QTest::newRow("73 the largest game") << true;
        QTest::newRow("73 the largest ROM") << false;
    }

    void onlyTheHeaderIsRead()
    {
        QFETCH(const bool, strict);
        writeSparse(rom(), bigEndianHeader, strict ? 40'000'000 : 128'000'000);
        const auto before = bytesRead();
        if (before < 0)
            QSKIP("this system does not count what a process reads");
        RomCheck::validate(rom(), strict);
        QVERIFY2(bytesRead() - before < 100'000, qPrintable(QString::number(bytesRead() - before)));
    }

    void irregularFileHasNoSize_data()
    {
        QTest::addColumn<QString>("what");
        for (const char* const what : {"folder", "device", "pipe"})
            QTest::addRow("73 a %s", what) << QString::fromLatin1(what);
    }

    void irregularFileHasNoSize()
    {
        QFETCH(const QString, what);
        if (what == QStringLiteral("folder"))
            fs::create_directory(rom());
        if (what == QStringLiteral("pipe"))
            QCOMPARE(::mkfifo(rom().c_str(), 0600), 0);
        isRefused({wrongSize(0), {}}, {wrongSize(0), {}},
                  what == QStringLiteral("device") ? fs::path("/dev/zero") : rom());
    }

    void danglingLinkIsReported_data() { addOnlyRow("73 a dangling link"); }

    void danglingLinkIsReported()
    {
        fs::create_symlink("nowhere", rom());
        isRefused(systemFailure(QStringLiteral("Adding the game file"), ENOENT),
                  systemFailure(QStringLiteral("Checking the ROM"), ENOENT), rom());
    }

    void unreadableFileIsReported_data() { addOnlyRow("73 not readable"); }

    void unreadableFileIsReported()
    {
        writeSparse(rom(), bigEndianHeader, 10'000'000);
        arrange();
        m_sandbox->giveToEveryone();
        fs::permissions(rom(), fs::perms::none);
        remember();
        const Unprivileged unprivileged;
        chooseGameFile(rom());
        CHECKED(shows(systemFailure(QStringLiteral("Adding the game file"), EACCES)));
        chooseROM(rom());
        CHECKED(shows(systemFailure(QStringLiteral("Checking the ROM"), EACCES)));
        nothingChanged();
    }

    void linkIsFollowed_data() { addOnlyRow("73 a link to a game"); }

    void linkIsFollowed()
    {
        writeSparse(m_sandbox->scratch() / "game", bigEndianHeader, 10'000'000);
        fs::create_symlink("game", rom());
        arrange();
        isPlayed(rom());
    }

    void romDeletedBeforeTheStartIsStillStarted_data() { addOnlyRow("73 vanishes between check and start"); }

    /// The emulator reports it.
    void romDeletedBeforeTheStartIsStillStarted()
    {
        writeSparse(rom(), bigEndianHeader, 10'000'000);
        arrange();
        chooseROM(rom());
        fs::remove(rom());
        QVERIFY(goesThrough(Stage::playing));
        CHECKED(nothingChanged());
        pressPlays();
    }

    void savedGameDeletedBeforeTheStartIsFetchedAgain_data()
    {
        addOnlyRow("73 the saved game vanishes between press and start");
    }

    void savedGameDeletedBeforeTheStartIsFetchedAgain()
    {
        arrange();
        m_model->play();
        fs::remove(Paths::gameFile());
        QVERIFY(goesThrough(Stage::playing));
        QVERIFY(m_sites->asked().contains(QLatin1String(ScriptedSites::game)));
        pressPlays();
    }

    void changeOfLengthDuringTheCopyIsReported_data()
    {
        QTest::addColumn<qint64>("size");
        QTest::newRow("73 grows while it is copied") << qint64(60'000'000);
        QTest::newRow("73 shrinks while it is copied") << qint64(1000);
        QTest::newRow("73 is emptied while it is copied") << qint64(0);
    }

    /// The copy may be complete before the change; then the game is whole. Otherwise there is none: the
    /// previous one is deleted before the copy begins.
    void changeOfLengthDuringTheCopyIsReported()
    {
        QFETCH(const qint64, size);
        constexpr qint64 whole = 39'000'000;
        writeSparse(rom(), bigEndianHeader, whole);
        arrange();
        resizeWhileItIsCopied(size);
        CHECKED(isAtRestWithoutTraces());
        if (m_model->notice() == added) {
            QCOMPARE(fs::file_size(Paths::gameFile()), static_cast<std::uintmax_t>(whole));
            m_model->play();
            QVERIFY(goesThrough(Stage::playing));
            return;
        }
        CHECKED(shows(systemFailure(QStringLiteral("Adding the game file"), EBUSY)));
        QCOMPARE(Sandbox::storage(),
                 (QStringList{QStringLiteral("Ares"), QStringLiteral("ares-version.txt")}));
        nextPressPlays();
    }
};

QTEST_GUILESS_MAIN(RomCheckTest)
#include "tst_RomCheck.moc"
