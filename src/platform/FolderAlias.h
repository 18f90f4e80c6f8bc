// SPDX-License-Identifier: MIT
#pragma once

#include "platform/FileDescriptor.h"

#include <QString>

#include <filesystem>

/// Names of files for functions of Qt that cannot take any path: text holds no bytes that are not UTF-8, and
/// a socket's address has room for about a hundred bytes.
namespace cartloom::FolderAlias
{

/// A short name, in ASCII, for an entry of a folder; valid while the folder is open. The path of the entry
/// where the system offers no other name. Any thread.
[[nodiscard]] QString of(const FileDescriptor& folder, const std::filesystem::path& entry);

} // namespace cartloom::FolderAlias
