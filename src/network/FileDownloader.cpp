// SPDX-License-Identifier: MIT
#include "network/FileDownloader.h"

#include "async/RunOnWorker.h"
#include "errors/AppError.h"
#include "errors/PlatformError.h"
#include "network/HttpTransfer.h"
#include "platform/Files.h"
#include "platform/TemporaryFile.h"

#include <string>

namespace cartloom
{

namespace
{

constexpr std::size_t blockBytes = 256 * 1024;

} // namespace

FileDownloader::FileDownloader(std::filesystem::path destination, ProgressCallback onProgress)
    : m_destination(std::move(destination))
    , m_onProgress(std::move(onProgress))
{
}

QCoro::Task<std::filesystem::path> FileDownloader::download(HttpRequest request, CancellationToken token)
{
    co_return co_await runOnWorker([this, &request, &token] { return run(request, token); });
}

std::filesystem::path FileDownloader::run(const HttpRequest& request, const CancellationToken& token) const
{
    TemporaryFile file(m_destination);
    // libcurl hands on 16 KiB at a time.
    std::string block;
    const auto flush = [&file, &block] {
        file.descriptor().writeAll(block.data(), block.size());
        block.clear();
    };
    HttpTransfer transfer(request, token);
    try {
        const auto response = transfer.perform(
            [&block, &flush](const char* data, std::size_t length) {
                block.append(data, length);
                if (block.size() >= blockBytes)
                    flush();
            },
            m_onProgress);
        requireFile(request, response);
    } catch (const PlatformError& error) {
        if (error.code != UrlError::dataLengthExceedsMaximum)
            throw;
    }
    flush();
    file.descriptor().close();
    std::filesystem::remove_all(m_destination);
    Files::move(file.path(), m_destination);
    file.release();
    return m_destination;
}

void FileDownloader::requireFile(const HttpRequest& request, const HttpResponse& response)
{
    if (!response.isSuccess())
        throw AppError(QStringLiteral("The server answered with error %1.").arg(*response.status),
                       QString::fromStdString(request.url));
    if (!response.status && request.schemes != AllowedSchemes::file)
        throw AppError(QStringLiteral("The download finished without a file."));
}

} // namespace cartloom
