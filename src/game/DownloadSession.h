// SPDX-License-Identifier: MIT
#pragma once

#include "platform/Errors.h"

#include <QNetworkRequest>

#include <exception>
#include <filesystem>
#include <mutex>
#include <thread>

class QObject;

namespace cartloom
{

class FileDownloader;
class HttpExchange;
class TemporaryFile;

/// The thread on which one download runs: it reads the socket and writes the file, and reports to its
/// downloader from there. The bytes go to a temporary file beside the destination.
class DownloadSession
{
public:
    /// The downloader must outlive the session.
    DownloadSession(FileDownloader& downloader, std::filesystem::path destination, QNetworkRequest request);

    /// Cancels what is still running and waits for the thread, which reports the completion before it ends.
    ~DownloadSession();
    DownloadSession(const DownloadSession&) = delete;
    DownloadSession& operator=(const DownloadSession&) = delete;

    /// Starts. To be called once.
    void resume();

    /// Makes the session complete with the URL cancellation error, unless it is over. Any thread.
    void cancel();

private:
    class Inbox;

    void run();
    [[nodiscard]] std::exception_ptr transfer();
    void openInbox(QObject* inbox);
    void closeInbox();
    void takeArrived(TemporaryFile& file);
    void giveUp(const std::exception_ptr& failure);

    FileDownloader& m_downloader;
    const std::filesystem::path m_destination;
    QNetworkRequest m_request;
    std::thread m_thread;

    /// Guards what other threads reach the session through.
    std::mutex m_lock;
    bool m_cancelled = false;
    QObject* m_inbox = nullptr;

    // Of the session's thread alone.
    HttpExchange* m_exchange = nullptr;
    std::exception_ptr m_failure;
};

} // namespace cartloom
