// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>
#include <string_view>
#include <vector>

/// The one folder that holds everything which this program downloads or installs, and the names in it. Any
/// thread.
namespace cartloom::Paths
{

/// The storage folder. Creates nothing, never fails.
[[nodiscard]] std::filesystem::path support();

/// The storage folder for a system that names these folders for the user's data, the preferred one first.
[[nodiscard]] std::filesystem::path
supportIn(const std::vector<std::filesystem::path>& applicationSupportFolders);

/// The installed emulator.
[[nodiscard]] std::filesystem::path ares();
/// An installation in progress.
[[nodiscard]] std::filesystem::path aresNew();
/// The emulator before the last update, until the new one has started once.
[[nodiscard]] std::filesystem::path aresOld();
/// The tag of the installed release.
[[nodiscard]] std::filesystem::path aresVersion();
/// The saved game.
[[nodiscard]] std::filesystem::path gameFile();

/// Makes sure that the storage folder exists. Throws std::system_error.
void ensureSupport();

/// A new, empty folder inside the storage folder, named with the prefix and a random UUID. Removing it is the
/// caller's business. Throws std::system_error.
[[nodiscard]] std::filesystem::path newWorkDir(std::string_view prefix);

/// Takes an entry of the storage folder away at once, and removes it then: a run that is cut off in between
/// leaves nothing half removed under a name that means something. Ignores every failure; what cannot be taken
/// away stays as it is.
void discard(const std::filesystem::path& entry);

/// What runs that were cut off have left in the storage folder: work folders, copies that were given up,
/// unfinished files; and an installation that was in progress, which is taken away for that. All of it is
/// known by its name. Ignores every failure. Not while anything is downloaded; only one instance of the
/// program works on the folder.
[[nodiscard]] std::vector<std::filesystem::path> takeLeftovers();

/// Takes the leftovers and removes them, every failure ignored. An archive may have made very many of them:
/// not on the main thread.
void removeLeftovers();

/// A new random identifier in its standard upper-case text form.
[[nodiscard]] std::string newIdentifier();

} // namespace cartloom::Paths
