// SPDX-License-Identifier: MIT
#include "emulator/Unpacking.h"

#include "emulator/TreeInspection.h"
#include "game/AppError.h"
#include "platform/ArchiveTool.h"
#include "platform/ChildProcess.h"
#include "platform/MainThreadPromise.h"
#include "platform/Text.h"

#include <QByteArray>
#include <QCoroFuture>

#include <algorithm>
#include <thread>

namespace cartloom
{

namespace
{

/// More of the tool's complaint than anyone reads; what comes after it is read and dropped.
constexpr qsizetype longestComplaint = 64 * 1024;

QByteArray readToEnd(const FileDescriptor& stream)
{
    QByteArray bytes;
    char block[4096];
    while (const auto count = stream.readSome(block, sizeof block)) {
        if (bytes.size() < longestComplaint)
            bytes.append(block, static_cast<qsizetype>(count));
    }
    // Cut after a character of one byte, so that no longer one is cut in the middle.
    const bool cut = bytes.size() >= longestComplaint;
    while (cut && !bytes.isEmpty() && static_cast<unsigned char>(bytes.back()) >= 0x80)
        bytes.chop(1);
    return bytes;
}

void runTool(const ArchiveTool& tool)
{
    Pipe complaint;
    const auto process =
        ChildProcess::start(tool.program, tool.arguments, complaint.writing, tool.environment);
    complaint.writing.close();
    const QString text = decodeUtf8(readToEnd(complaint.reading)).value_or(QString());
    if (process.waitForExit() == 0)
        return;
    if (text.contains(QLatin1String("no space"), Qt::CaseInsensitive))
        throw AppError(QStringLiteral("Your disk is full. Free some space and try again."), text);
    throw AppError(QStringLiteral("Could not unpack Ares. The download may be damaged."), text);
}

} // namespace

QCoro::Task<void> unzip(std::filesystem::path archive, std::filesystem::path folder)
{
    const MainThreadPromise<void> end;
    std::thread([end, folder, tool = ArchiveTool::unpackZip(archive, folder)] {
        try {
            runTool(tool);
            TreeInspection::inspect(folder);
            end.resolve();
        } catch (const std::exception&) {
            end.reject(std::current_exception());
        }
    }).detach();
    co_await end.future();
}

} // namespace cartloom
