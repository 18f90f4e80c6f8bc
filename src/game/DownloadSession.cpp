// SPDX-License-Identifier: MIT
#include "game/DownloadSession.h"

#include "game/FileDownloader.h"
#include "platform/FileDescriptor.h"
#include "platform/HttpExchange.h"

#include <QCoreApplication>
#include <QEvent>
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

/// Lives on the session's thread. Any event of ours is a cancellation.
class DownloadSession::Inbox final : public QObject
{
public:
    explicit Inbox(DownloadSession& session)
        : m_session(session)
    {
        m_session.openInbox(this);
    }
    ~Inbox() override { m_session.closeInbox(); }
    Inbox(const Inbox&) = delete;
    Inbox& operator=(const Inbox&) = delete;

    bool event(QEvent* event) override
    {
        if (event->type() != QEvent::User)
            return QObject::event(event);
        m_session.giveUp(std::make_exception_ptr(urlError(UrlError::cancelled)));
        return true;
    }

private:
    DownloadSession& m_session;
};

DownloadSession::DownloadSession(FileDownloader& downloader, std::filesystem::path destination,
                                 QNetworkRequest request)
    : m_downloader(downloader)
    , m_destination(std::move(destination))
    , m_request(std::move(request))
{
    // The file is wanted as it lies on the server: a compressed transfer would have neither its length nor
    // its bytes.
    m_request.setRawHeader("Accept-Encoding", "identity");
}

DownloadSession::~DownloadSession()
{
    cancel();
    if (m_thread.joinable())
        m_thread.join();
}

void DownloadSession::resume()
{
    m_thread = std::thread([this] { run(); });
}

void DownloadSession::cancel()
{
    const std::lock_guard guard(m_lock);
    m_cancelled = true;
    if (m_inbox)
        QCoreApplication::postEvent(m_inbox, new QEvent(QEvent::User));
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
    const Inbox inbox(*this);

    QEventLoop loop;
    QObject::connect(&exchange, &HttpExchange::finished, &loop, &QEventLoop::quit);
    QObject::connect(&exchange, &HttpExchange::readyRead, &exchange, [&] {
        // The body of a refusal is of no use, and it may be endless.
        if (isSuccess(exchange.status()))
            takeArrived(file);
        else
            loop.quit();
    });
    QObject::connect(&exchange, &HttpExchange::progressed, &exchange, [&](qint64 received) {
        m_downloader.didWriteData(received, exchange.announcedLength());
    });
    if (!m_failure)
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

void DownloadSession::openInbox(QObject* inbox)
{
    const std::lock_guard guard(m_lock);
    m_inbox = inbox;
    if (m_cancelled)
        giveUp(std::make_exception_ptr(urlError(UrlError::cancelled)));
}

void DownloadSession::closeInbox()
{
    const std::lock_guard guard(m_lock);
    m_inbox = nullptr;
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
