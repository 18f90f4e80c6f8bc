// SPDX-License-Identifier: MIT
#include "platform/FolderAlias.h"

#include "platform/Text.h"

QString cartloom::FolderAlias::of(const FileDescriptor& folder, const std::filesystem::path& entry)
{
    return QStringLiteral("/proc/self/fd/%1/%2").arg(folder.get()).arg(toText(entry.filename()));
}
