// SPDX-License-Identifier: MIT
#include "emulator/AresInstaller.h"
#include "support/Sandbox.h"
#include "support/Unprivileged.h"

#include <QtTest>

namespace fs = std::filesystem;
using namespace cartloom;

class DiscoveryTest : public QObject
{
    Q_OBJECT

    std::unique_ptr<Sandbox> m_sandbox;

    fs::path ofMachine() const { return m_sandbox->scratch() / "Applications"; }
    fs::path ofUser() const { return m_sandbox->home() / "Applications"; }
    fs::path tree() const { return m_sandbox->scratch() / "tree"; }

    std::optional<fs::path> search() const { return AresInstaller::externalAppIn({ofMachine(), ofUser()}); }

private Q_SLOTS:
    void init() { m_sandbox = std::make_unique<Sandbox>(); }
    void cleanup() { m_sandbox.reset(); }

    void machineWideCopyComesFirst()
    {
        fs::create_directories(ofUser() / "ares.app");
        QCOMPARE(search(), ofUser() / "ares.app");
        fs::create_directories(ofMachine() / "ares.app");
        QCOMPARE(search(), ofMachine() / "ares.app");
    }

    void plainFileCountsAsFound()
    {
        writeFile(ofMachine() / "ares.app", "a plain file");
        QCOMPARE(search(), ofMachine() / "ares.app");
    }

    void noCopyIsFoundInMissingFolders() { QCOMPARE(search(), std::nullopt); }

    void missingFolderHasNoBundle() { QCOMPARE(AresInstaller::findApp(tree()), std::nullopt); }

    void bundleIsFoundAtTheTop()
    {
        fs::create_directories(tree() / "ares.app");
        QCOMPARE(AresInstaller::findApp(tree()), tree() / "ares.app");
    }

    void bundleIsFoundOneFolderDown()
    {
        fs::create_directories(tree() / "ares-v147/ares.app");
        QCOMPARE(AresInstaller::findApp(tree()), tree() / "ares-v147/ares.app");
    }

    void searchIsFiveLevelsDeep()
    {
        fs::create_directories(tree() / "1/2/3/4/5/ares.app");
        QCOMPARE(AresInstaller::findApp(tree()), std::nullopt);
        fs::create_directories(tree() / "1/2/3/4/ares.app");
        QCOMPARE(AresInstaller::findApp(tree()), tree() / "1/2/3/4/ares.app");
    }

    void nameIsCaseSensitive()
    {
        fs::create_directories(tree() / "Ares.app");
        fs::create_directories(tree() / "ares.App");
        QCOMPARE(AresInstaller::findApp(tree()), std::nullopt);
    }

    void plainFileIsFoundAsABundle()
    {
        writeFile(tree() / "ares.app", "a plain file");
        QCOMPARE(AresInstaller::findApp(tree()), tree() / "ares.app");
    }

    void hiddenFoldersAreSkipped()
    {
        fs::create_directories(tree() / ".hidden/ares.app");
        QCOMPARE(AresInstaller::findApp(tree()), std::nullopt);
    }

    void folderLinksAreNotFollowed()
    {
        fs::create_directories(m_sandbox->scratch() / "elsewhere/ares.app");
        fs::create_directories(tree());
        fs::create_directory_symlink(m_sandbox->scratch() / "elsewhere", tree() / "link");
        QCOMPARE(AresInstaller::findApp(tree()), std::nullopt);
    }

    void searchOrderIsByName()
    {
        fs::create_directories(tree() / "b/ares.app");
        fs::create_directories(tree() / "a/deeper/ares.app");
        fs::create_directories(tree() / "c/ares.app");
        QCOMPARE(AresInstaller::findApp(tree()), tree() / "a/deeper/ares.app");
    }

    void unreadableFoldersAreSkipped()
    {
        fs::create_directories(tree() / "a/ares.app");
        fs::create_directories(tree() / "b/ares.app");
        fs::permissions(tree() / "a", fs::perms::none);
        std::optional<fs::path> found;
        {
            m_sandbox->openToEveryone();
            const Unprivileged unprivileged;
            found = AresInstaller::findApp(tree());
        }
        fs::permissions(tree() / "a", fs::perms::owner_all);
        QCOMPARE(found, tree() / "b/ares.app");
    }
};

QTEST_GUILESS_MAIN(DiscoveryTest)
#include "tst_Discovery.moc"
