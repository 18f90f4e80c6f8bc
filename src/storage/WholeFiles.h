// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>

#include <filesystem>

/// Files that appear complete or not at all, whatever ends the program or the system. Any thread. Throws
/// std::system_error.
namespace cartloom::WholeFiles
{

/// Copies one file's bytes. Fails with EEXIST if the target's name is taken, with EBUSY if the source changes
/// its length meanwhile.
void copy(const std::filesystem::path& from, const std::filesystem::path& to);

/// Writes the bytes to the file, in place of the file that was there.
void write(const std::filesystem::path& path, const QByteArray& bytes);

} // namespace cartloom::WholeFiles
