// SPDX-License-Identifier: MIT
#include "emulator/Unpacking.h"

#include "emulator/TreeInspection.h"
#include "errors/FriendlyError.h"
#include "errors/PlatformError.h"
#include "platform/ArchiveTool.h"
#include "platform/ChildProcess.h"
#include "platform/Files.h"
#include "platform/Text.h"
#include "storage/Removal.h"

#include <QByteArray>
#include <QtEndian>

#include <cstdint>
#include <limits>

namespace cartloom
{

namespace
{

/// The rest of the tool's standard error is read and dropped.
constexpr qsizetype maxErrorBytes = 64 * 1024;

QByteArray readToEnd(const FileDescriptor& stream)
{
    QByteArray bytes;
    char block[4096];
    while (const auto count = stream.readSome(block, sizeof block)) {
        if (bytes.size() < maxErrorBytes)
            bytes.append(block, static_cast<qsizetype>(count));
    }
    // Cut after a character of one byte, so that no longer one is cut in the middle.
    const bool cut = bytes.size() >= maxErrorBytes;
    while (cut && !bytes.isEmpty() && static_cast<unsigned char>(bytes.back()) >= 0x80)
        bytes.chop(1);
    return bytes;
}

constexpr qsizetype zipEndBytes = 22;

/// The position of the record that ends a zip archive's directory, in the archive's last bytes; -1 if there
/// is none. A comment may hold the mark as well, but not before a directory that fits.
qsizetype findZipEnd(const QByteArray& bytes, qint64 archiveBytes)
{
    const auto number = [&bytes]<typename T>(qsizetype at, T) {
        return qFromLittleEndian<T>(bytes.constData() + at);
    };
    qsizetype mark = bytes.size() - zipEndBytes + 1;
    while (mark > 0 && (mark = bytes.lastIndexOf(QByteArrayLiteral("PK\x05\x06"), mark - 1)) >= 0) {
        const qint64 directory = qint64(number(mark + 12, quint32())) + number(mark + 16, quint32());
        const bool isLarge = number(mark + 16, quint32()) == std::numeric_limits<quint32>::max();
        const qint64 position = archiveBytes - bytes.size() + mark;
        if (number(mark + 4, quint16()) == 0 && (isLarge || directory <= position))
            return mark;
    }
    return -1;
}

/// Refuses an archive without a directory, and cuts off what follows one, a comment included. A tool that
/// does not find the directory may take what comes before it for the whole, without the permissions and the
/// kinds of files.
void cutAfterDirectory(const std::filesystem::path& archive)
{
    constexpr qint64 searchedBytes = 1024 * 1024;
    const qint64 size = Files::size(archive);
    // What holds nothing at all is judged by what is missing in it.
    if (size == 0)
        return;
    const QByteArray bytes = Files::readEnd(archive, searchedBytes);
    const auto end = findZipEnd(bytes, size);
    if (end < 0)
        throw AppError(QStringLiteral("Could not unpack Ares. The download may be damaged."),
                       QStringLiteral("The archive has no end."));
    const auto surplus = bytes.size() - end - zipEndBytes;
    if (surplus == 0)
        return;
    // The record ends with the length of the comment, which becomes 0.
    const auto whole = static_cast<std::uintmax_t>(size - surplus);
    std::filesystem::resize_file(archive, whole - sizeof(quint16));
    std::filesystem::resize_file(archive, whole);
}

void runTool(const ArchiveTool& tool, const CancellationToken& token)
{
    Pipe errors;
    const auto process = ChildProcess::start(tool.program, tool.arguments, errors.writing, tool.environment);
    errors.writing.close();
    QString text;
    {
        const CancellationCallback onCancel(token, [&process] { process.kill(); });
        text = decodeUtf8(readToEnd(errors.reading)).value_or(QString());
        process.waitUntilEnded();
    }
    const int status = process.waitForExit();
    if (token.isCancelled())
        throw CancellationError();
    if (status == 0)
        return;
    if (text.contains(QLatin1String("no space"), Qt::CaseInsensitive))
        throw FriendlyError::diskFull(text);
    throw AppError(QStringLiteral("Could not unpack Ares. The download may be damaged."), text);
}

} // namespace

void unzip(const std::filesystem::path& archive, const std::filesystem::path& folder,
           const CancellationToken& token)
{
    cutAfterDirectory(archive);
    runTool(ArchiveTool::unpackZip(archive, folder), token);
    TreeInspection::inspect(folder);
    Removal::tryRemove(archive);
}

} // namespace cartloom
