// SPDX-License-Identifier: MIT
#pragma once

#include "storage/Removal.h"

#include <filesystem>
#include <utility>

namespace cartloom
{

/// Deletes a folder with its contents at the end of its scope. Ignores failures.
class WorkFolder
{
public:
    explicit WorkFolder(std::filesystem::path path)
        : m_path(std::move(path))
    {
    }
    ~WorkFolder() { Removal::tryRemove(m_path); }
    WorkFolder(const WorkFolder&) = delete;
    WorkFolder& operator=(const WorkFolder&) = delete;

    [[nodiscard]] const std::filesystem::path& path() const { return m_path; }

private:
    const std::filesystem::path m_path;
};

} // namespace cartloom
