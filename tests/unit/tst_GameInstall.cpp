// SPDX-License-Identifier: MIT
#include "game/GameDownloader.h"
#include "storage/Paths.h"
#include "support/Failures.h"
#include "support/Sandbox.h"

#include <QtTest>

#include <system_error>

namespace fs = std::filesystem;
using namespace cartloom;

namespace
{

const auto gameFile = QStringLiteral("Quillet64.z64");

} // namespace

class GameInstallTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void downloadIsMovedIntoPlace()
    {
        const Sandbox sandbox;
        const auto file = sandbox.home() / "own.v64";
        fs::create_directories(Paths::support());
        writeFile(file, "new");
        writeFile(Paths::gameFile(), "old");
        GameDownloader::install(file, false);
        QVERIFY(!fs::exists(file));
        QCOMPARE(readFile(Paths::gameFile()), QByteArray("new"));
        QCOMPARE(Sandbox::storage(), QStringList{gameFile});
    }

    void chosenFileIsCopied()
    {
        const Sandbox sandbox;
        const auto file = sandbox.home() / "own.v64";
        writeFile(file, "new");
        GameDownloader::install(file, true);
        QCOMPARE(readFile(file), QByteArray("new"));
        QCOMPARE(readFile(Paths::gameFile()), QByteArray("new"));
        QCOMPARE(Sandbox::storage(), QStringList{gameFile});
    }

    void linkOrFolderInItsPlaceIsReplaced()
    {
        const Sandbox sandbox;
        const auto file = sandbox.home() / "own.z64";
        writeFile(file, "new");
        Paths::ensureSupport();
        fs::create_symlink("nowhere", Paths::gameFile());
        GameDownloader::install(file, true);
        QCOMPARE(readFile(Paths::gameFile()), QByteArray("new"));
        fs::remove(Paths::gameFile());
        writeFile(Paths::gameFile() / "inside", "old");
        GameDownloader::install(file, true);
        QCOMPARE(readFile(Paths::gameFile()), QByteArray("new"));
    }

    void missingFileIsReported_data()
    {
        QTest::addColumn<bool>("keep");
        QTest::newRow("copied") << true;
        QTest::newRow("moved") << false;
    }

    void missingFileIsReported()
    {
        QFETCH(bool, keep);
        const Sandbox sandbox;
        const auto error = failureOf<std::system_error>([&] {
            GameDownloader::install(sandbox.home() / "vanished", keep);
            return 0;
        });
        QVERIFY(error);
        QCOMPARE(error->code().value(), ENOENT);
        QCOMPARE(Sandbox::storage(), QStringList());
    }
};

QTEST_GUILESS_MAIN(GameInstallTest)
#include "tst_GameInstall.moc"
