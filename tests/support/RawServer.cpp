// SPDX-License-Identifier: MIT
#include "support/RawServer.h"

#include <QSslSocket>
#include <QTimer>
#include <QtDebug>

#include <sys/socket.h>

namespace cartloom
{

namespace
{

constexpr qint64 fillLimit = 256 * 1024;

/// Takes the first request off what has arrived; none as long as it is not whole.
std::optional<RawRequest> takeRequest(QByteArray& arrived)
{
    const auto headEnd = arrived.indexOf("\r\n\r\n");
    if (headEnd < 0)
        return std::nullopt;
    RawRequest request;
    const auto lines = arrived.left(headEnd).split('\n');
    const auto words = lines.first().trimmed().split(' ');
    request.verb = words.value(0);
    request.path = words.value(1);
    for (qsizetype i = 1; i < lines.size(); ++i) {
        const auto colon = lines[i].indexOf(':');
        request.headers.emplace_back(lines[i].left(colon), lines[i].mid(colon + 1).trimmed());
    }
    const auto bodyStart = headEnd + 4;
    const auto length = request.header("Content-Length").toLongLong();
    if (arrived.size() - bodyStart < length)
        return std::nullopt;
    request.body = arrived.mid(bodyStart, length);
    arrived.remove(0, bodyStart + length);
    return request;
}

RawServer::Respond saying(const QByteArray& answer)
{
    return [answer](RawConnection& connection, const RawRequest&) {
        connection.send(answer);
        connection.close();
    };
}

} // namespace

QByteArray RawRequest::header(const char* name) const
{
    for (const auto& [key, value] : headers) {
        if (key.compare(name, Qt::CaseInsensitive) == 0)
            return value;
    }
    return {};
}

RawConnection::RawConnection(QTcpSocket* socket, Respond respond)
    : m_socket(socket)
    , m_respond(std::move(respond))
{
    m_socket->setParent(this);
    connect(m_socket, &QTcpSocket::readyRead, this, &RawConnection::takeRequests);
    connect(m_socket, &QTcpSocket::bytesWritten, this, [this](qint64 count) {
        m_sent += count;
        fill();
        Q_EMIT bytesSent();
    });
    if (const auto* const secure = qobject_cast<QSslSocket*>(m_socket))
        connect(secure, &QSslSocket::encryptedBytesWritten, this, &RawConnection::fill);
}

void RawConnection::send(const QByteArray& bytes)
{
    m_socket->write(bytes);
}

void RawConnection::sendEndlessly(const QByteArray& block, qint64 bound)
{
    m_block = block;
    m_toFill = bound;
    fill();
}

void RawConnection::fill()
{
    if (m_toFill <= 0)
        return;
    const auto* const secure = qobject_cast<QSslSocket*>(m_socket);
    const auto unsent = [&] {
        return m_socket->bytesToWrite() + (secure ? secure->encryptedBytesToWrite() : 0);
    };
    while (m_toFill > 0 && unsent() < fillLimit) {
        m_socket->write(m_block);
        m_toFill -= m_block.size();
    }
    if (m_toFill <= 0)
        close();
}

void RawConnection::drip(const QByteArray& bytes, std::chrono::milliseconds interval)
{
    auto* const timer = new QTimer(this);
    connect(timer, &QTimer::timeout, this, [this, timer, bytes, next = qsizetype(0)]() mutable {
        if (next < bytes.size()) {
            send(bytes.mid(next++, 1));
        } else {
            timer->stop();
            close();
        }
    });
    timer->start(interval);
}

void RawConnection::close()
{
    m_socket->disconnectFromHost();
}

void RawConnection::reset()
{
    m_socket->flush();
    const linger atOnce{.l_onoff = 1, .l_linger = 0};
    ::setsockopt(static_cast<int>(m_socket->socketDescriptor()), SOL_SOCKET, SO_LINGER, &atOnce,
                 sizeof atOnce);
    m_socket->abort();
}

bool RawConnection::isClosed() const
{
    return m_socket->state() == QAbstractSocket::UnconnectedState;
}

void RawConnection::takeRequests()
{
    m_arrived += m_socket->readAll();
    Q_EMIT received();
    while (const auto request = takeRequest(m_arrived))
        m_respond(*this, *request);
}

RawServer::RawServer(Respond respond, const Tls& tls)
    : m_respond(std::move(respond))
    , m_tls(tls)
{
    if (!listen(QHostAddress::LocalHost))
        qFatal("cannot listen: %s", qPrintable(errorString()));
}

RawServer::RawServer(const QByteArray& answer, const Tls& tls)
    : RawServer(saying(answer), tls)
{
}

QUrl RawServer::url(const QString& path) const
{
    return url(QStringLiteral("127.0.0.1"), path);
}

QUrl RawServer::url(const QString& host, const QString& path) const
{
    const QLatin1String scheme(m_tls ? "https" : "http");
    return QUrl(QStringLiteral("%1://%2:%3%4").arg(scheme, host).arg(serverPort()).arg(path));
}

void RawServer::incomingConnection(qintptr descriptor)
{
    auto* const socket = m_tls ? new QSslSocket : new QTcpSocket;
    socket->setSocketDescriptor(descriptor);
    m_connections.push_back(
        std::make_unique<RawConnection>(socket, [this](RawConnection& connection, const RawRequest& request) {
            m_requests.push_back(request);
            m_respond(connection, request);
        }));
    if (auto* const secure = qobject_cast<QSslSocket*>(socket)) {
        secure->setSslConfiguration(*m_tls);
        secure->startServerEncryption();
    }
    if (onConnected)
        onConnected(*m_connections.back());
}

QByteArray httpAnswer(int status, const QByteArray& body, const QByteArrayList& headers)
{
    QByteArray answer = "HTTP/1.1 " + QByteArray::number(status) + " Scripted\r\nConnection: close\r\n";
    for (const auto& header : headers)
        answer += header + "\r\n";
    return answer + "Content-Length: " + QByteArray::number(body.size()) + "\r\n\r\n" + body;
}

QByteArray httpRedirect(const QByteArray& location)
{
    return httpAnswer(302, {}, {"Location: " + location});
}

} // namespace cartloom
