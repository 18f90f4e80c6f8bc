// SPDX-License-Identifier: MIT
#include "emulator/Unpacking.h"

#include "game/AppError.h"
#include "platform/ArchiveTool.h"
#include "platform/ChildProcess.h"
#include "platform/MainThreadPromise.h"

#include <QByteArray>
#include <QCoroFuture>
#include <QStringDecoder>

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
    while (const auto count = stream.readSome(block, sizeof block))
        bytes.append(block, std::min(static_cast<qsizetype>(count), longestComplaint - bytes.size()));
    return bytes;
}

QString decoded(const QByteArray& bytes)
{
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    const QString text = decoder(bytes);
    return decoder.hasError() ? QString() : text;
}

void runTool(const ArchiveTool& tool)
{
    Pipe complaint;
    const auto process = ChildProcess::start(tool.program, tool.arguments, complaint.writing);
    complaint.writing.close();
    const QString text = decoded(readToEnd(complaint.reading));
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
    std::thread([end, tool = ArchiveTool::unpackZip(archive, folder)] {
        try {
            runTool(tool);
            end.resolve();
        } catch (const std::exception&) {
            end.reject(std::current_exception());
        }
    }).detach();
    co_await end.future();
}

} // namespace cartloom
