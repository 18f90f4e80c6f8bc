// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>

#include <optional>
#include <vector>

namespace cartloom
{

/// One entry of a zip archive; every field is written as it stands, whether it makes sense or not.
struct ZipEntry
{
    QByteArray name;
    QByteArray contents = {};
    /// As Unix keeps it: the kind of the entry and its permissions.
    quint32 mode = 0100644;
    /// Whether the contents are a raw deflate stream, of this many bytes when unpacked.
    std::optional<quint32> deflatedFrom = {};
    /// What is said of the contents instead of what is so.
    std::optional<quint32> checksum = {};
    std::optional<quint32> size = {};
};

/// A zip archive, byte by byte, for what no archive tool would write.
[[nodiscard]] QByteArray zipOf(const std::vector<ZipEntry>& entries);

[[nodiscard]] ZipEntry zipFolderEntry(const QByteArray& name);
[[nodiscard]] ZipEntry zipLink(const QByteArray& name, const QByteArray& target);
/// A file that the emulator's bundle is complete with: a program that ends at once.
[[nodiscard]] ZipEntry zipProgram(const QByteArray& name = "ares.app/Contents/MacOS/ares");
/// A file of zeros, a thousandth of its size in the archive.
[[nodiscard]] ZipEntry zipZeros(const QByteArray& name, quint32 size);

} // namespace cartloom
