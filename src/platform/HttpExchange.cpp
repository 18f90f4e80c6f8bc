// SPDX-License-Identifier: MIT
#include "platform/HttpExchange.h"

#include "platform/NetworkErrors.h"

#include <QHostAddress>
#include <QSslError>

namespace cartloom
{

namespace
{

constexpr qint64 readBufferSize = 256 * 1024;

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
{
    m_failure = request.url().isLocalFile() ? std::nullopt : refusal(request.url());
    if (m_failure) {
        QMetaObject::invokeMethod(this, &HttpExchange::finished, Qt::QueuedConnection);
        return;
    }

    // The read buffer's bound does not hold for HTTP/2.
    request.setAttribute(QNetworkRequest::Http2AllowedAttribute, false);
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute,
                         QNetworkRequest::UserVerifiedRedirectPolicy);
    m_reply.reset(body ? manager.post(request, *body) : manager.get(request));
    m_reply->setReadBufferSize(readBufferSize);

    connect(m_reply.get(), &QNetworkReply::redirected, this, &HttpExchange::checkRedirect);
    connect(m_reply.get(), &QNetworkReply::sslErrors, this, [this] { m_certificateRefused = true; });
    connect(m_reply.get(), &QNetworkReply::readyRead, this, &HttpExchange::readyRead);
    connect(m_reply.get(), &QNetworkReply::downloadProgress, this, &HttpExchange::progressed);
    connect(m_reply.get(), &QNetworkReply::finished, this, &HttpExchange::conclude);
}

void HttpExchange::abort(const PlatformError& failure)
{
    if (!m_reply || m_reply->isFinished())
        return;
    m_failure = failure;
    m_reply->abort();
}

std::optional<int> HttpExchange::status() const
{
    const QVariant status =
        m_reply ? m_reply->attribute(QNetworkRequest::HttpStatusCodeAttribute) : QVariant();
    return status.isValid() ? std::optional(status.toInt()) : std::nullopt;
}

qint64 HttpExchange::announcedLength() const
{
    const QVariant length = m_reply ? m_reply->header(QNetworkRequest::ContentLengthHeader) : QVariant();
    return length.isValid() ? length.toLongLong() : -1;
}

void HttpExchange::checkRedirect(const QUrl& target)
{
    if (const auto refused = refusalOfRedirect(m_reply->url(), target))
        abort(*refused);
    else
        Q_EMIT m_reply->redirectAllowed();
}

void HttpExchange::conclude()
{
    if (!m_failure)
        m_failure = NetworkErrors::translate(m_reply->error(), status().has_value(), m_certificateRefused);
    Q_EMIT finished();
}

} // namespace cartloom
