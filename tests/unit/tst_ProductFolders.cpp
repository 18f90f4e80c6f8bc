// SPDX-License-Identifier: MIT
#include "emulator/AresInstaller.h"
#include "emulator/SearchedFolders.h"
#include "platform/Places.h"

#include <QTemporaryDir>
#include <QtTest>

namespace fs = std::filesystem;
using namespace cartloom;

/// Linked as the program is, not as the other tests are.
class ProductFoldersTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theProgramSearchesTheApplicationFoldersOfTheSystem()
    {
        QCOMPARE(AresInstaller::searchedFolders(), Places::applicationFolders());
    }

    void theProgramFindsACopyInTheUsersApplications()
    {
        const QTemporaryDir home;
        qputenv("HOME", home.path().toUtf8());
        const fs::path ofUser = Places::homeFolder() / "Applications/ares.app";
        const fs::path ofMachine = Places::applicationFolders().front() / "ares.app";
        fs::create_directories(ofUser);
        QCOMPARE(AresInstaller::externalApp(), fs::exists(ofMachine) ? ofMachine : ofUser);
    }
};

QTEST_GUILESS_MAIN(ProductFoldersTest)
#include "tst_ProductFolders.moc"
