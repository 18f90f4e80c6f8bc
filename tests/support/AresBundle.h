// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QStringList>

#include <filesystem>

namespace cartloom
{

/// Makes an ares.app in a folder, in the layout of the macOS download, whose program is the scripted child.
/// Returns where it lies.
std::filesystem::path makeAresApp(const std::filesystem::path& folder);

/// What the scripted child does from now on, one command an entry.
void scriptChild(const QStringList& commands);

/// Packs all that is in a folder into a zip archive, with the system's archive tool.
void zipFolder(const std::filesystem::path& folder, const std::filesystem::path& archive);

} // namespace cartloom
