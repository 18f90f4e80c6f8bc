// SPDX-License-Identifier: MIT
#pragma once

#include "emulator/TreeInspection.h"

namespace cartloom
{

/// The central directory of a zip archive.
struct ZipDirectory
{
    /// Size of the archive up to and with its end record, without the comment and what follows it.
    qint64 archiveBytes = 0;
    qint64 entries = 0;
    /// Sum of the unpacked sizes.
    qint64 unpackedBytes = 0;

    /// Reads the directory of an archive that is a zip and nothing else. Throws AppError if it is damaged,
    /// can be taken for another format, is encrypted or announces more than the bounds allow, and
    /// std::system_error if it cannot be read. Memory use does not depend on the archive.
    [[nodiscard]] static ZipDirectory read(const std::filesystem::path& archive,
                                           const TreeInspection::Bounds& bounds = {});
};

} // namespace cartloom
