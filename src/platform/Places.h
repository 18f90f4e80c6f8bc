// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>
#include <vector>

/// Where this system keeps things for its user. All paths are absolute. Reading one creates nothing. Any
/// thread.
namespace cartloom::Places
{

/// The user's home folder.
[[nodiscard]] std::filesystem::path homeFolder();

/// The folders in which programs keep the user's data, the preferred one first. Empty when the system names
/// none.
[[nodiscard]] std::vector<std::filesystem::path> applicationSupportFolders();

/// The folders in which applications are usually installed, those of the whole machine before the user's own.
[[nodiscard]] std::vector<std::filesystem::path> applicationFolders();

} // namespace cartloom::Places
