// SPDX-License-Identifier: MIT
#include "support/ZipWriter.h"

#include <QtEndian>

#include <array>

namespace cartloom
{

namespace
{

constexpr quint16 versionOfUnix = 0x0314;
constexpr quint16 deflate = 8;

template <typename T>
QByteArray number(T value)
{
    QByteArray bytes(sizeof value, Qt::Uninitialized);
    qToLittleEndian(value, bytes.data());
    return bytes;
}

quint16 shortOf(qsizetype value)
{
    return static_cast<quint16>(value);
}

quint32 longOf(qsizetype value)
{
    return static_cast<quint32>(value);
}

constexpr std::array<quint32, 256> checksumsOfBytes()
{
    std::array<quint32, 256> sums = {};
    for (quint32 byte = 0; byte < sums.size(); ++byte) {
        quint32 sum = byte;
        for (int bit = 0; bit < 8; ++bit)
            sum = (sum & 1U) != 0 ? (sum >> 1U) ^ 0xedb88320U : sum >> 1U;
        sums[byte] = sum;
    }
    return sums;
}

quint32 checksumOf(const QByteArray& bytes)
{
    static constexpr auto sums = checksumsOfBytes();
    quint32 sum = ~0U;
    for (const char byte : bytes)
        sum = sums[(sum ^ static_cast<unsigned char>(byte)) & 0xffU] ^ (sum >> 8U);
    return ~sum;
}

quint32 sizeOf(const ZipEntry& entry)
{
    return entry.size.value_or(entry.deflatedFrom.value_or(longOf(entry.contents.size())));
}

/// What the entry's own header and the directory say in the same words.
QByteArray description(const ZipEntry& entry, quint32 size)
{
    const quint16 flags = 0;
    const quint16 method = entry.deflatedFrom ? deflate : 0;
    const quint32 time = 0x58210000;
    const quint32 compressed = longOf(entry.contents.size());
    return number(flags) + number(method) + number(time) +
           number(entry.checksum.value_or(checksumOf(entry.contents))) + number(compressed) + number(size) +
           number(shortOf(entry.name.size())) + number(quint16(0));
}

} // namespace

QByteArray zipOf(const std::vector<ZipEntry>& entries)
{
    QByteArray body;
    QByteArray directory;
    for (const auto& entry : entries) {
        directory += "PK\x01\x02" + number(versionOfUnix) + number(quint16(20)) +
                     description(entry, entry.announcedSize.value_or(sizeOf(entry))) + number(quint16(0)) +
                     number(quint16(0)) + number(quint16(0)) + number(entry.mode << 16U) +
                     number(longOf(body.size())) + entry.name;
        body += "PK\x03\x04" + number(quint16(20)) + description(entry, sizeOf(entry)) + entry.name +
                entry.contents;
    }
    const quint16 count = shortOf(static_cast<qsizetype>(entries.size()));
    return body + directory + "PK\x05\x06" + number(quint32(0)) + number(count) + number(count) +
           number(longOf(directory.size())) + number(longOf(body.size())) + number(quint16(0));
}

ZipEntry zipFolderEntry(const QByteArray& name)
{
    return {name + '/', {}, 040755, {}, {}, {}};
}

ZipEntry zipLink(const QByteArray& name, const QByteArray& target)
{
    return {name, target, 0120777, {}, {}, {}};
}

ZipEntry zipProgram(const QByteArray& name)
{
    return {name, "#!/bin/sh\n", 0100755, {}, {}, {}};
}

ZipEntry zipZeros(const QByteArray& name, quint32 size)
{
    const QByteArray zeros(static_cast<qsizetype>(size), '\0');
    // Without what the wrapping adds before and after the stream itself.
    constexpr qsizetype head = 6;
    constexpr qsizetype tail = 4;
    return {name, qCompress(zeros, 9).mid(head).chopped(tail), 0100644, size, checksumOf(zeros), {}};
}

} // namespace cartloom
