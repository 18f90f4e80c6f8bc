// SPDX-License-Identifier: MIT
#include "platform/ArchiveTool.h"

namespace cartloom
{

ArchiveTool ArchiveTool::unpackZip(const std::filesystem::path& archive, const std::filesystem::path& folder)
{
    // Owners and special permission bits are never taken from an archive, not even when this user could set
    // them. Resource forks have no meaning here. Whatever the player's language, a full disk is told in the
    // words that are looked for.
    return {"bsdtar",
            {"-x", "--no-same-owner", "--no-same-permissions", "--exclude", "__MACOSX", "--exclude", "._*",
             "-f", archive.native(), "-C", folder.native()},
            {"LC_ALL=C.UTF-8", "LANGUAGE="}};
}

} // namespace cartloom
