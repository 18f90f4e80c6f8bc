// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>

namespace cartloom
{

/// A small file system that only this process sees.
class SmallVolume
{
public:
    /// Called first in main, before there is a second thread. False if this user may not mount.
    [[nodiscard]] static bool prepare();

    /// Mounts it on an existing folder, with room for this many bytes.
    SmallVolume(std::filesystem::path folder, long long bytes);
    ~SmallVolume();
    SmallVolume(const SmallVolume&) = delete;
    SmallVolume& operator=(const SmallVolume&) = delete;

    /// Limits the free space to this many bytes, and to this many more files and folders.
    void leaveRoomFor(long long bytes, long long entries = 1'000'000) const;
    /// The number of bytes in use.
    [[nodiscard]] long long used() const;

    [[nodiscard]] const std::filesystem::path& path() const { return m_folder; }

private:
    const std::filesystem::path m_folder;
};

} // namespace cartloom
