// SPDX-License-Identifier: MIT
#include "game/DownloadSession.h"

#include "game/FileDownloader.h"
#include "platform/FileDescriptor.h"
#include "platform/HttpExchange.h"

#include <QEventLoop>

namespace cartloom
{

namespace
{

constexpr qint64 blockSize = 64 * 1024;

bool isSuccess(std::optional<int> status)
{
    return !status || (*status >= 200 && *status <= 299);
}

} // namespace

DownloadSession::DownloadSession(FileDownloader& downloader, std::filesystem::path destination,
                                 QNetworkRequest request)
    : m_downloader(downloader)
    , m_destination(std::move(destination))
    , m_request(std::move(request))
{
    // The file is wanted as it lies on the server: a compressed transfer would have neither its length nor
    // its bytes.
    m_request.setRawHeader("Accept-Encoding", "identity");
    m_inbox.moveToThread(this);
}

DownloadSession::~DownloadSession()
{
    cancel();
    wait();
}

void DownloadSession::cancel()
{
    QMetaObject::invokeMethod(
        &m_inbox, [this] { giveUp(std::make_exception_ptr(urlError(UrlError::cancelled))); },
        Qt::QueuedConnection);
}

void DownloadSession::run()
{
    std::exception_ptr error;
    try {
        error = transfer();
    } catch (const std::exception&) {
        error = std::current_exception();
    }
    m_downloader.didComplete(error);
}

std::exception_ptr DownloadSession::transfer()
{
    TemporaryFile file(m_destination);
    QNetworkAccessManager manager;
    HttpExchange exchange(manager, m_request);
    m_exchange = &exchange;

    QEventLoop loop;
    connect(&exchange, &HttpExchange::finished, &loop, &QEventLoop::quit);
    connect(&exchange, &HttpExchange::readyRead, &exchange, [&] {
        // The body of a refusal is of no use, and it may be endless.
        if (isSuccess(exchange.status()))
            takeArrived(file);
        else
            loop.quit();
    });
    connect(&exchange, &HttpExchange::progressed, &exchange,
            [&](qint64 received) { m_downloader.didWriteData(received, exchange.announcedLength()); });
    loop.exec();

    if (!m_failure && exchange.failure())
        m_failure = std::make_exception_ptr(PlatformError(*exchange.failure()));
    if (!m_failure && isSuccess(exchange.status()))
        takeArrived(file);
    m_exchange = nullptr;
    if (!m_failure) {
        file.descriptor().close();
        m_downloader.didFinishDownloading(file.path(), exchange.status(), m_request.url());
    }
    return m_failure;
}

void DownloadSession::takeArrived(TemporaryFile& file)
{
    try {
        char block[blockSize];
        for (auto count = m_exchange->read(block, blockSize); count > 0;
             count = m_exchange->read(block, blockSize))
            file.descriptor().writeAll(block, static_cast<std::size_t>(count));
    } catch (const std::system_error&) {
        giveUp(std::current_exception());
    }
}

void DownloadSession::giveUp(const std::exception_ptr& failure)
{
    if (!m_exchange || m_failure)
        return;
    m_failure = failure;
    m_exchange->abort(urlError(UrlError::cancelled));
}

} // namespace cartloom
