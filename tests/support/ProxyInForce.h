// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

#include <array>

namespace cartloom
{

/// Makes the system's settings name an HTTP proxy for every request, as long as this object lives.
class ProxyInForce
{
public:
    ProxyInForce(const QString& host, quint16 port)
    {
        const auto address = QStringLiteral("http://%1:%2").arg(host).arg(port).toUtf8();
        for (const auto* variable : variables)
            qputenv(variable, address);
    }
    ~ProxyInForce()
    {
        for (const auto* variable : variables)
            qunsetenv(variable);
    }
    ProxyInForce(const ProxyInForce&) = delete;
    ProxyInForce& operator=(const ProxyInForce&) = delete;

private:
    static constexpr std::array variables{"http_proxy", "https_proxy"};
};

} // namespace cartloom
