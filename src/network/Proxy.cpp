// SPDX-License-Identifier: MIT
#include "network/Proxy.h"

#include <QNetworkProxyFactory>
#include <QNetworkProxyQuery>
#include <QUrl>

namespace cartloom
{

std::string proxyFor(const std::string& url)
{
    const QNetworkProxyQuery query{QUrl(QString::fromStdString(url))};
    const QNetworkProxy proxy =
        QNetworkProxyFactory::systemProxyForQuery(query).value(0, QNetworkProxy::NoProxy);
    if (proxy.type() != QNetworkProxy::HttpProxy && proxy.type() != QNetworkProxy::Socks5Proxy)
        return {};
    QUrl address;
    // The "h" leaves the name lookup to the proxy.
    address.setScheme(proxy.type() == QNetworkProxy::HttpProxy ? QStringLiteral("http")
                                                               : QStringLiteral("socks5h"));
    address.setHost(proxy.hostName());
    address.setPort(proxy.port());
    address.setUserName(proxy.user());
    address.setPassword(proxy.password());
    return address.toEncoded().toStdString();
}

} // namespace cartloom
