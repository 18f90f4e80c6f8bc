// SPDX-License-Identifier: MIT
#include "emulator/Unpacking.h"

#include "emulator/ZipDirectory.h"
#include "errors/FriendlyError.h"
#include "errors/PlatformError.h"
#include "platform/ArchiveTool.h"
#include "platform/ChildProcess.h"
#include "platform/Files.h"
#include "platform/Text.h"
#include "storage/Removal.h"

#include <QByteArray>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <optional>

namespace cartloom
{

namespace
{

/// The rest of the tool's standard error is read and dropped.
constexpr qsizetype maxErrorBytes = 64 * 1024;

/// In lower case, of a full disk.
const auto noSpace = QByteArrayLiteral("no space");

/// Reads the tool's standard error to its end. Checks the size of the folder meanwhile, and ends the tool
/// when it exceeds the bounds.
class ToolReader
{
public:
    ToolReader(const ChildProcess& process, const std::filesystem::path& folder,
               const TreeInspection::Bounds& bounds)
        : m_process(process)
        , m_folder(folder)
        , m_bounds(bounds)
    {
    }

    QByteArray readToEnd(const FileDescriptor& stream)
    {
        QByteArray bytes;
        char block[4096];
        for (;;) {
            const bool isReadable = stream.waitUntilReadable(interval);
            if (Clock::now() >= m_nextCheck)
                check();
            const auto count = isReadable ? stream.readSome(block, sizeof block) : 0;
            if (isReadable && count == 0)
                break;
            if (bytes.size() < maxErrorBytes)
                bytes.append(block, static_cast<qsizetype>(count));
        }
        // Cut after a character of one byte, so that no longer one is cut in the middle.
        const bool cut = bytes.size() >= maxErrorBytes;
        while (cut && !bytes.isEmpty() && static_cast<unsigned char>(bytes.back()) >= 0x80)
            bytes.chop(1);
        return bytes;
    }

    void throwExcess() const
    {
        if (m_excess)
            throw AppError(*m_excess);
    }

private:
    using Clock = std::chrono::steady_clock;

    static constexpr std::chrono::milliseconds interval{50};
    /// The least pause after a check, in durations of the check: a large tree takes long to look at.
    static constexpr int minPauseInChecks = 10;

    void check()
    {
        const auto start = Clock::now();
        try {
            TreeInspection::checkSize(m_folder, m_bounds);
        } catch (const AppError& excess) {
            m_excess = excess;
            m_process.kill();
        }
        const auto end = Clock::now();
        m_nextCheck = end + std::max<Clock::duration>(interval, minPauseInChecks * (end - start));
    }

    const ChildProcess& m_process;
    const std::filesystem::path& m_folder;
    const TreeInspection::Bounds m_bounds;
    Clock::time_point m_nextCheck = Clock::now() + interval;
    std::optional<AppError> m_excess;
};

/// Cuts off what follows the end record, a comment included: a tool that does not find the record may unpack
/// the archive without its permissions and the kinds of its files.
void cutAt(const std::filesystem::path& archive, qint64 end)
{
    if (Files::size(archive) == end)
        return;
    // The record ends with the length of the comment, which becomes 0.
    const auto whole = static_cast<std::uintmax_t>(end);
    std::filesystem::resize_file(archive, whole - sizeof(quint16));
    std::filesystem::resize_file(archive, whole);
}

/// True if the file contains these words, as the name of an entry would.
bool holdsNoSpace(const std::filesystem::path& file)
{
    const auto source = FileDescriptor::openForReading(file);
    QByteArray bytes;
    char block[64 * 1024];
    while (const auto count = source.readSome(block, sizeof block)) {
        bytes = bytes.right(noSpace.size() - 1).append(block, static_cast<qsizetype>(count)).toLower();
        if (bytes.contains(noSpace))
            return true;
    }
    return false;
}

/// True if the tool reports a full disk. Its words count, unless they may be part of a name in its message:
/// then the volume has to be full.
bool isDiskFull(const QString& toolOutput, const std::filesystem::path& archive,
                const std::filesystem::path& folder)
{
    if (!toolOutput.toLower().contains(QLatin1String(noSpace)))
        return false;
    const bool isInPath =
        (toText(archive) + u'\n' + toText(folder)).toLower().contains(QLatin1String(noSpace));
    return Files::isVolumeFull(folder) || (!isInPath && !holdsNoSpace(archive));
}

void runTool(const std::filesystem::path& archive, const std::filesystem::path& folder,
             const TreeInspection::Bounds& bounds, const CancellationToken& token)
{
    const auto tool = ArchiveTool::unpackZip(archive, folder);
    Pipe errors;
    const auto process = ChildProcess::start(tool.program, tool.arguments, errors.writing, tool.environment);
    errors.writing.close();
    ToolReader reader(process, folder, bounds);
    QString text;
    {
        const CancellationCallback onCancel(token, [&process] { process.kill(); });
        text = decodeUtf8(reader.readToEnd(errors.reading)).value_or(QString());
        process.waitUntilEnded();
    }
    const int status = process.waitForExit();
    if (token.isCancelled())
        throw CancellationError();
    reader.throwExcess();
    if (status == 0)
        return;
    if (isDiskFull(text, archive, folder))
        throw FriendlyError::diskFull(text);
    throw AppError(QStringLiteral("Could not unpack Ares. The download may be damaged."), text);
}

} // namespace

void unzip(const std::filesystem::path& archive, const std::filesystem::path& folder,
           const CancellationToken& token, const TreeInspection::Bounds& bounds)
{
    const auto directory = ZipDirectory::read(archive, bounds);
    cutAt(archive, directory.archiveBytes);
    // An archive that unpacks to more than it announces is ended on the way.
    runTool(archive, folder, {bounds.entries, directory.unpackedBytes}, token);
    TreeInspection::inspect(folder, bounds);
    Removal::tryRemove(archive);
}

} // namespace cartloom
