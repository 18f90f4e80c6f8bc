// SPDX-License-Identifier: MIT
#pragma once

#include "platform/Errors.h"
#include "platform/NetworkErrors.h"

#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QObject>

#include <memory>
#include <optional>

namespace cartloom
{

/// An address from outside as a URL; none when the text is no valid address.
[[nodiscard]] std::optional<QUrl> parseUrl(const QString& text);

/// Deletes an object from its thread's event loop, so that one of its own signals may let go of it.
struct DeleteLater
{
    void operator()(QObject* object) const { object->deleteLater(); }
};

/// One request and its answer, under the rules that hold for every request of this program: HTTP/1.1, a
/// bounded read buffer, redirects only to addresses that could have been asked for in the first place, no
/// plain HTTP outside this machine. Lives on the thread that made it and needs that thread's event loop.
/// Neither signal is ever emitted from inside the constructor.
class HttpExchange : public QObject
{
    Q_OBJECT

public:
    /// The headers, the verb's body and the inactivity limit are the caller's. Posts the body when there is
    /// one. The manager must outlive the exchange.
    HttpExchange(QNetworkAccessManager& manager, QNetworkRequest request,
                 std::optional<QByteArray> body = std::nullopt);

    /// Ends the exchange with this failure, if it has not ended.
    void abort(const PlatformError& failure);

    /// Takes what has arrived of the answer's body, at most limit bytes; below 1 when there is nothing.
    [[nodiscard]] qint64 read(char* data, qint64 limit);

    /// The answer's HTTP status; none before the answer, and for an address that is not HTTP.
    [[nodiscard]] std::optional<int> status() const;

    /// The length of the body that the server announced in bytes, or -1.
    [[nodiscard]] qint64 announcedLength() const;

    /// Why the answer did not come whole; none when it did, whatever its status.
    [[nodiscard]] const std::optional<PlatformError>& failure() const { return m_failure; }

Q_SIGNALS:
    void readyRead();
    /// Bytes of the body that have arrived, at most every 100 milliseconds.
    void progressed(qint64 received);
    /// Once, after the last readyRead.
    void finished();

private:
    void ask();
    [[nodiscard]] std::optional<QUrl> redirectTarget() const;
    void follow(const QUrl& target);
    void conclude();
    [[nodiscard]] bool isCutShort() const;

    QNetworkAccessManager& m_manager;
    QNetworkRequest m_request;
    std::optional<QByteArray> m_body;
    std::unique_ptr<QNetworkReply, DeleteLater> m_reply;
    std::optional<PlatformError> m_failure;
    int m_redirects = 0;
    qint64 m_read = 0;
    NetworkErrors::Handshake m_handshake = NetworkErrors::Handshake::Unfinished;
};

} // namespace cartloom
