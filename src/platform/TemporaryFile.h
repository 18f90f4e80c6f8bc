// SPDX-License-Identifier: MIT
#pragma once

#include "platform/FileDescriptor.h"

#include <filesystem>

namespace cartloom
{

/// A new, empty, hidden file beside the target whose place it may take. Deleted with this object unless
/// released. Throws std::system_error.
class TemporaryFile
{
public:
    explicit TemporaryFile(const std::filesystem::path& target);
    ~TemporaryFile();
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    [[nodiscard]] const std::filesystem::path& path() const { return m_path; }
    [[nodiscard]] FileDescriptor& descriptor() { return m_descriptor; }

    /// Keeps the file, for example after it was moved.
    void release() noexcept { m_path.clear(); }

private:
    std::filesystem::path m_path;
    FileDescriptor m_descriptor;
};

} // namespace cartloom
