// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>

namespace cartloom
{

/// Lets this process and its children take the folder for the player's home, with storage folder, preferences
/// and caches in it, so that nothing of the player's own is read or changed. To be called before the launcher
/// is made; another call moves to another folder. Throws std::filesystem::filesystem_error when the folder
/// cannot be made.
void liveIn(const std::filesystem::path& folder);

} // namespace cartloom
