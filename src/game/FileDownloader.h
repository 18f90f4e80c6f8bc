// SPDX-License-Identifier: MIT
#pragma once

#include "game/ProgressCallback.h"
#include "platform/Cancellation.h"
#include "platform/MainThreadPromise.h"

#include <QCoroTask>
#include <QNetworkRequest>

#include <exception>
#include <filesystem>
#include <memory>
#include <mutex>
#include <optional>
#include <variant>

namespace cartloom
{

class DownloadSession;

/// Fetches one resource to one file. An instance serves one request. Whatever the session reports, in
/// whatever order, the caller is resumed exactly once, with the file already in its place or with the
/// failure.
class FileDownloader
{
public:
    /// The progress callback runs on the session's thread.
    FileDownloader(std::filesystem::path destination, ProgressCallback onProgress);
    ~FileDownloader();
    FileDownloader(const FileDownloader&) = delete;
    FileDownloader& operator=(const FileDownloader&) = delete;

    /// Returns the destination once the file is there. Headers and inactivity limit are the request's. Throws
    /// PlatformError for what the network reports and for a cancellation, std::system_error for what the file
    /// system does, and AppError for an HTTP status outside 200 to 299; what stood at the
    /// destination then stays, unless it is the last move that fails. Main thread; this object must outlive
    /// the wait.
    [[nodiscard]] QCoro::Task<std::filesystem::path> download(QNetworkRequest request,
                                                              CancellationToken token);

    // What the session reports, on its own thread.

    /// Bytes that have arrived so far, and bytes that were announced, or -1.
    void didWriteData(qint64 totalWritten, qint64 totalExpected);

    /// The answer has come to its end. The temporary file is gone when this returns, unless it was moved
    /// away.
    void didFinishDownloading(const std::filesystem::path& temporaryFile, std::optional<int> status,
                              const QUrl& asked);

    /// The session is over; no error when it brought an answer. The session does not touch this object
    /// afterwards.
    void didComplete(const std::exception_ptr& error);

private:
    using Outcome = std::variant<std::filesystem::path, std::exception_ptr>;

    void setResult(Outcome result);
    void finish(const Outcome& outcome);

    const std::filesystem::path m_destination;
    const ProgressCallback m_onProgress;
    /// Guards the continuation and the result.
    std::mutex m_lock;
    std::optional<MainThreadPromise<std::filesystem::path>> m_continuation;
    std::optional<Outcome> m_result;
    std::unique_ptr<DownloadSession> m_session;
};

} // namespace cartloom
