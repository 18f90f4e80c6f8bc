// SPDX-License-Identifier: MIT
#include "InterruptedTest.h"

#include "storage/Paths.h"
#include "support/AresBundle.h"

namespace fs = std::filesystem;

namespace cartloom
{

namespace
{

/// An ares.app that is as small as one can be and still has a bit of everything.
void makeMarkedAres(const fs::path& folder, const QByteArray& tag)
{
    const auto contents = folder / "ares.app/Contents";
    writeFile(
        contents / "Info.plist",
        "<plist version=\"1.0\"><dict><key>CFBundleExecutable</key><string>ares</string></dict></plist>");
    const auto program = contents / "MacOS/ares";
    writeFile(program, "#!/bin/sh\nprintf %s " + tag +
                           " > \"$PLAYED.part\" && mv -f \"$PLAYED.part\" \"$PLAYED\"\nexec \"$WAITER\"\n");
    fs::permissions(program, fs::perms(0755));
    const auto framework = contents / "Frameworks/MoltenVK.framework";
    writeFile(framework / "Versions/A/MoltenVK", QByteArray(100'000, tag.back()));
    fs::create_directory_symlink("A", framework / "Versions/Current");
    fs::create_symlink("Versions/Current/MoltenVK", framework / "MoltenVK");
    writeFile(contents / "Resources/empty", {});
    writeFile(contents / "Resources/tag", tag);
}

QByteArray rom(char filling)
{
    return bigEndianHeader + QByteArray(10'000'000 - bigEndianHeader.size(), filling);
}

void copyTree(const fs::path& from, const fs::path& to)
{
    fs::create_directories(to.parent_path());
    fs::copy(from, to, fs::copy_options::recursive | fs::copy_options::copy_symlinks);
}

/// What runs that were cut off may leave; v144 is a release that is never to be seen again.
void leaveThingsBehind()
{
    writeFile(Paths::newWorkDir("download-ares") / "ares.zip", "half");
    writeFile(Paths::newWorkDir("discarded") / "ares.app/Contents/Resources/tag", "v144");
    writeFile(Paths::aresNew() / "ares.app/Contents/Resources/stray", "v144");
}

} // namespace

fs::path InterruptedTest::whole(const char* tag) const
{
    return m_sandbox->scratch() / "whole" / tag;
}

void InterruptedTest::initTestCase()
{
    m_sandbox = std::make_unique<Sandbox>();
    const auto scratch = m_sandbox->scratch();
    for (const auto* tag : {"v145", "v146", "v147"})
        makeMarkedAres(whole(tag), tag);
    writeFile(scratch / "games/saved", rom('s'));
    writeFile(scratch / "games/imported", rom('i'));
    writeFile(scratch / "games/downloaded", rom('x'));

    m_sites = std::make_unique<ScriptedSites>(scratch);
    zipFolder(whole("v147"), scratch / "marked.zip");
    m_sites->publish(readFile(scratch / "marked.zip"), "v147");
}

void InterruptedTest::cleanupTestCase()
{
    m_sites.reset();
    m_sandbox.reset();
}

void InterruptedTest::installRelease(const fs::path& folder, const char* tag) const
{
    copyTree(whole(tag), folder);
}

void InterruptedTest::saveGame() const
{
    fs::create_directories(Paths::support());
    fs::copy_file(m_sandbox->scratch() / "games/saved", Paths::gameFile());
}

void InterruptedTest::prepare(const QString& operation) const
{
    fs::remove_all(m_sandbox->home());
    fs::create_directories(m_sandbox->home());
    writeFile(Paths::support() / "Quillet64.eeprom", "progress");
    if (operation != QLatin1String("game"))
        saveGame();
    if (operation == QLatin1String("install")) {
        leaveThingsBehind();
    } else if (operation == QLatin1String("recovery")) {
        installRelease(Paths::aresOld(), "v146");
    } else if (operation == QLatin1String("update")) {
        installRelease(Paths::ares(), "v146");
        installRelease(Paths::aresOld(), "v145");
        writeFile(Paths::aresVersion(), "v146");
    } else if (operation == QLatin1String("game") || operation == QLatin1String("import")) {
        installRelease(Paths::ares(), "v146");
        writeFile(Paths::aresVersion(), "v146");
    } else {
        installRelease(Paths::ares(), "v147");
        installRelease(Paths::aresOld(), "v146");
        writeFile(Paths::aresVersion(), "v147");
        // A choice that leads nowhere: a reset forgets it, and nothing else minds it.
        writeFile(m_sandbox->home() / "config/Cartloom/Cartloom.conf",
                  "[General]\nexternalAresPath=/nowhere/ares.app\n");
    }
}

QString InterruptedTest::commandOf(const QString& operation)
{
    const QStringList presses{QStringLiteral("install"), QStringLiteral("game"), QStringLiteral("recovery")};
    return presses.contains(operation) ? QStringLiteral("press") : operation;
}

PlayerEnd InterruptedTest::run(const QString& command, const Interruption& interruption,
                               const QStringList& wrapper) const
{
    return runPlayer(m_sandbox->home(), m_sandbox->scratch(), m_sites->origin().toString(), command,
                     interruption, wrapper);
}

} // namespace cartloom
