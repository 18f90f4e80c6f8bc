// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>

namespace cartloom::FileBrowser
{

/// Shows a folder in the system's file browser. Returns at once; what goes wrong is not reported. Main
/// thread.
void reveal(const std::filesystem::path& folder);

} // namespace cartloom::FileBrowser
