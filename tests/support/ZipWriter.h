// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>

#include <optional>
#include <vector>

namespace cartloom
{

/// One entry of a zip archive. Every field is written unchecked.
struct ZipEntry
{
    QByteArray name;
    QByteArray contents = {};
    /// Unix file type and permissions.
    quint32 mode = 0100644;
    /// The unpacked size, if the contents are a raw deflate stream.
    std::optional<quint32> deflatedFrom = {};
    /// Written in place of the true values.
    std::optional<quint32> checksum = {};
    std::optional<quint32> size = {};
    /// Written in place of the size in the directory only.
    std::optional<quint32> announcedSize = {};
};

/// The bytes of a zip archive, for entries that no archive tool would write.
[[nodiscard]] QByteArray zipOf(const std::vector<ZipEntry>& entries);

[[nodiscard]] ZipEntry zipFolderEntry(const QByteArray& name);
[[nodiscard]] ZipEntry zipLink(const QByteArray& name, const QByteArray& target);
/// A program that exits at once and completes the emulator's bundle.
[[nodiscard]] ZipEntry zipProgram(const QByteArray& name = "ares.app/Contents/MacOS/ares");
/// A file of zeros, compressed about 1000:1.
[[nodiscard]] ZipEntry zipZeros(const QByteArray& name, quint32 size);

} // namespace cartloom
