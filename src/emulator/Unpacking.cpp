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

#include <algorithm>

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

/// The directory of a zip archive is its last part, and a tool that does not find it may take what comes
/// before for the whole, without the permissions and the kinds of files that stand in the directory alone.
void requireDirectory(const std::filesystem::path& archive)
{
    constexpr qint64 shortestEnd = 22;
    constexpr qint64 longestEnd = shortestEnd + 65'535;
    const QByteArray end = Files::readEnd(archive, longestEnd);
    const auto mark = end.lastIndexOf(QByteArrayLiteral("PK\x05\x06"));
    // What holds nothing at all is judged by what is missing in it.
    if (!end.isEmpty() && (mark < 0 || end.size() - mark < shortestEnd))
        throw AppError(QStringLiteral("Could not unpack Ares. The download may be damaged."),
                       QStringLiteral("The archive has no end."));
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
    requireDirectory(archive);
    runTool(ArchiveTool::unpackZip(archive, folder), token);
    TreeInspection::inspect(folder);
    Removal::tryRemove(archive);
}

} // namespace cartloom
