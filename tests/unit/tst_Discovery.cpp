// SPDX-License-Identifier: MIT
#include "emulator/AresInstaller.h"
#include "support/Sandbox.h"

#include <QtTest>

#include <unistd.h>

namespace fs = std::filesystem;
using namespace cartloom;

/// The candidate for the whole machine is /opt/ares.app here, which only root can make; without that right
/// the cases that need it are skipped.
class DiscoveryTest : public QObject
{
    Q_OBJECT

    std::unique_ptr<Sandbox> m_sandbox;
    const fs::path m_ofMachine = "/opt/ares.app";
    bool m_madeOfMachine = false;

    fs::path ofUser() const { return m_sandbox->home() / "Applications/ares.app"; }
    fs::path tree() const { return m_sandbox->scratch() / "tree"; }
    bool mayInstallForMachine() const { return ::access("/opt", W_OK) == 0 && !fs::exists(m_ofMachine); }

    void installForMachine()
    {
        writeFile(m_ofMachine, "a plain file");
        m_madeOfMachine = true;
    }

private Q_SLOTS:
    void init() { m_sandbox = std::make_unique<Sandbox>(); }

    void cleanup()
    {
        if (m_madeOfMachine)
            fs::remove(m_ofMachine);
        m_madeOfMachine = false;
        m_sandbox.reset();
    }

    void theCopyOfTheMachineComesBeforeTheUsers()
    {
        if (!mayInstallForMachine())
            QSKIP("needs the right to write to /opt, and no Ares there");
        fs::create_directories(ofUser());
        installForMachine();
        QCOMPARE(AresInstaller::externalApp(), m_ofMachine);
    }

    void aPlainFileOfTheNameCountsAsFound()
    {
        if (fs::exists(m_ofMachine))
            QSKIP("this machine has an Ares of its own");
        writeFile(ofUser(), "a plain file");
        QCOMPARE(AresInstaller::externalApp(), ofUser());
    }

    void withNeitherThereIsNone()
    {
        if (fs::exists(m_ofMachine))
            QSKIP("this machine has an Ares of its own");
        QCOMPARE(AresInstaller::externalApp(), std::nullopt);
    }

    void nothingIsFoundInAFolderThatDoesNotExist() { QCOMPARE(AresInstaller::findApp(tree()), std::nullopt); }

    void theBundleIsFoundAtTheTop()
    {
        fs::create_directories(tree() / "ares.app");
        QCOMPARE(AresInstaller::findApp(tree()), tree() / "ares.app");
    }

    void theBundleIsFoundOneFolderDown()
    {
        fs::create_directories(tree() / "ares-v147/ares.app");
        QCOMPARE(AresInstaller::findApp(tree()), tree() / "ares-v147/ares.app");
    }

    void theBundleIsFoundFiveLevelsDownButNotSix()
    {
        fs::create_directories(tree() / "1/2/3/4/5/ares.app");
        QCOMPARE(AresInstaller::findApp(tree()), std::nullopt);
        fs::create_directories(tree() / "1/2/3/4/ares.app");
        QCOMPARE(AresInstaller::findApp(tree()), tree() / "1/2/3/4/ares.app");
    }

    void theNameIsCaseSensitive()
    {
        fs::create_directories(tree() / "Ares.app");
        fs::create_directories(tree() / "ares.App");
        QCOMPARE(AresInstaller::findApp(tree()), std::nullopt);
    }

    void anythingOfTheNameIsFoundWhateverItIs()
    {
        writeFile(tree() / "ares.app", "a plain file");
        QCOMPARE(AresInstaller::findApp(tree()), tree() / "ares.app");
    }

    void hiddenEntriesAreSkippedWithAllBelowThem()
    {
        fs::create_directories(tree() / ".hidden/ares.app");
        QCOMPARE(AresInstaller::findApp(tree()), std::nullopt);
    }

    void linksToFoldersAreNotFollowed()
    {
        fs::create_directories(m_sandbox->scratch() / "elsewhere/ares.app");
        fs::create_directories(tree());
        fs::create_directory_symlink(m_sandbox->scratch() / "elsewhere", tree() / "link");
        QCOMPARE(AresInstaller::findApp(tree()), std::nullopt);
    }

    void theOrderIsByName()
    {
        fs::create_directories(tree() / "b/ares.app");
        fs::create_directories(tree() / "a/deeper/ares.app");
        fs::create_directories(tree() / "c/ares.app");
        QCOMPARE(AresInstaller::findApp(tree()), tree() / "a/deeper/ares.app");
    }

    void foldersThatCannotBeReadAreSkipped()
    {
        if (::geteuid() == 0)
            QSKIP("root can read every folder");
        fs::create_directories(tree() / "a/ares.app");
        fs::create_directories(tree() / "b/ares.app");
        fs::permissions(tree() / "a", fs::perms::none);
        const auto found = AresInstaller::findApp(tree());
        fs::permissions(tree() / "a", fs::perms::owner_all);
        QCOMPARE(found, tree() / "b/ares.app");
    }
};

QTEST_GUILESS_MAIN(DiscoveryTest)
#include "tst_Discovery.moc"
