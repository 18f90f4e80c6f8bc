// SPDX-License-Identifier: MIT
#pragma once

#include "platform/Files.h"

namespace cartloom
{

/// Removes a folder with all that is in it at the end of its scope, every failure ignored.
class WorkFolder
{
public:
    explicit WorkFolder(std::filesystem::path path)
        : m_path(std::move(path))
    {
    }
    ~WorkFolder() { Files::tryRemove(m_path); }
    WorkFolder(const WorkFolder&) = delete;
    WorkFolder& operator=(const WorkFolder&) = delete;

    [[nodiscard]] const std::filesystem::path& path() const { return m_path; }

private:
    const std::filesystem::path m_path;
};

} // namespace cartloom
