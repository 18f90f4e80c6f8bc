// SPDX-License-Identifier: MIT
#pragma once

#include <QNetworkProxy>

namespace cartloom
{

/// Sends every request of this process through an HTTP proxy, as long as it lives.
class ProxyInForce
{
public:
    ProxyInForce(const QString& host, quint16 port)
    {
        QNetworkProxy::setApplicationProxy({QNetworkProxy::HttpProxy, host, port});
    }
    ~ProxyInForce() { QNetworkProxy::setApplicationProxy(QNetworkProxy::NoProxy); }
    ProxyInForce(const ProxyInForce&) = delete;
    ProxyInForce& operator=(const ProxyInForce&) = delete;
};

} // namespace cartloom
