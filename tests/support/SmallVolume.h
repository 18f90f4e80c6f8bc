// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>

namespace cartloom
{

/// A file system of its own with room for few bytes, mounted for this process alone.
class SmallVolume
{
public:
    /// To be called first thing in main, while there is one thread only. False where the system does not let
    /// this user mount anything.
    [[nodiscard]] static bool prepare();

    /// Mounts it on a folder that exists, with room for this many bytes.
    SmallVolume(std::filesystem::path folder, long long bytes);
    ~SmallVolume();
    SmallVolume(const SmallVolume&) = delete;
    SmallVolume& operator=(const SmallVolume&) = delete;

    /// Leaves room for this many bytes, and for this many more files and folders, beside what there is.
    void leaveRoomFor(long long bytes, long long entries = 1'000'000) const;
    /// How many bytes are taken.
    [[nodiscard]] long long used() const;

    [[nodiscard]] const std::filesystem::path& path() const { return m_folder; }

private:
    const std::filesystem::path m_folder;
};

} // namespace cartloom
