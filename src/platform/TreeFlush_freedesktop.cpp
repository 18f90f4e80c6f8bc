// SPDX-License-Identifier: MIT
#include "platform/FileDescriptor.h"
#include "platform/TreeFlush.h"

#include <unistd.h>

namespace cartloom
{

void flushTree(const std::filesystem::path& folder)
{
    // One call for the whole file system is quicker than one for each file.
    if (::syncfs(FileDescriptor::openForReading(folder).get()) != 0)
        throw lastSystemError();
}

} // namespace cartloom
