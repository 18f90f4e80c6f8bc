// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>
#include <optional>
#include <string>
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

/// Renames an entry of the storage folder to one of the names that mark a leftover. None if that fails.
std::optional<std::filesystem::path> setAside(const std::filesystem::path& entry);

/// Sets an entry aside and deletes it, so that an interruption leaves no half of it under its name. Ignores
/// failures; an entry that cannot be set aside stays.
void discard(const std::filesystem::path& entry);

/// Sets Ares-new aside and lists the leftovers of interrupted runs: work folders, entries set aside,
/// unfinished files. Ignores failures. Not during a download.
[[nodiscard]] std::vector<std::filesystem::path> takeLeftovers();

/// Takes the leftovers and deletes them. Ignores failures. There may be very many files: worker threads only.
void removeLeftovers();

/// A new random identifier in its standard upper-case text form.
[[nodiscard]] std::string newIdentifier();

} // namespace cartloom::Paths
