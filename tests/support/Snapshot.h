// SPDX-License-Identifier: MIT
#pragma once

#include <QStringList>

#include <filesystem>

namespace cartloom
{

/// All that stands in a folder, in the order of the paths: a line for each entry with its path below the
/// folder, what it is, its permissions and its contents' size and hash. Links are not followed; a folder that
/// is not there is empty.
[[nodiscard]] QStringList snapshotOf(const std::filesystem::path& folder);

} // namespace cartloom
