// SPDX-License-Identifier: MIT
#include "support/TestCertificates.h"

#include "support/TestOrigins.h"

#include <QFile>
#include <QSslCertificate>
#include <QSslKey>

namespace cartloom::TestCertificates
{

namespace
{

QByteArray contents(const QString& name)
{
    QFile file(QStringLiteral(CARTLOOM_CERTIFICATES "/") + name);
    if (!file.open(QFile::ReadOnly))
        qFatal("cannot read %s", qPrintable(file.fileName()));
    return file.readAll();
}

} // namespace

QSslConfiguration server(const QString& name)
{
    auto configuration = QSslConfiguration::defaultConfiguration();
    configuration.setLocalCertificate(QSslCertificate(contents(name + QStringLiteral(".pem"))));
    configuration.setPrivateKey(QSslKey(contents(name + QStringLiteral(".key")), QSsl::Ec));
    configuration.setPeerVerifyMode(QSslSocket::VerifyNone);
    return configuration;
}

void trustAuthority()
{
    TestOrigins::setCertificateAuthorities(CARTLOOM_CERTIFICATES "/authority.pem");
}

} // namespace cartloom::TestCertificates
