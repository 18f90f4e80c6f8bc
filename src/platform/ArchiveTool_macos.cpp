// SPDX-License-Identifier: MIT
#include "platform/ArchiveTool.h"

namespace cartloom
{

ArchiveTool ArchiveTool::unpackZip(const std::filesystem::path& archive, const std::filesystem::path& folder)
{
    return {"/usr/bin/ditto", {"-x", "-k", archive.native(), folder.native()}, {}};
}

} // namespace cartloom
