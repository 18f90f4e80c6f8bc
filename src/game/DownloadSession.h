// SPDX-License-Identifier: MIT
#pragma once

#include "platform/Errors.h"

#include <QNetworkRequest>
#include <QThread>

#include <exception>
#include <filesystem>
#include <optional>

namespace cartloom
{

class FileDownloader;
class HttpExchange;
class TemporaryFile;

/// The thread on which one download runs: it reads the socket and writes the file, and reports to its
/// downloader from there. The bytes go to a temporary file beside the destination. Made, resumed and
/// destroyed on the thread of the downloader's caller.
class DownloadSession final : private QThread
{
    Q_OBJECT

public:
    /// The downloader must outlive the session.
    DownloadSession(FileDownloader& downloader, std::filesystem::path destination, QNetworkRequest request);

    /// Cancels what is still running and waits for the thread, which reports the completion before it ends.
    ~DownloadSession() override;

    /// Starts. To be called once.
    void resume() { start(); }

    /// Makes the session complete with the URL cancellation error, unless it is over. Any thread.
    void cancel();

private:
    void run() override;
    [[nodiscard]] std::exception_ptr transfer();
    void takeArrived(TemporaryFile& file);
    void giveUp(const std::exception_ptr& failure);

    FileDownloader& m_downloader;
    const std::filesystem::path m_destination;
    QNetworkRequest m_request;
    /// Lives on the session's thread; calls from other threads come in through it.
    QObject m_inbox;

    // Of the session's thread alone.
    HttpExchange* m_exchange = nullptr;
    std::exception_ptr m_failure;
};

} // namespace cartloom
