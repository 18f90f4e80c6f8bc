// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QSslConfiguration>
#include <QTcpServer>
#include <QUrl>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace cartloom
{

/// One request as it came over the wire.
struct RawRequest
{
    QByteArray verb;
    /// With the query.
    QByteArray path;
    /// As they were sent, in their order.
    std::vector<std::pair<QByteArray, QByteArray>> headers;
    QByteArray body;

    /// The value of a header whatever the case of its name; null when it was not sent.
    [[nodiscard]] QByteArray header(const char* name) const;
};

/// The server's end of one connection.
class RawConnection : public QObject
{
    Q_OBJECT

public:
    using Respond = std::function<void(RawConnection&, const RawRequest&)>;

    /// Takes the socket over.
    RawConnection(QTcpSocket* socket, Respond respond);

    /// Sends exactly these bytes.
    void send(const QByteArray& bytes);

    /// Sends the block again and again, as fast as the other side takes it and no more than bound bytes in
    /// all, then closes.
    void sendEndlessly(const QByteArray& block, qint64 bound);

    /// Sends one byte per interval, then closes.
    void drip(const QByteArray& bytes, std::chrono::milliseconds interval);

    /// Closes the connection once everything has been sent.
    void close();

    /// Resets the connection once everything has been handed to the system.
    void reset();

    /// True once the other side has gone.
    [[nodiscard]] bool isClosed() const;
    /// Number of bytes sent.
    [[nodiscard]] qint64 sent() const { return m_sent; }

Q_SIGNALS:
    /// The other side has sent something, whether a whole request or not.
    void received();
    void bytesSent();

private:
    void takeRequests();
    void fill();

    QTcpSocket* const m_socket;
    const Respond m_respond;
    QByteArray m_arrived;
    QByteArray m_block;
    qint64 m_toFill = 0;
    qint64 m_sent = 0;
};

/// A server on this machine that says exactly what a test lets it say, and records what it was asked. It runs
/// on the thread that made it and needs that thread's event loop; it stops when it is destroyed.
class RawServer : private QTcpServer
{
    Q_OBJECT

public:
    /// Is given every whole request.
    using Respond = RawConnection::Respond;

    using Tls = std::optional<QSslConfiguration>;

    /// Speaks TLS if a configuration with certificate and key is given.
    explicit RawServer(Respond respond, const Tls& tls = {});
    /// Gives every request the same bytes and then closes the connection.
    explicit RawServer(const QByteArray& answer, const Tls& tls = {});

    /// Called for each new connection before anything is read from it.
    std::function<void(RawConnection&)> onConnected;

    [[nodiscard]] QUrl url(const QString& path = QStringLiteral("/")) const;
    [[nodiscard]] QUrl url(const QString& host, const QString& path) const;
    [[nodiscard]] quint16 port() const { return serverPort(); }

    [[nodiscard]] const std::vector<RawRequest>& requests() const { return m_requests; }
    /// Every connection so far, those that have ended included.
    [[nodiscard]] const std::vector<std::unique_ptr<RawConnection>>& connections() const
    {
        return m_connections;
    }

private:
    void incomingConnection(qintptr descriptor) override;

    const Respond m_respond;
    const Tls m_tls;
    std::vector<RawRequest> m_requests;
    std::vector<std::unique_ptr<RawConnection>> m_connections;
};

/// Leaves every request without an answer and the connection open.
inline void keepSilent(RawConnection&, const RawRequest&) {}

/// A whole answer with this status, the headers given as lines, a fitting length and the end of the
/// connection announced.
[[nodiscard]] QByteArray httpAnswer(int status, const QByteArray& body = {},
                                    const QByteArrayList& headers = {});

/// An answer that sends on to another address.
[[nodiscard]] QByteArray httpRedirect(const QByteArray& location);

} // namespace cartloom
