// SPDX-License-Identifier: MIT
#pragma once

#include <QCoroTask>

#include <filesystem>

namespace cartloom
{

/// Unpacks a zip archive into an empty folder, with the system's archive tool, and inspects what has come of
/// it, on a thread of its own; then removes the archive. Throws AppError when the tool reports a failure or
/// the tree is not one to be used, and std::system_error when the tool cannot be started; what was unpacked
/// then stays. Main thread.
[[nodiscard]] QCoro::Task<void> unzip(std::filesystem::path archive, std::filesystem::path folder);

} // namespace cartloom
