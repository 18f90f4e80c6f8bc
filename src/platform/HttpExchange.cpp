// SPDX-License-Identifier: MIT
#include "platform/HttpExchange.h"

#include <QHostAddress>
#include <QSslError>

#include <algorithm>

namespace cartloom
{

namespace
{

constexpr qint64 readBufferSize = 256 * 1024;
constexpr int mostRedirects = 20;

bool isOnThisMachine(const QUrl& url)
{
    return url.host() == QLatin1String("localhost") || QHostAddress(url.host()).isLoopback();
}

/// Why an address must not be asked; none when it may.
std::optional<PlatformError> refusal(const QUrl& url)
{
    const QString scheme = url.scheme();
    if (scheme == QLatin1String("https"))
        return std::nullopt;
    if (scheme == QLatin1String("http"))
        return isOnThisMachine(url) ? std::nullopt : std::optional(urlError(UrlError::plainHttpRefused));
    return urlError(UrlError::unsupportedUrl);
}

std::optional<PlatformError> refusalOfRedirect(const QUrl& from, const QUrl& to)
{
    if (from.scheme() == QLatin1String("https") && to.scheme() == QLatin1String("http"))
        return urlError(UrlError::plainHttpRefused);
    return refusal(to);
}

} // namespace

std::optional<QUrl> parseUrl(const QString& text)
{
    const QUrl url(text, QUrl::StrictMode);
    return url.isValid() && !url.isEmpty() ? std::optional(url) : std::nullopt;
}

HttpExchange::HttpExchange(QNetworkAccessManager& manager, QNetworkRequest request,
                           std::optional<QByteArray> body)
    : m_manager(manager)
    , m_request(std::move(request))
    , m_body(std::move(body))
{
    // The read buffer's bound does not hold for HTTP/2.
    m_request.setAttribute(QNetworkRequest::Http2AllowedAttribute, false);
    // Redirects are followed here: letting Qt ask before each one breaks at the second in Qt 6.4.
    m_request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::ManualRedirectPolicy);

    if (!m_request.url().isLocalFile())
        m_failure = refusal(m_request.url());
    if (m_failure)
        QMetaObject::invokeMethod(this, &HttpExchange::finished, Qt::QueuedConnection);
    else
        ask();
}

void HttpExchange::ask()
{
    m_reply.reset(m_body ? m_manager.post(m_request, *m_body) : m_manager.get(m_request));
    m_reply->setReadBufferSize(readBufferSize);
    m_handshake = NetworkErrors::Handshake::Unfinished;

    connect(m_reply.get(), &QNetworkReply::sslErrors, this,
            [this] { m_handshake = NetworkErrors::Handshake::CertificateRefused; });
    connect(m_reply.get(), &QNetworkReply::encrypted, this,
            [this] { m_handshake = NetworkErrors::Handshake::Finished; });
    connect(m_reply.get(), &QNetworkReply::readyRead, this, [this] {
        // The body of a redirect is of no use, and it may be endless.
        if (redirectTarget())
            m_reply->abort();
        else
            Q_EMIT readyRead();
    });
    connect(m_reply.get(), &QNetworkReply::downloadProgress, this, [this](qint64 received) {
        if (!redirectTarget())
            Q_EMIT progressed(received);
    });
    connect(m_reply.get(), &QNetworkReply::finished, this, &HttpExchange::conclude);
}

void HttpExchange::abort(const PlatformError& failure)
{
    if (!m_reply || m_reply->isFinished())
        return;
    m_failure = failure;
    m_reply->abort();
}

qint64 HttpExchange::read(char* data, qint64 limit)
{
    const qint64 count = m_reply ? m_reply->read(data, limit) : 0;
    m_read += std::max(count, qint64(0));
    return count;
}

std::optional<int> HttpExchange::status() const
{
    const QVariant status =
        m_reply ? m_reply->attribute(QNetworkRequest::HttpStatusCodeAttribute) : QVariant();
    return status.isValid() ? std::optional(status.toInt()) : std::nullopt;
}

qint64 HttpExchange::announcedLength() const
{
    // A length does not count where the body comes in chunks.
    if (!m_reply || m_reply->hasRawHeader("Transfer-Encoding"))
        return -1;
    const QVariant length = m_reply->header(QNetworkRequest::ContentLengthHeader);
    return length.isValid() ? std::max(length.toLongLong(), -1LL) : -1;
}

std::optional<QUrl> HttpExchange::redirectTarget() const
{
    const QUrl target = m_reply->attribute(QNetworkRequest::RedirectionTargetAttribute).toUrl();
    return target.isEmpty() ? std::nullopt : std::optional(m_reply->url().resolved(target));
}

void HttpExchange::follow(const QUrl& target)
{
    m_failure = ++m_redirects > mostRedirects ? urlError(UrlError::tooManyRedirects)
                                              : refusalOfRedirect(m_reply->url(), target);
    if (m_failure) {
        Q_EMIT finished();
        return;
    }
    // Only these two repeat what was posted.
    if (status() != 307 && status() != 308)
        m_body.reset();
    m_request.setUrl(target);
    m_reply->disconnect(this);
    ask();
}

void HttpExchange::conclude()
{
    const auto target = m_failure ? std::nullopt : redirectTarget();
    if (target) {
        follow(*target);
        return;
    }
    if (!m_failure)
        m_failure = NetworkErrors::translate(*m_reply, m_handshake);
    if (!m_failure && isCutShort())
        m_failure = urlError(UrlError::networkConnectionLost);
    Q_EMIT finished();
}

/// On a plain connection Qt 6.4 takes one that closes early for the end of the body, every now and then.
bool HttpExchange::isCutShort() const
{
    const bool mayHaveBody = status() >= 200 && status() != 204 && status() != 304;
    return mayHaveBody && m_read + m_reply->bytesAvailable() < announcedLength();
}

} // namespace cartloom
