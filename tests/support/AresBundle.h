// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QStringList>

#include <filesystem>

namespace cartloom
{

/// Makes an ares.app in a folder, in the layout of the macOS download, with the scripted child as its
/// program. Returns its path.
std::filesystem::path makeAresApp(const std::filesystem::path& folder);

/// Sets the commands of the scripted child, one per entry.
void scriptChild(const QStringList& commands);

/// Packs a folder's contents into a zip archive with the system's archive tool.
void zipFolder(const std::filesystem::path& folder, const std::filesystem::path& archive);

} // namespace cartloom
