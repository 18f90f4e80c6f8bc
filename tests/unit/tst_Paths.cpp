// SPDX-License-Identifier: MIT
#include "platform/Places.h"
#include "platform/Text.h"
#include "storage/Paths.h"
#include "support/Sandbox.h"
#include "support/Unprivileged.h"

#include <QRegularExpression>
#include <QtTest>

#include <system_error>

namespace fs = std::filesystem;
using namespace cartloom;

class PathsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void storageFolderLiesInThePreferredFolderForUserData()
    {
        const Sandbox sandbox;
        QCOMPARE(Paths::support(), sandbox.home() / "data/Quillet64 Player");
        QCOMPARE(Paths::supportIn({"/first", "/second"}), fs::path("/first/Quillet64 Player"));
    }

    void storageFolderWithoutAnyReportedFolderLiesUnderHome()
    {
        const Sandbox sandbox;
        QCOMPARE(Paths::supportIn({}), sandbox.home() / "Library/Application Support/Quillet64 Player");
    }

    void entriesHaveTheirNames()
    {
        const Sandbox sandbox;
        QCOMPARE(Paths::ares(), Paths::support() / "Ares");
        QCOMPARE(Paths::aresNew(), Paths::support() / "Ares-new");
        QCOMPARE(Paths::aresOld(), Paths::support() / "Ares-old");
        QCOMPARE(Paths::aresVersion(), Paths::support() / "ares-version.txt");
        QCOMPARE(Paths::gameFile(), Paths::support() / "Quillet64.z64");
    }

    void firstWorkFolderCreatesTheStorageFolder()
    {
        const Sandbox sandbox;
        const auto storage = Paths::support();
        QVERIFY(!fs::exists(storage));
        const auto folder = Paths::newWorkDir("download-game");
        QVERIFY(fs::is_directory(storage));
        QCOMPARE(folder.parent_path(), storage);
    }

    void ensureSupportKeepsAnExistingFolder()
    {
        const Sandbox sandbox;
        Paths::ensureSupport();
        writeFile(Paths::gameFile(), "game");
        Paths::ensureSupport();
        QCOMPARE(Sandbox::storage(), QStringList{QStringLiteral("Quillet64.z64")});
        QCOMPARE(readFile(Paths::gameFile()), QByteArray("game"));
    }

    void workFoldersAreNewAndEmpty()
    {
        const Sandbox sandbox;
        const auto first = Paths::newWorkDir("download-ares");
        const auto second = Paths::newWorkDir("download-ares");
        QVERIFY(first != second);
        QVERIFY(fs::is_empty(first));
        QVERIFY(fs::is_empty(second));
    }

    void workFolderNameIsPrefixAndUpperCaseUuid()
    {
        const Sandbox sandbox;
        const auto name = QString::fromStdString(Paths::newWorkDir("download-ares").filename().native());
        static const QRegularExpression form(
            QStringLiteral("^download-ares-[0-9A-F]{8}-[0-9A-F]{4}-[0-9A-F]{4}-[0-9A-F]{4}-[0-9A-F]{12}$"));
        QVERIFY2(form.match(name).hasMatch(), qPrintable(name));
    }

    void discardDeletesFilesAndFolders()
    {
        const Sandbox sandbox;
        writeFile(Paths::ares() / "ares.app/tag", "v147");
        writeFile(Paths::gameFile(), "game");
        Paths::discard(Paths::ares());
        Paths::discard(Paths::gameFile());
        Paths::discard(Paths::aresOld());
        QCOMPARE(Sandbox::storage(), QStringList());
    }

    void discardLeavesWhatCannotBeMovedWhole()
    {
        const Sandbox sandbox;
        writeFile(Paths::ares() / "ares.app/tag", "v147");
        sandbox.giveToEveryone();
        fs::permissions(Paths::support(), fs::perms(0555));
        {
            const Unprivileged unprivileged;
            Paths::discard(Paths::ares());
        }
        QCOMPARE(readFile(Paths::ares() / "ares.app/tag"), QByteArray("v147"));
        fs::permissions(Paths::support(), fs::perms::all);
    }

    void leftoversAreRemovedAndNothingElse()
    {
        const Sandbox sandbox;
        const auto upper = QStringLiteral("-0F8FAD5B-D9CB-469F-A165-70867728950E");
        const auto lower = upper.toLower();
        for (const auto& name : {QStringLiteral("download-ares"), QStringLiteral("download-game"),
                                 QStringLiteral("discarded"), QStringLiteral("Ares-failed")})
            writeFile(Paths::support() / toPath(name + upper) / "folder/part", "part");
        for (const auto& name : {QStringLiteral(".Quillet64.z64"), QStringLiteral(".ares-version.txt")})
            writeFile(Paths::support() / toPath(name + lower), "part");
        writeFile(Paths::aresNew() / "ares.app/tag", "half");

        QStringList kept{QStringLiteral("Ares"),
                         QStringLiteral("Ares-old"),
                         QStringLiteral("Quillet64.z64"),
                         QStringLiteral("ares-version.txt"),
                         QStringLiteral("download-ares"),
                         QStringLiteral("download-game-1"),
                         QStringLiteral("download-ares") + lower,
                         QStringLiteral("my download-ares") + upper,
                         QStringLiteral("download-ares") + upper + QStringLiteral("2"),
                         QStringLiteral("download-ares") + upper + u'\n',
                         QStringLiteral("Quillet64.z64") + lower,
                         QStringLiteral(".other.z64") + lower};
        for (const auto& name : kept)
            writeFile(Paths::support() / toPath(name), "kept");
        kept.sort();
        Paths::removeLeftovers();
        auto stays = Sandbox::storage();
        stays.sort();
        QCOMPARE(stays, kept);
    }

    void leftoverLinkIsNotFollowed()
    {
        const Sandbox sandbox;
        writeFile(sandbox.scratch() / "own/file", "own");
        Paths::ensureSupport();
        fs::create_directory_symlink(sandbox.scratch() / "own",
                                     Paths::support() / "download-ares-0F8FAD5B-D9CB-469F-A165-70867728950E");
        Paths::removeLeftovers();
        QCOMPARE(Sandbox::storage(), QStringList());
        QCOMPARE(readFile(sandbox.scratch() / "own/file"), QByteArray("own"));
    }

    void leftoversOfAMissingFolderAreNone()
    {
        const Sandbox sandbox;
        Paths::removeLeftovers();
        QVERIFY(!fs::exists(Paths::support()));
    }

    void fileInPlaceOfTheFolderIsReported()
    {
        const Sandbox sandbox;
        writeFile(Paths::support(), "in the way");
        QVERIFY_THROWS_EXCEPTION(std::system_error, Paths::ensureSupport());
        QVERIFY_THROWS_EXCEPTION(std::system_error, static_cast<void>(Paths::newWorkDir("download-game")));
        QCOMPARE(readFile(Paths::support()), QByteArray("in the way"));
    }
};

QTEST_GUILESS_MAIN(PathsTest)
#include "tst_Paths.moc"
