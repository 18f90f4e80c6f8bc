// SPDX-License-Identifier: MIT
#pragma once

#include <QUrl>
#include <QtDebug>

#include <array>

#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace cartloom
{

/// A port with a full listen backlog: the system leaves further connections in the handshake. Linux only.
class FullPort
{
public:
    FullPort()
    {
        socklen_t length = sizeof m_address;
        m_address.sin_family = AF_INET;
        m_address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        m_listener = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
        auto* const address = reinterpret_cast<sockaddr*>(&m_address);
        if (::bind(m_listener, address, length) != 0 || ::listen(m_listener, 0) != 0 ||
            ::getsockname(m_listener, address, &length) != 0)
            qFatal("cannot listen");
        for (int& caller : m_callers) {
            caller = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
            ::connect(caller, address, length);
        }
    }
    ~FullPort()
    {
        ::close(m_listener);
        for (const int caller : m_callers)
            ::close(caller);
    }
    FullPort(const FullPort&) = delete;
    FullPort& operator=(const FullPort&) = delete;

    [[nodiscard]] QUrl url() const
    {
        return QUrl(QStringLiteral("http://127.0.0.1:%1").arg(ntohs(m_address.sin_port)));
    }

private:
    sockaddr_in m_address = {};
    int m_listener = -1;
    std::array<int, 8> m_callers = {};
};

} // namespace cartloom
