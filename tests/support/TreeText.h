// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>

#include <filesystem>

namespace cartloom
{

/// A folder tree as text, equal for equal trees: names, kinds, execute permissions, link targets and file
/// contents.
[[nodiscard]] QByteArray treeText(const std::filesystem::path& folder);

} // namespace cartloom
