// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>

#include <filesystem>
#include <optional>

/// The few file operations that everything above is built from. Any thread. What fails throws
/// std::system_error, whose code is the errno; the operations that say so ignore every failure.
namespace cartloom::Files
{

/// Whether something stands at the path, links followed. Never fails: what cannot be looked at is not there.
[[nodiscard]] bool exists(const std::filesystem::path& path) noexcept;

/// The size in bytes, links followed; 0 for what is not a regular file.
[[nodiscard]] qint64 size(const std::filesystem::path& path);

/// Whether the path leads to a folder, links followed. Never fails: what cannot be looked at is none.
[[nodiscard]] bool isFolder(const std::filesystem::path& path) noexcept;

/// Whether both paths lead to the same file. Never fails: what cannot be looked at is not the same.
[[nodiscard]] bool isSame(const std::filesystem::path& one, const std::filesystem::path& other) noexcept;

/// Whether the path names a file that this user may execute.
[[nodiscard]] bool isExecutable(const std::filesystem::path& path) noexcept;

/// Makes the folder with its missing parents. A folder that exists is no failure.
void createFolders(const std::filesystem::path& folder);

/// Makes the folder in one that exists. Fails with EEXIST when anything stands there.
void createNewFolder(const std::filesystem::path& folder);

/// Renames within one volume. Fails with EEXIST when anything stands at the target, and leaves both as they
/// were.
void move(const std::filesystem::path& from, const std::filesystem::path& to);

/// Copies one file's bytes. Fails with EEXIST when anything stands at the target. The target appears whole or
/// not at all. Fails with EBUSY when the file changes its length meanwhile.
void copy(const std::filesystem::path& from, const std::filesystem::path& to);

/// Removes the file, link or folder with all that is in it. Nothing there is no failure.
void clear(const std::filesystem::path& path);

/// As clear, every failure ignored; folders that their owner may not change are removed too.
void tryRemove(const std::filesystem::path& path) noexcept;

/// At most the first limit bytes of the file, fewer where it ends before.
[[nodiscard]] QByteArray read(const std::filesystem::path& path, qint64 limit);

/// At most the last limit bytes of the file, fewer where it is shorter.
[[nodiscard]] QByteArray readEnd(const std::filesystem::path& path, qint64 limit);

/// Writes the file whole: to a temporary file beside it, which then replaces it.
void writeAtomically(const std::filesystem::path& path, const QByteArray& bytes);

} // namespace cartloom::Files
