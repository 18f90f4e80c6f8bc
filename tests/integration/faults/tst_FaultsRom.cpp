// SPDX-License-Identifier: MIT
#include "core/Paths.h"
#include "platform/Text.h"
#include "support/AresBundle.h"
#include "support/FaultTest.h"

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

} // namespace

/// Files that the player chooses: as the game, where the check is strict, and to be played as they are.
class FaultsRomTest : public FaultTest
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
        shows(asTheGame);
        nothingChanged();
        chooseROM(file);
        shows(asAnyRom);
        nothingChanged();
        pressPlays();
    }

    void isPlayed(const fs::path& file)
    {
        const auto arguments = m_sandbox->scratch() / "arguments";
        scriptChild({QStringLiteral("args ") + toText(arguments)});
        chooseROM(file);
        QVERIFY2(goesThrough(Stage::playing), qPrintable(message()));
        QVERIFY(readFile(arguments).trimmed().endsWith(QByteArray::fromStdString(file.native())));
        nothingChanged();
        pressPlays();
    }

    /// Waits for the copy to have begun, from another thread, and then gives the file another size.
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
    void sizesAndHeaders_data()
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
        row("another byte order", 10'000'000, notStrict, taken, "\x37\x80\x40\x12");
        row("no header", 10'000'000, notStrict, notLenient, "none");
    }

    void sizesAndHeaders()
    {
        QFETCH(const qint64, size);
        QFETCH(const QByteArray, header);
        QFETCH(const QString, asTheGame);
        QFETCH(const QString, asAnyRom);
        writeSparse(rom(), header, size);
        arrange();
        if (asAnyRom.isEmpty()) {
            isPlayed(rom());
        } else {
            chooseROM(rom());
            shows({asAnyRom, {}});
            nothingChanged();
        }
        chooseGameFile(rom());
        if (asTheGame.isEmpty()) {
            QCOMPARE(m_model->notice(), added);
            QCOMPARE(fs::file_size(Paths::gameFile()), static_cast<std::uintmax_t>(size));
            isAtRestWithoutTraces();
            m_model->play();
            QVERIFY(goesThrough(Stage::playing));
        } else {
            shows({asTheGame, {}});
            nothingChanged();
            pressPlays();
        }
    }

    void whatIsNoFile_data()
    {
        QTest::addColumn<QString>("what");
        for (const char* const what : {"folder", "device", "pipe"})
            QTest::addRow("73 a %s", what) << QString::fromLatin1(what);
    }

    void whatIsNoFile()
    {
        QFETCH(const QString, what);
        if (what == QStringLiteral("folder"))
            fs::create_directory(rom());
        if (what == QStringLiteral("pipe"))
            QCOMPARE(::mkfifo(rom().c_str(), 0600), 0);
        isRefused({wrongSize(0), {}}, {wrongSize(0), {}},
                  what == QStringLiteral("device") ? fs::path("/dev/zero") : rom());
    }

    void aLinkToNowhere_data() { addOnlyRow("73 a dangling link"); }

    void aLinkToNowhere()
    {
        fs::create_symlink("nowhere", rom());
        isRefused(systemFailure(QStringLiteral("Adding the game file"), ENOENT),
                  systemFailure(QStringLiteral("Checking the ROM"), ENOENT), rom());
    }

    void goneBeforeTheStart_data() { addOnlyRow("73 vanishes between check and start"); }

    /// To say what is wrong with it is then the emulator's business.
    void goneBeforeTheStart()
    {
        writeSparse(rom(), bigEndianHeader, 10'000'000);
        arrange();
        chooseROM(rom());
        fs::remove(rom());
        QVERIFY(goesThrough(Stage::playing));
        nothingChanged();
        pressPlays();
    }

    void theGameGoneBeforeTheStart_data()
    {
        addOnlyRow("73 the saved game vanishes between press and start");
    }

    void theGameGoneBeforeTheStart()
    {
        arrange();
        m_model->play();
        fs::remove(Paths::gameFile());
        QVERIFY(goesThrough(Stage::playing));
        QVERIFY(m_sites->asked().contains(QLatin1String(ScriptedSites::game)));
        pressPlays();
    }

    void anotherSizeWhileItIsCopied_data()
    {
        QTest::addColumn<qint64>("size");
        QTest::newRow("73 grows while it is copied") << qint64(60'000'000);
        QTest::newRow("73 shrinks while it is copied") << qint64(1000);
        QTest::newRow("73 is emptied while it is copied") << qint64(0);
    }

    /// Whether the copy had come to its end before is not to be known; then it is the whole game. Otherwise
    /// there is none, for the one before it has made room by then.
    void anotherSizeWhileItIsCopied()
    {
        QFETCH(const qint64, size);
        constexpr qint64 whole = 39'000'000;
        writeSparse(rom(), bigEndianHeader, whole);
        arrange();
        resizeWhileItIsCopied(size);
        isAtRestWithoutTraces();
        if (m_model->notice() == added) {
            QCOMPARE(fs::file_size(Paths::gameFile()), static_cast<std::uintmax_t>(whole));
            m_model->play();
            QVERIFY(goesThrough(Stage::playing));
            return;
        }
        shows(systemFailure(QStringLiteral("Adding the game file"), EBUSY));
        QCOMPARE(Sandbox::storage(),
                 (QStringList{QStringLiteral("Ares"), QStringLiteral("ares-version.txt")}));
        nextPressPlays();
    }
};

QTEST_GUILESS_MAIN(FaultsRomTest)
#include "tst_FaultsRom.moc"
