// SPDX-License-Identifier: MIT
#pragma once

#include "async/Cancellation.h"
#include "emulator/TreeInspection.h"

#include <filesystem>

namespace cartloom
{

/// Checks the directory of a zip archive, unpacks it into an empty folder with the system's archive tool,
/// inspects the result and deletes the archive. A fired token ends the tool; so does a folder that exceeds
/// what the directory announces. Throws AppError for a failure of the tool and for an archive or a tree that
/// is not acceptable, CancellationError, and std::system_error if the tool cannot be started; then the folder
/// keeps what was unpacked. Takes seconds: worker threads only.
void unzip(const std::filesystem::path& archive, const std::filesystem::path& folder,
           const CancellationToken& token, const TreeInspection::Bounds& bounds = {});

} // namespace cartloom
