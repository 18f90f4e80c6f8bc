// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>

namespace cartloom
{

/// Unpacks a zip archive into an empty folder, with the system's archive tool, inspects what has come of it,
/// and removes the archive. Throws AppError when the tool reports a failure or the tree is not one to be
/// used, and std::system_error when the tool cannot be started; what was unpacked then stays. Takes seconds:
/// any thread but the main one.
void unzip(const std::filesystem::path& archive, const std::filesystem::path& folder);

} // namespace cartloom
