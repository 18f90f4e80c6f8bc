// SPDX-License-Identifier: MIT
#pragma once

#include <QStringList>

#include <filesystem>

namespace cartloom
{

/// The entries of a folder tree, sorted: a line for each with its path, kind, permissions, size and hash.
/// Links are not followed; a missing folder is empty.
[[nodiscard]] QStringList snapshotOf(const std::filesystem::path& folder);

} // namespace cartloom
