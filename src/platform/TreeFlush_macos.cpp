// SPDX-License-Identifier: MIT
#include "platform/FileDescriptor.h"
#include "platform/TreeFlush.h"

#include <unistd.h>

namespace fs = std::filesystem;

namespace cartloom
{

void flushTree(const fs::path& folder)
{
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
        const auto type = entry.symlink_status().type();
        if ((type == fs::file_type::regular || type == fs::file_type::directory) &&
            ::fsync(FileDescriptor::openForReading(entry.path()).get()) != 0)
            throw lastSystemError();
    }
    // It has the drive itself write what it was handed so far.
    FileDescriptor::openForReading(folder).flush();
}

} // namespace cartloom
