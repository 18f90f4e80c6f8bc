// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace cartloom
{

/// A command line of the system's archive tool. The tool ends with status 0, or with another one and a reason
/// on its error stream.
struct ArchiveTool
{
    std::filesystem::path program;
    std::vector<std::string> arguments;
    /// Environment variables, as "NAME=value", that it is started with.
    std::vector<std::string> environment;

    /// The command that unpacks a zip archive into a folder that exists. The thread that starts it has to
    /// wait for it: on Linux the tool is killed when that thread ends, so that it never outlives the
    /// launcher; on macOS it works on until it is done. Throws std::system_error if there is no such tool.
    [[nodiscard]] static ArchiveTool unpackZip(const std::filesystem::path& archive,
                                               const std::filesystem::path& folder);
};

} // namespace cartloom
