// SPDX-License-Identifier: MIT
#pragma once

#include <QSslCertificate>
#include <QSslConfiguration>

namespace bench
{

/// Trusts the certificate of the server that bench/run has started, if it has told of one.
inline void trustServer()
{
    const QString file = qEnvironmentVariable("BENCH_CERTIFICATE");
    if (file.isEmpty())
        return;
    auto configuration = QSslConfiguration::defaultConfiguration();
    configuration.setCaCertificates(QSslCertificate::fromPath(file));
    QSslConfiguration::setDefaultConfiguration(configuration);
}

} // namespace bench
