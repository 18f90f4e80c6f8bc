// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>
#include <optional>
#include <vector>

/// Where this system keeps things for its user. All paths are absolute and byte for byte as the system gives
/// them. Reading one creates nothing. Any thread.
namespace cartloom::Places
{

/// The user's home folder: that of HOME, or of the user database if HOME is no absolute path.
[[nodiscard]] std::filesystem::path homeFolder();

/// The folders in which programs keep the user's data, the preferred one first. Empty when the system names
/// none.
[[nodiscard]] std::vector<std::filesystem::path> applicationSupportFolders();

/// The folder in which programs keep the user's preferences.
[[nodiscard]] std::filesystem::path preferencesFolder();

/// The folders in which applications are usually installed, those of the whole machine before the user's own.
[[nodiscard]] std::vector<std::filesystem::path> applicationFolders();

/// The folder for what must not outlive the user's session; none if the session has none. Not checked.
[[nodiscard]] std::optional<std::filesystem::path> sessionFolder();

} // namespace cartloom::Places
