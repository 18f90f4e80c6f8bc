// SPDX-License-Identifier: MIT
#include "platform/ArchiveTool.h"

namespace cartloom
{

ArchiveTool ArchiveTool::unpackZip(const std::filesystem::path& archive, const std::filesystem::path& folder)
{
    // Owners and special permission bits are never taken from an archive, not even when this user could set
    // them.
    return {
        "bsdtar",
        {"-x", "--no-same-owner", "--no-same-permissions", "-f", archive.native(), "-C", folder.native()}};
}

} // namespace cartloom
