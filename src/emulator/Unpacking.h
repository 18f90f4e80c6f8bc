// SPDX-License-Identifier: MIT
#pragma once

#include <QCoroTask>

#include <filesystem>

namespace cartloom
{

/// Unpacks a zip archive into a folder that exists, with the system's archive tool, on a thread of its own.
/// Throws AppError when the tool reports a failure, and std::system_error when it cannot be started. Main
/// thread.
[[nodiscard]] QCoro::Task<void> unzip(std::filesystem::path archive, std::filesystem::path folder);

} // namespace cartloom
