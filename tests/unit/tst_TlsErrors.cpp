// SPDX-License-Identifier: MIT
#include "support/Failures.h"
#include "support/RawServer.h"
#include "support/RequestFailures.h"
#include "support/Requests.h"
#include "support/TestCertificates.h"

#include <QtTest>

using namespace cartloom;

/// What fails on a connection that is to be secure.
class TlsErrorsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { TestCertificates::trustAuthority(); }

    void aConnectionThatIsLost_data()
    {
        QTest::addColumn<QByteArray>("answer");
        QTest::addColumn<bool>("reset");

        QTest::newRow("closed before the first byte") << QByteArray() << false;
        QTest::newRow("reset before the first byte") << QByteArray() << true;
        QTest::newRow("closed inside the header") << QByteArray("HTTP/1.1 200 OK\r\nContent-Le") << false;
        QTest::newRow("body shorter than announced")
            << QByteArray("HTTP/1.1 200 OK\r\nContent-Length: 1000\r\n\r\nhalf") << false;
        QTest::newRow("chunk that ends early")
            << QByteArray("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n10\r\nhalf") << false;
        QTest::newRow("chunks without the last")
            << QByteArray("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n4\r\nhalf\r\n") << false;
        QTest::newRow("error page shorter than announced")
            << QByteArray("HTTP/1.1 404 Gone\r\nContent-Length: 1000\r\n\r\nhalf") << false;
    }

    void aConnectionThatIsLost()
    {
        QFETCH(QByteArray, answer);
        QFETCH(bool, reset);
        // Over a plain connection Qt 6.4 does not always tell the end of the connection from that of the
        // chunks.
        const RawServer server(
            [&](RawConnection& connection, const RawRequest&) {
                connection.send(answer);
                reset ? connection.reset() : connection.close();
            },
            TestCertificates::server(QStringLiteral("good")));
        verifyUrlError(failureOfRequest(requestFor(server.url())), -1005,
                       QStringLiteral("The network connection was lost."));
    }

    void aBodyCutShortOnAConnectionThatIsUsedAgainIsALostConnection()
    {
        int asked = 0;
        const RawServer server(
            [&](RawConnection& connection, const RawRequest&) {
                if (++asked == 1) {
                    connection.send("HTTP/1.1 200 OK\r\nContent-Length: 5\r\n\r\nfirst");
                    return;
                }
                connection.send("HTTP/1.1 200 OK\r\nContent-Length: 1000\r\n\r\nhalf");
                connection.close();
            },
            TestCertificates::server(QStringLiteral("good")));
        HttpSession session;
        QCOMPARE(resultOf(session.get(requestFor(server.url()), {})).body, QByteArray("first"));
        const auto failure =
            failureOf<PlatformError>([&] { return resultOf(session.get(requestFor(server.url()), {})); });
        QCOMPARE(failure.value().code, UrlError::networkConnectionLost);
        QCOMPARE(server.connections().size(), std::size_t(1));
    }

    void aRedirectFromHttpsToHttp()
    {
        const RawServer plain(httpAnswer(200));
        const RawServer secure(httpRedirect(plain.url().toEncoded()),
                               TestCertificates::server(QStringLiteral("good")));
        verifyUrlError(failureOfRequest(requestFor(secure.url())), -1022,
                       QStringLiteral("The address is not a secure one."));
        QCOMPARE(secure.requests().size(), std::size_t(1));
        QCOMPARE(plain.connections().size(), std::size_t(0));
    }

    void aTrustedCertificateIsNoFailure()
    {
        const RawServer server(httpAnswer(200, "secret"), TestCertificates::server(QStringLiteral("good")));
        HttpSession session;
        QCOMPARE(resultOf(session.get(requestFor(server.url()), {})).body, QByteArray("secret"));
    }

    void aCertificateThatIsNotTrusted_data()
    {
        QTest::addColumn<QString>("certificate");
        for (const auto& name :
             {QStringLiteral("expired"), QStringLiteral("wronghost"), QStringLiteral("unknown")})
            QTest::newRow(qPrintable(name)) << name;
    }

    void aCertificateThatIsNotTrusted()
    {
        QFETCH(QString, certificate);
        const RawServer server(keepSilent, TestCertificates::server(certificate));
        verifyUrlError(failureOfRequest(requestFor(server.url())), -1202,
                       QStringLiteral("The server's certificate is not trusted."));
        QCOMPARE(server.requests().size(), std::size_t(0));
    }

    void aRedirectToACertificateThatIsNotTrusted()
    {
        const RawServer untrusted(keepSilent, TestCertificates::server(QStringLiteral("unknown")));
        const RawServer server(httpRedirect(untrusted.url().toEncoded()));
        verifyUrlError(failureOfRequest(requestFor(server.url())), -1202,
                       QStringLiteral("The server's certificate is not trusted."));
        QCOMPARE(untrusted.requests().size(), std::size_t(0));
    }

    void aHandshakeThatIsCutOff()
    {
        RawServer server(keepSilent);
        server.onConnected = [](RawConnection& connection) {
            connect(&connection, &RawConnection::received, &connection, &RawConnection::close);
        };
        QUrl url = server.url();
        url.setScheme(QStringLiteral("https"));
        verifyUrlError(failureOfRequest(requestFor(url)), -1200,
                       QStringLiteral("A secure connection to the server could not be made."));
    }

    void aHandshakeThatIsAnsweredWithSomethingElse()
    {
        RawServer server(keepSilent);
        server.onConnected = [](RawConnection& connection) {
            connect(&connection, &RawConnection::received, &connection, [&connection] {
                connection.send(httpAnswer(400, "speak plainly"));
                connection.close();
            });
        };
        QUrl url = server.url();
        url.setScheme(QStringLiteral("https"));
        verifyUrlError(failureOfRequest(requestFor(url)), -1200,
                       QStringLiteral("A secure connection to the server could not be made."));
    }
};

QTEST_GUILESS_MAIN(TlsErrorsTest)
#include "tst_TlsErrors.moc"
