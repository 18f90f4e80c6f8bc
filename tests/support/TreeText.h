// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>

#include <filesystem>

namespace cartloom
{

/// Everything that makes up a folder, as text: names, kinds, who may execute, links and the bytes of all
/// files. Two folders that are alike have the same.
[[nodiscard]] QByteArray treeText(const std::filesystem::path& folder);

} // namespace cartloom
