// SPDX-License-Identifier: MIT
#include "emulator/ZipDirectory.h"

#include "errors/AppError.h"
#include "platform/FileDescriptor.h"
#include "platform/Files.h"

#include <QByteArray>
#include <QString>
#include <QtEndian>

#include <algorithm>
#include <cstdlib>
#include <initializer_list>
#include <limits>
#include <optional>
#include <utility>

namespace cartloom
{

namespace
{

constexpr qint64 localHeaderBytes = 30;
constexpr qint64 entryBytes = 46;
constexpr qint64 zip64EndBytes = 56;
constexpr qint64 zip64LocatorBytes = 20;
constexpr qint64 endBytes = 22;

/// The end record is looked for in so many last bytes.
constexpr qint64 searchedBytes = 1024 * 1024;

const auto localHeaderMark = QByteArrayLiteral("PK\x03\x04");
const auto entryMark = QByteArrayLiteral("PK\x01\x02");
const auto zip64EndMark = QByteArrayLiteral("PK\x06\x06");
const auto zip64LocatorMark = QByteArrayLiteral("PK\x06\x07");
const auto endMark = QByteArrayLiteral("PK\x05\x06");

/// A number that is stored elsewhere because it does not fit.
template <typename T>
constexpr T elsewhere = std::numeric_limits<T>::max();

[[noreturn]] void refuse(const QString& reason)
{
    throw AppError(QStringLiteral("Could not unpack Ares. The download may be damaged."), reason);
}

/// The little-endian number at a position that lies within the bytes.
template <typename T>
T number(const QByteArray& bytes, qsizetype at)
{
    return qFromLittleEndian<T>(bytes.constData() + at);
}

/// True if a field of the end record agrees with that of the 64-bit record, or refers to it.
template <typename T>
bool agrees(T field, quint64 value)
{
    return field == elsewhere<T> || field == value;
}

/// True if the block is the header of a tar archive's first entry: its checksum holds.
bool isTarHeader(QByteArray block)
{
    constexpr qsizetype field = 148;
    constexpr qsizetype length = 8;
    if (block.size() < 512)
        return false;
    const long stated = std::strtol(block.mid(field, length).constData(), nullptr, 8);
    block.replace(field, length, QByteArray(length, ' '));
    long sum = 0;
    long signedSum = 0;
    for (const char byte : std::as_const(block)) {
        sum += static_cast<unsigned char>(byte);
        signedSum += static_cast<signed char>(byte);
    }
    return stated == sum || stated == signedSum;
}

/// The part of the archive that holds the entries of the directory.
struct Location
{
    qint64 start = 0;
    qint64 end = 0;
    quint64 entries = 0;
};

class Archive
{
public:
    explicit Archive(const std::filesystem::path& path)
        : m_file(FileDescriptor::openForReading(path))
        , m_size(Files::size(path))
    {
    }

    ZipDirectory readDirectory(const TreeInspection::Bounds& bounds)
    {
        // Let an empty file through: the search for ares.app reports it.
        if (m_size == 0)
            return {};
        const Location location = findEnd();
        // The archive tool recognises any format by its bytes.
        if (at(0, 4) != (location.end == 0 ? endMark : localHeaderMark) || isAnotherFormat())
            refuse(QStringLiteral("The archive is no zip."));
        m_left = bounds;
        readEntries(location);
        m_result.unpackedBytes = bounds.bytes - m_left.bytes;
        m_result.entries = bounds.entries - m_left.entries;
        if (std::cmp_not_equal(m_result.entries, location.entries))
            refuse(QStringLiteral("The archive has another number of entries than it says."));
        return m_result;
    }

private:
    /// The bytes at a position; fewer if the archive ends before.
    [[nodiscard]] QByteArray at(qint64 position, qint64 length) const
    {
        QByteArray bytes(length, Qt::Uninitialized);
        bytes.truncate(
            static_cast<qsizetype>(m_file.readAt(position, bytes.data(), static_cast<std::size_t>(length))));
        return bytes;
    }

    /// Finds the last end record that has its directory right before it. A comment may hold the mark as well.
    Location findEnd()
    {
        const qint64 first = std::max<qint64>(m_size - searchedBytes, 0);
        const QByteArray tail = at(first, m_size - first);
        qsizetype mark = tail.size() - endBytes + 1;
        while (mark > 0 && (mark = tail.lastIndexOf(endMark, mark - 1)) >= 0) {
            if (const auto location = locate(tail.mid(mark, endBytes), first + mark)) {
                m_result.archiveBytes = first + mark + endBytes;
                return *location;
            }
        }
        refuse(QStringLiteral("The archive has no end."));
    }

    /// The directory of an end record. None if it is not right before the record.
    [[nodiscard]] std::optional<Location> locate(const QByteArray& end, qint64 position) const
    {
        if (number<quint32>(end, 4) != 0 || number<quint16>(end, 8) != number<quint16>(end, 10))
            return std::nullopt;
        const qint64 locator = position - zip64LocatorBytes;
        if (locator >= 0 && at(locator, 4) == zip64LocatorMark)
            return locateLarge(end, locator);
        const qint64 start = number<quint32>(end, 16);
        if (start + number<quint32>(end, 12) != position)
            return std::nullopt;
        return Location{start, position, number<quint16>(end, 10)};
    }

    /// The directory of an archive with 64-bit records, which stand between it and the end record.
    [[nodiscard]] std::optional<Location> locateLarge(const QByteArray& end, qint64 locatorPosition) const
    {
        const QByteArray locator = at(locatorPosition, zip64LocatorBytes);
        const auto position = number<quint64>(locator, 8);
        if (std::cmp_greater(position, locatorPosition - zip64EndBytes) || number<quint32>(locator, 4) != 0 ||
            number<quint32>(locator, 16) != 1)
            return std::nullopt;
        const QByteArray record = at(static_cast<qint64>(position), zip64EndBytes);
        const auto entries = number<quint64>(record, 32);
        const auto size = number<quint64>(record, 40);
        const auto start = number<quint64>(record, 48);
        // The record's own length does not count its first 12 bytes.
        const bool fits =
            number<quint64>(record, 4) == static_cast<quint64>(locatorPosition) - position - 12 &&
            start <= position && size == position - start;
        if (!record.startsWith(zip64EndMark) || !fits || number<quint64>(record, 16) != 0 ||
            number<quint64>(record, 24) != entries || !agrees(number<quint16>(end, 10), entries) ||
            !agrees(number<quint32>(end, 12), size) || !agrees(number<quint32>(end, 16), start))
            return std::nullopt;
        return Location{static_cast<qint64>(start), static_cast<qint64>(position), entries};
    }

    /// True for the two formats that libarchive prefers to zip and that do not begin with bytes of their own.
    [[nodiscard]] bool isAnotherFormat() const
    {
        constexpr qint64 isoDescriptor = 32 * 1024;
        return isTarHeader(at(0, 512)) || at(isoDescriptor + 1, 5) == "CD001";
    }

    void readEntries(const Location& location)
    {
        for (qint64 position = location.start; position < location.end;) {
            const QByteArray entry = at(position, entryBytes);
            if (entry.size() < entryBytes || !entry.startsWith(entryMark))
                refuse(QStringLiteral("The archive's directory is damaged."));
            const qint64 variable = position + entryBytes;
            const auto name = number<quint16>(entry, 28);
            const auto extra = number<quint16>(entry, 30);
            position = variable + name + extra + number<quint16>(entry, 32);
            if (position > location.end)
                refuse(QStringLiteral("The archive's directory is damaged."));
            const auto fault = faultOf(entry, variable + name, extra, location.start);
            if (!fault.isEmpty())
                refuse(QString::fromUtf8(at(variable, name)) + QStringLiteral(": ") + fault);
        }
    }

    /// Counts an entry. The result is the reason to refuse it, if there is one.
    QString faultOf(const QByteArray& entry, qint64 extra, quint16 extraBytes, qint64 directory)
    {
        if (--m_left.entries < 0)
            return QStringLiteral("too many files");
        // The tool would ask for a password.
        constexpr unsigned encrypted = 1;
        if ((number<quint16>(entry, 8) & encrypted) != 0)
            return QStringLiteral("encrypted");
        quint64 unpacked = number<quint32>(entry, 24);
        quint64 packed = number<quint32>(entry, 20);
        quint64 header = number<quint32>(entry, 42);
        const bool isLarge = std::max({unpacked, packed, header}) == elsewhere<quint32>;
        if (isLarge && !readLarge(at(extra, extraBytes), {&unpacked, &packed, &header}))
            return QStringLiteral("no size");
        if (std::cmp_greater(unpacked, m_left.bytes))
            return QStringLiteral("too many bytes");
        m_left.bytes -= static_cast<qint64>(unpacked);
        const auto room = static_cast<quint64>(directory);
        if (header > room || packed > room - header || room - header - packed < localHeaderBytes ||
            at(static_cast<qint64>(header), 4) != localHeaderMark)
            return QStringLiteral("outside of the archive");
        return {};
    }

    /// Replaces the numbers that are stored elsewhere by those in the extra field for them. False if one is
    /// missing there.
    static bool readLarge(const QByteArray& extra, std::initializer_list<quint64*> numbers)
    {
        constexpr quint16 zip64 = 1;
        constexpr qsizetype head = 4;
        qsizetype at = 0;
        while (extra.size() - at >= head && number<quint16>(extra, at) != zip64)
            at += head + number<quint16>(extra, at + 2);
        if (extra.size() - at < head)
            return false;
        const qsizetype end = std::min(extra.size(), at + head + number<quint16>(extra, at + 2));
        at += head;
        for (quint64* const value : numbers) {
            if (*value != elsewhere<quint32>)
                continue;
            if (end - at < qsizetype(sizeof *value))
                return false;
            *value = number<quint64>(extra, at);
            at += qsizetype(sizeof *value);
        }
        return true;
    }

    const FileDescriptor m_file;
    const qint64 m_size;
    TreeInspection::Bounds m_left;
    ZipDirectory m_result;
};

} // namespace

ZipDirectory ZipDirectory::read(const std::filesystem::path& archive, const TreeInspection::Bounds& bounds)
{
    return Archive(archive).readDirectory(bounds);
}

} // namespace cartloom
