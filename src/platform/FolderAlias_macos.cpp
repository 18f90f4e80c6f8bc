// SPDX-License-Identifier: MIT
#include "platform/FolderAlias.h"

#include "platform/Text.h"

// Names are UTF-8 on its file systems, and no name leads through a descriptor.
QString cartloom::FolderAlias::of(const FileDescriptor& /*folder*/, const std::filesystem::path& entry)
{
    return toText(entry);
}
