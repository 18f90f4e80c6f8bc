// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>

#include <filesystem>
#include <optional>

/// File operations that keep the errno. Any thread. They throw std::system_error unless they say otherwise.
namespace cartloom::Files
{

/// True if something exists at the path, links followed. False if that cannot be found out.
[[nodiscard]] bool exists(const std::filesystem::path& path) noexcept;

/// The size in bytes, links followed. 0 for anything but a regular file.
[[nodiscard]] qint64 size(const std::filesystem::path& path);

/// True if the path leads to a folder, links followed. False if that cannot be found out.
[[nodiscard]] bool isFolder(const std::filesystem::path& path) noexcept;

/// True if both paths lead to the same file. False if that cannot be found out.
[[nodiscard]] bool isSame(const std::filesystem::path& one, const std::filesystem::path& other) noexcept;

/// True if the path leads to a regular file that this user may execute.
[[nodiscard]] bool isExecutable(const std::filesystem::path& path) noexcept;

/// Creates the folder and its missing parents. An existing folder is no error.
void createFolders(const std::filesystem::path& folder);

/// Creates the folder. Fails with EEXIST if the name is taken.
void createNewFolder(const std::filesystem::path& folder);

/// Renames within one volume. Fails with EEXIST if the target's name is taken, even by a dangling link.
void move(const std::filesystem::path& from, const std::filesystem::path& to);

/// Renames within one volume and replaces a file at the target.
void moveOver(const std::filesystem::path& from, const std::filesystem::path& to);

/// Blocks until a file's bytes, or a folder's names, are on the disk.
void flush(const std::filesystem::path& path);

/// As flush, where a failure changes nothing. Ignores failures.
void tryFlush(const std::filesystem::path& path) noexcept;

/// The first bytes of the file, at most limit.
[[nodiscard]] QByteArray read(const std::filesystem::path& path, qint64 limit);

/// True if the volume of the path has less than 1 MiB left for this user, or no room for one more file. False
/// if that cannot be found out.
[[nodiscard]] bool isVolumeFull(const std::filesystem::path& path) noexcept;

} // namespace cartloom::Files
