// SPDX-License-Identifier: MIT
#pragma once

#include <QtGlobal>

#include <filesystem>

/// Tells from a file's size and its first four bytes whether it can be a Nintendo 64 cartridge image. Any
/// thread.
namespace cartloom::RomCheck
{

/// The size of the largest game.
inline constexpr qint64 maxGameBytes = 40'000'000;

/// Returns when the file passes. The strict check is for the launcher's own game: big-endian, 10 to 40
/// million bytes. The lenient one takes any of the three byte orders, 1 to 128 million bytes. Throws AppError
/// for a file that is not such an image, and std::system_error for one that cannot be read. Never changes the
/// file.
void validate(const std::filesystem::path& file, bool strict);

} // namespace cartloom::RomCheck
