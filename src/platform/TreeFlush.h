// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>

namespace cartloom
{

/// Blocks until everything in a folder is on the disk. Takes seconds: worker threads only. Throws
/// std::system_error.
void flushTree(const std::filesystem::path& folder);

} // namespace cartloom
