// SPDX-License-Identifier: MIT
#include "support/InstallTest.h"

#include <QtTest>

namespace fs = std::filesystem;
using namespace cartloom;

class KeptCopyTest : public InstallTest
{
    Q_OBJECT

private Q_SLOTS:
    void discardingLeavesTheInstalledCopyOnly()
    {
        install(makeRelease(QStringLiteral("v147")));
        install(makeRelease(QStringLiteral("v148")));
        AresInstaller::discardOldCopy();
        QVERIFY(!fs::exists(Paths::aresOld()));
        QCOMPARE(tagOf(Paths::ares()), QByteArray("v148"));
        AresInstaller::discardOldCopy();
        QCOMPARE(tagOf(Paths::ares()), QByteArray("v148"));
    }

    void rollingBackPutsTheKeptCopyBackAndLeavesTheRecordedTag()
    {
        install(makeRelease(QStringLiteral("v147")));
        install(makeRelease(QStringLiteral("v148")));
        QVERIFY(AresInstaller::rollback());
        QCOMPARE(tagOf(Paths::ares()), QByteArray("v147"));
        QCOMPARE(AresInstaller::installedVersion(), QStringLiteral("v148"));
        QCOMPARE(Sandbox::storage(),
                 (QStringList{QStringLiteral("Ares"), QStringLiteral("ares-version.txt")}));
    }

    void rollingBackWithoutAKeptCopyChangesNothing()
    {
        install(makeRelease(QStringLiteral("v147")));
        QVERIFY(!AresInstaller::rollback());
        QCOMPARE(tagOf(Paths::ares()), QByteArray("v147"));
        QCOMPARE(Sandbox::storage(),
                 (QStringList{QStringLiteral("Ares"), QStringLiteral("ares-version.txt")}));
    }

    void rollingBackWithoutAnInstalledCopyChangesNothing()
    {
        writeFile(Paths::aresOld() / "ares.app/tag", "v147");
        QVERIFY(!AresInstaller::rollback());
        QCOMPARE(Sandbox::storage(), QStringList{QStringLiteral("Ares-old")});
    }

    void aKeptCopyWithoutAnInstalledOneIsPutBack()
    {
        writeFile(Paths::aresOld() / "ares.app/tag", "v146");
        QVERIFY(AresInstaller::recover());
        QCOMPARE(tagOf(Paths::ares()), QByteArray("v146"));
        QCOMPARE(Sandbox::storage(), QStringList{QStringLiteral("Ares")});
    }

    void aKeptCopyTakesThePlaceOfAFolderWithoutAnEmulator()
    {
        writeFile(Paths::ares() / "something else", "");
        writeFile(Paths::aresOld() / "ares.app/tag", "v146");
        QVERIFY(AresInstaller::recover());
        QCOMPARE(tagOf(Paths::ares()), QByteArray("v146"));
        QCOMPARE(Sandbox::storage(), QStringList{QStringLiteral("Ares")});
    }

    void aKeptCopyBesideAnInstalledOneStaysTheKeptOne()
    {
        writeFile(Paths::ares() / "ares.app/tag", "v147");
        writeFile(Paths::aresOld() / "ares.app/tag", "v146");
        QVERIFY(!AresInstaller::recover());
        QCOMPARE(tagOf(Paths::ares()), QByteArray("v147"));
        QCOMPARE(tagOf(Paths::aresOld()), QByteArray("v146"));
    }

    void theRecordedTagIsReadWithoutWhiteSpaceAroundIt_data()
    {
        QTest::addColumn<QByteArray>("file");
        QTest::addColumn<std::optional<QString>>("version");
        const std::optional<QString> none;
        QTest::newRow("line end") << QByteArray("v147\n") << std::optional(QStringLiteral("v147"));
        QTest::newRow("blanks") << QByteArray(" \tv147\r\n ") << std::optional(QStringLiteral("v147"));
        QTest::newRow("empty") << QByteArray() << none;
        QTest::newRow("not UTF-8") << QByteArray("v147\xff") << none;
        QTest::newRow("all blank") << QByteArray(" \n\t ") << none;
    }

    void theRecordedTagIsReadWithoutWhiteSpaceAroundIt()
    {
        QFETCH(const QByteArray, file);
        QFETCH(const std::optional<QString>, version);
        writeFile(Paths::aresVersion(), file);
        QCOMPARE(AresInstaller::installedVersion(), version);
    }

    void withoutARecordThereIsNoVersion() { QCOMPARE(AresInstaller::installedVersion(), std::nullopt); }
};

QTEST_GUILESS_MAIN(KeptCopyTest)
#include "tst_KeptCopy.moc"
