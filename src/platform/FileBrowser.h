// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>

namespace cartloom::FileBrowser
{

/// Selects a folder in the system's file browser; opens it if the browser cannot select. Returns at once;
/// errors are not reported. Main thread.
void reveal(const std::filesystem::path& folder);

} // namespace cartloom::FileBrowser
