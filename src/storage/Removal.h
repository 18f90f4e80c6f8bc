// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>

/// The two ways to delete. Any thread.
namespace cartloom::Removal
{

/// Deletes the file, link or folder with its contents. A missing one is no error. Throws std::system_error.
void remove(const std::filesystem::path& path);

/// As remove, but ignores failures, and also deletes read-only folders and folders nested beyond the longest
/// path.
void tryRemove(const std::filesystem::path& path) noexcept;

} // namespace cartloom::Removal
