// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>
#include <optional>

namespace cartloom::Bundle
{

/// The program of an application bundle: the file in Contents/MacOS that its property list names, or "ares"
/// where that names none. None when there is no such file that may be executed. Never throws. Any thread.
[[nodiscard]] std::optional<std::filesystem::path> executable(const std::filesystem::path& app);

} // namespace cartloom::Bundle
