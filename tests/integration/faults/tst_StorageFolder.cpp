// SPDX-License-Identifier: MIT
#include "platform/Text.h"
#include "storage/Paths.h"
#include "support/AresBundle.h"
#include "support/Checked.h"
#include "support/EventLoopWait.h"
#include "support/FaultTest.h"
#include "support/Snapshot.h"
#include "support/Unprivileged.h"

#include <QtTest>

#include <functional>

#include <unistd.h>

namespace fs = std::filesystem;
using namespace cartloom;
using Stage = AppModel::Stage;

/// Storage folders that are read-only, a file, owned by someone else, oddly named, or deleted meanwhile.
class StorageFolderTest : public FaultTest
{
    Q_OBJECT

    [[nodiscard]] fs::path source() const { return m_sandbox->scratch() / "source.z64"; }

    void lock(fs::perms permissions) const
    {
        m_sandbox->giveToEveryone();
        fs::create_directories(Paths::support());
        fs::permissions(Paths::support(), permissions);
    }

    void import()
    {
        remember();
        chooseGameFile(source());
    }

    /// An operation that writes, its step, and what is installed before it.
    struct Operation
    {
        const char* name;
        const char* step;
        bool hasEmulator;
        bool hasGame;
        std::function<void(StorageFolderTest&)> run;
    };

    static std::vector<Operation> operations()
    {
        return {{"first installation", "Getting Ares", false, true, [](auto& test) { test.press(); }},
                {"game's download", "Getting the game", true, false, [](auto& test) { test.press(); }},
                {"update", "Updating Ares", true, true, [](auto& test) { test.update(); }},
                {"import", "Adding the game file", true, false, [](auto& test) { test.import(); }}};
    }

    static void addRowForEachOperation(const char* fault)
    {
        QTest::addColumn<int>("number");
        int number = 0;
        for (const auto& operation : operations())
            QTest::addRow("%s: %s", fault, operation.name) << number++;
    }

    Operation arrange()
    {
        QFETCH(const int, number);
        const auto operation = operations()[static_cast<std::size_t>(number)];
        if (operation.hasEmulator)
            installAres();
        if (operation.hasGame)
            saveGame();
        writeSparse(source(), bigEndianHeader, 10'000'000);
        restart();
        return operation;
    }

    void endsIn(const Operation& operation, int number)
    {
        const QString step = QLatin1String(operation.step);
        CHECKED(shows(systemFailure(step, number), step == QStringLiteral("Getting the game")));
        nothingChanged();
    }

private Q_SLOTS:
    void cleanup()
    {
        if (fs::is_directory(Paths::support()))
            fs::permissions(Paths::support(), fs::perms::owner_all);
        FaultTest::cleanup();
    }

    void readOnlyFolderIsReported_data() { addRowForEachOperation("50 read-only storage folder"); }

    void readOnlyFolderIsReported()
    {
        const auto operation = arrange();
        lock(fs::perms(0555));
        {
            const Unprivileged unprivileged;
            operation.run(*this);
        }
        CHECKED(endsIn(operation, EACCES));
        fs::permissions(Paths::support(), fs::perms(0777));
        const Unprivileged unprivileged;
        nextPressPlays();
    }

    void readOnlyFolderStillPlays_data() { addOnlyRow("50 read-only, with everything installed"); }

    void readOnlyFolderStillPlays()
    {
        installAres();
        saveGame();
        restart();
        lock(fs::perms(0555));
        remember();
        const Unprivileged unprivileged;
        CHECKED(pressPlays());
        nothingChanged();
    }

    void fileInItsPlaceIsReported_data() { addRowForEachOperation("51 storage folder is a file"); }

    void fileInItsPlaceIsReported()
    {
        auto operation = arrange();
        if (QLatin1String(operation.step) == QLatin1String("Updating Ares"))
            QCOMPARE(m_model->aresVersion(), QStringLiteral("v146"));
        const auto aside = Paths::support().parent_path() / "aside";
        fs::rename(Paths::support(), aside);
        writeFile(Paths::support(), "in the way");
        restart();
        operation.run(*this);
        // Without an emulator the game's turn does not come.
        if (operation.hasEmulator && QLatin1String(operation.step) == QLatin1String("Getting the game"))
            operation.step = "Getting Ares";
        CHECKED(endsIn(operation, ENOTDIR));
        fs::remove(Paths::support());
        nextPressPlays();
    }

    void foldersOfAnotherOwnerAreSetAside_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("52 Ares-new of another owner") << QStringLiteral("Ares-new");
        QTest::newRow("52 work folder of another owner")
            << QStringLiteral("download-ares-00000000-0000-4000-8000-000000000000");
        QTest::newRow("52 Ares-old of another owner") << QStringLiteral("Ares-old");
        QTest::newRow("52 Ares of another owner") << QStringLiteral("Ares");
    }

    /// They can be moved but not deleted.
    void foldersOfAnotherOwnerAreSetAside()
    {
        QFETCH(const QString, name);
        if (::geteuid() != 0)
            QSKIP("only root can make a folder of another owner");
        saveGame();
        lock(fs::perms(0777));
        writeFile(Paths::support() / toPath(name) / "theirs/file", "theirs");
        fs::permissions(Paths::support() / toPath(name) / "theirs", fs::perms(0755));
        fs::permissions(Paths::support() / toPath(name), fs::perms(0755));
        restart();
        for (int time = 1; time <= 2; ++time) {
            const Unprivileged unprivileged;
            m_model->play();
            QVERIFY2(goesThrough(Stage::playing), qPrintable(message() + m_model->errorDetails()));
        }
        CHECKED(isAtRestWithoutTraces(name));
        QCOMPARE(installedTag(), QByteArray("v147"));
        QCOMPARE(snapshotOf(Paths::support()).filter(QStringLiteral("theirs/file: file")).size(), 1);
    }

    void oddHomeNamesWork_data()
    {
        QTest::addColumn<QByteArray>("name");
        QTest::newRow("53 spaces and quotes") << QByteArray(" it's \"my\" `home` $HOME ");
        QTest::newRow("53 line feeds") << QByteArray("one\ntwo\r\n");
        QTest::newRow("53 non-Latin letters") << QByteArray("ゲーム/Ünïcödé/игра");
        QTest::newRow("53 placeholders and escapes") << QByteArray("%1 %20 \\n {} * ? [x]");
        QTest::newRow("53 begins like an option") << QByteArray("-rf");
        QTest::newRow("53 255 bytes") << QByteArray(255, 'x');
    }

    void oddHomeNamesWork()
    {
        QFETCH(const QByteArray, name);
        const auto home = m_sandbox->home() / name.toStdString();
        qputenv("HOME", QByteArray::fromStdString(home.native()));
        qputenv("XDG_DATA_HOME", QByteArray::fromStdString((home / "data").native()));
        restart();
        CHECKED(pressPlays());
        QCOMPARE(Paths::support(), home / "data/Quillet64 Player");
        QCOMPARE(Sandbox::storage(), (QStringList{QStringLiteral("Ares"), QStringLiteral("Quillet64.z64"),
                                                  QStringLiteral("ares-version.txt")}));
        removeStorage();
        writeSparse(source(), bigEndianHeader, 10'000'000);
        chooseGameFile(source());
        QCOMPARE(m_model->notice(), QStringLiteral("Game file added. Press the button to play."));
        QCOMPARE(fs::file_size(Paths::gameFile()), 10'000'000U);
    }

    void deletionDuringADownloadIsReported_data()
    {
        QTest::addColumn<Wait>("wait");
        for (const auto& wait : waits) {
            if (wait.isFile())
                QTest::addRow("55 deleted while running: %s", wait.name) << wait;
        }
    }

    void deletionDuringADownloadIsReported()
    {
        QFETCH(const Wait, wait);
        arrangeFor(wait);
        m_sites->scripts[wait.path] = [this](RawConnection& connection, const RawRequest& request) {
            removeStorage();
            connection.send(m_sites->answers[request.path]);
            connection.close();
        };
        CHECKED(press());
        CHECKED(shows(systemFailure(QLatin1String(wait.step), ENOENT), wait.isForTheGame()));
        QCOMPARE(Sandbox::storage(), QStringList());
        nextPressPlays();
    }

    void deletionWhilePlayingIsSurvived_data() { addOnlyRow("55 deleted while running: emulator plays"); }

    void deletionWhilePlayingIsSurvived()
    {
        installAres();
        saveGame();
        restart();
        const auto proceed = m_sandbox->scratch() / "proceed";
        scriptChild({QStringLiteral("wait ") + toText(proceed), QStringLiteral("exit 3")});
        m_model->play();
        QVERIFY(comesTo(Stage::playing));
        removeStorage();
        writeFile(proceed, "");
        QVERIFY(comesToRest());
        QVERIFY(message().startsWith(QStringLiteral("Ares stopped right away (exit code 3).")));
        QCOMPARE(Sandbox::storage(), QStringList());
        nextPressPlays();
    }
};

QTEST_GUILESS_MAIN(StorageFolderTest)
#include "tst_StorageFolder.moc"
