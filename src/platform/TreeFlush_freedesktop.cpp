// SPDX-License-Identifier: MIT
#include "platform/FileDescriptor.h"
#include "platform/TreeFlush.h"

#include <unistd.h>

namespace cartloom
{

void flushTree(const std::filesystem::path& folder)
{
    const auto descriptor = FileDescriptor::openForReading(folder);
#ifdef __linux__
    // One call for the whole file system is quicker than one for each file.
    if (::syncfs(descriptor.get()) != 0)
        throw lastSystemError();
#else
    ::sync();
#endif
}

} // namespace cartloom
