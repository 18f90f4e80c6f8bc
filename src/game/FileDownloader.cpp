// SPDX-License-Identifier: MIT
#include "game/FileDownloader.h"

#include "game/AppError.h"
#include "game/DownloadSession.h"
#include "platform/Files.h"

#include <QCoroFuture>

namespace cartloom
{

FileDownloader::FileDownloader(std::filesystem::path destination, ProgressCallback onProgress)
    : m_destination(std::move(destination))
    , m_onProgress(std::move(onProgress))
{
}

FileDownloader::~FileDownloader() = default;

QCoro::Task<std::filesystem::path> FileDownloader::download(QNetworkRequest request, CancellationToken token)
{
    QFuture<std::filesystem::path> end;
    {
        const std::lock_guard guard(m_lock);
        m_continuation.emplace();
        end = m_continuation->future();
    }
    m_session = std::make_unique<DownloadSession>(*this, m_destination, std::move(request));
    const CancellationCallback onCancel(token, [this] { m_session->cancel(); });
    m_session->resume();
    co_return co_await end;
}

void FileDownloader::didWriteData(qint64 totalWritten, qint64 totalExpected)
{
    m_onProgress(totalWritten, totalExpected);
}

void FileDownloader::didFinishDownloading(const std::filesystem::path& temporaryFile,
                                          std::optional<int> status, const QUrl& asked)
{
    if (status && (*status < 200 || *status > 299)) {
        const auto message = QStringLiteral("The server answered with error %1.").arg(*status);
        setResult(std::make_exception_ptr(AppError(message, asked.toString(QUrl::FullyEncoded))));
        return;
    }
    try {
        Files::clear(m_destination);
        Files::move(temporaryFile, m_destination);
        setResult(m_destination);
    } catch (const std::exception&) {
        setResult(std::current_exception());
    }
}

void FileDownloader::didComplete(const std::exception_ptr& error)
{
    std::optional<Outcome> result;
    {
        const std::lock_guard guard(m_lock);
        result = m_result;
    }
    if (error)
        finish(error);
    else if (result)
        finish(*result);
    else
        finish(std::make_exception_ptr(AppError(QStringLiteral("The download finished without a file."))));
}

void FileDownloader::setResult(Outcome result)
{
    const std::lock_guard guard(m_lock);
    m_result = std::move(result);
}

void FileDownloader::finish(const Outcome& outcome)
{
    std::optional<MainThreadPromise<std::filesystem::path>> continuation;
    {
        const std::lock_guard guard(m_lock);
        continuation.swap(m_continuation);
    }
    if (!continuation)
        return;
    if (const auto* file = std::get_if<std::filesystem::path>(&outcome))
        continuation->resolve(*file);
    else
        continuation->reject(std::get<std::exception_ptr>(outcome));
}

} // namespace cartloom
