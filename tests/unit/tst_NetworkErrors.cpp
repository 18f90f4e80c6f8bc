// SPDX-License-Identifier: MIT
#include "platform/HttpSession.h"
#include "support/Failures.h"
#include "support/RawServer.h"
#include "support/ResultOf.h"
#include "support/TestCertificates.h"

#include <QNetworkProxy>
#include <QtTest>

#include <chrono>

using namespace cartloom;
using namespace std::chrono_literals;

namespace
{

/// Shorter than anyone's patience, longer than any answer from this machine takes.
constexpr auto shortLimit = 300ms;
constexpr auto longLimit = 20s;

QNetworkRequest requestFor(const QUrl& url, std::chrono::milliseconds limit = longLimit)
{
    QNetworkRequest request(url);
    request.setTransferTimeout(static_cast<int>(limit.count()));
    return request;
}

std::optional<PlatformError> failureOfRequest(const QNetworkRequest& request)
{
    HttpSession session;
    return failureOf<PlatformError>([&] { return resultOf(session.get(request, {})); });
}

const auto neverAnswer = [](RawConnection&, const RawRequest&) {};

/// Sends every request of this process through a proxy, as long as it lives.
class ProxyInForce
{
public:
    explicit ProxyInForce(const QString& host, quint16 port)
    {
        QNetworkProxy::setApplicationProxy({QNetworkProxy::HttpProxy, host, port});
    }
    ~ProxyInForce() { QNetworkProxy::setApplicationProxy(QNetworkProxy::NoProxy); }
    ProxyInForce(const ProxyInForce&) = delete;
    ProxyInForce& operator=(const ProxyInForce&) = delete;
};

} // namespace

/// Each code through a network operation that really fails that way.
class NetworkErrorsTest : public QObject
{
    Q_OBJECT

private:
    /// Checks the whole triple and that it tells no address.
    void verify(const std::optional<PlatformError>& error, int code, const QString& description)
    {
        QVERIFY(error);
        QCOMPARE(error->domain, QStringLiteral("NSURLErrorDomain"));
        QCOMPARE(error->code, code);
        QCOMPARE(error->description, description);
        QVERIFY(!error->description.contains(QStringLiteral("127.0.0.1")));
        QVERIFY(!error->description.contains(QStringLiteral("http")));
    }

private Q_SLOTS:
    void initTestCase() { TestCertificates::trustAuthority(); }

    void aNameThatIsNotFound()
    {
        verify(failureOfRequest(requestFor(QUrl(QStringLiteral("https://nothing.invalid/")))), -1003,
               QStringLiteral("The server could not be found."));
    }

    void aPortOnWhichNobodyListens()
    {
        QUrl closed;
        {
            const RawServer server(httpAnswer(200));
            closed = server.url();
        }
        verify(failureOfRequest(requestFor(closed)), -1004,
               QStringLiteral("The connection to the server could not be made."));
    }

    void aNetworkThatCannotBeReached()
    {
        // An address of a group cannot be connected to, which the system says without sending anything.
        verify(failureOfRequest(requestFor(QUrl(QStringLiteral("https://224.0.0.1/")))), -1009,
               QStringLiteral("There is no network connection."));
    }

    void anAnswerThatNeverComes()
    {
        const RawServer server(neverAnswer);
        verify(failureOfRequest(requestFor(server.url(), shortLimit)), -1001,
               QStringLiteral("The request timed out."));
    }

    void aBodyThatStallsInTheMiddle()
    {
        const RawServer server([](RawConnection& connection, const RawRequest&) {
            connection.send("HTTP/1.1 200 OK\r\nContent-Length: 1000\r\n\r\nhalf");
        });
        verify(failureOfRequest(requestFor(server.url(), shortLimit)), -1001,
               QStringLiteral("The request timed out."));
    }

    void aCancellationIsNotATimeOut()
    {
        CancellationSource source;
        const RawServer server([&](RawConnection&, const RawRequest&) { source.cancel(); });
        HttpSession session;
        verify(failureOf<PlatformError>(
                   [&] { return resultOf(session.get(requestFor(server.url()), source.token())); }),
               -999, QStringLiteral("The request was cancelled."));
    }

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
        verify(failureOfRequest(requestFor(server.url())), -1005,
               QStringLiteral("The network connection was lost."));
    }

    void aPlainBodyShorterThanAnnounced_data()
    {
        QTest::addColumn<int>("status");
        for (const int status : {200, 206, 404, 500})
            QTest::addRow("%d", status) << status;
    }

    void aPlainBodyShorterThanAnnounced()
    {
        QFETCH(int, status);
        const RawServer server("HTTP/1.1 " + QByteArray::number(status) +
                               " Scripted\r\nContent-Length: 1000\r\n\r\nhalf");
        verify(failureOfRequest(requestFor(server.url())), -1005,
               QStringLiteral("The network connection was lost."));
    }

    void aResetInTheMiddleOfTheBody()
    {
        const RawServer server([](RawConnection& connection, const RawRequest&) {
            // Only once the other side must have begun to read the body.
            connect(&connection, &RawConnection::bytesSent, &connection, [&connection] {
                if (connection.sent() > 2'000'000)
                    connection.reset();
            });
            connection.send("HTTP/1.1 200 OK\r\nContent-Length: 8000000\r\n\r\n");
            connection.sendEndlessly(QByteArray(64 * 1024, 'x'), 8'000'000);
        });
        verify(failureOfRequest(requestFor(server.url())), -1005,
               QStringLiteral("The network connection was lost."));
    }

    void aRedirectLoop()
    {
        const RawServer server(httpRedirect("/again"));
        verify(failureOfRequest(requestFor(server.url())), -1007,
               QStringLiteral("The server sent the request on too many times."));
        QVERIFY(server.requests().size() > 5);
        QVERIFY(server.requests().size() < 100);
    }

    void aRedirectToAnotherScheme_data()
    {
        QTest::addColumn<QByteArray>("target");
        for (const char* const target : {"ftp://127.0.0.1/file", "file:///etc/hostname",
                                         "data:text/plain,hello", "qrc:/file", "mailto:x@y"})
            QTest::newRow(target) << QByteArray(target);
    }

    void aRedirectToAnotherScheme()
    {
        QFETCH(QByteArray, target);
        const RawServer server(httpRedirect(target));
        verify(failureOfRequest(requestFor(server.url())), -1002,
               QStringLiteral("This kind of address is not supported."));
    }

    void anAddressOfAnotherScheme_data() { aRedirectToAnotherScheme_data(); }

    void anAddressOfAnotherScheme()
    {
        QFETCH(QByteArray, target);
        if (target.startsWith("file:"))
            return;
        verify(failureOfRequest(requestFor(QUrl(QString::fromLatin1(target)))), -1002,
               QStringLiteral("This kind of address is not supported."));
    }

    void plainHttpToAnotherMachineIsRefusedBeforeAnythingIsSent_data()
    {
        QTest::addColumn<QString>("address");
        for (const char* const address : {"http://nothing.invalid/", "http://192.0.2.1/",
                                          "http://127.0.0.1.nothing.invalid/", "http://[::2]/"})
            QTest::newRow(address) << QString::fromLatin1(address);
    }

    void plainHttpToAnotherMachineIsRefusedBeforeAnythingIsSent()
    {
        QFETCH(QString, address);
        // A proxy would be told of each request; it is told of none.
        const RawServer proxy(httpAnswer(200));
        const ProxyInForce inForce(QStringLiteral("127.0.0.1"), proxy.port());
        verify(failureOfRequest(requestFor(QUrl(address))), -1022,
               QStringLiteral("The address is not a secure one."));
        QCoreApplication::processEvents();
        QCOMPARE(proxy.connections().size(), std::size_t(0));
    }

    void aRedirectToPlainHttpOnAnotherMachine()
    {
        const RawServer server(httpRedirect("http://192.0.2.1/"));
        verify(failureOfRequest(requestFor(server.url())), -1022,
               QStringLiteral("The address is not a secure one."));
    }

    void aRedirectFromHttpsToHttp()
    {
        const RawServer plain(httpAnswer(200));
        const RawServer secure(
            [&](RawConnection& connection, const RawRequest&) {
                connection.send(httpRedirect(plain.url().toEncoded()));
                connection.close();
            },
            TestCertificates::server(QStringLiteral("good")));
        verify(failureOfRequest(requestFor(secure.url())), -1022,
               QStringLiteral("The address is not a secure one."));
        QCOMPARE(secure.requests().size(), std::size_t(1));
        QCOMPARE(plain.connections().size(), std::size_t(0));
    }

    void aTrustedCertificateIsNoFailure()
    {
        const RawServer server(
            [](RawConnection& connection, const RawRequest&) {
                connection.send(httpAnswer(200, "secret"));
                connection.close();
            },
            TestCertificates::server(QStringLiteral("good")));
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
        const RawServer server(neverAnswer, TestCertificates::server(certificate));
        verify(failureOfRequest(requestFor(server.url())), -1202,
               QStringLiteral("The server's certificate is not trusted."));
        QCOMPARE(server.requests().size(), std::size_t(0));
    }

    void aRedirectToACertificateThatIsNotTrusted()
    {
        const RawServer untrusted(neverAnswer, TestCertificates::server(QStringLiteral("unknown")));
        const RawServer server(httpRedirect(untrusted.url().toEncoded()));
        verify(failureOfRequest(requestFor(server.url())), -1202,
               QStringLiteral("The server's certificate is not trusted."));
        QCOMPARE(untrusted.requests().size(), std::size_t(0));
    }

    void aHandshakeThatIsCutOff()
    {
        RawServer server(neverAnswer);
        server.onConnected = [](RawConnection& connection) {
            connect(&connection, &RawConnection::received, &connection, &RawConnection::close);
        };
        QUrl url = server.url();
        url.setScheme(QStringLiteral("https"));
        verify(failureOfRequest(requestFor(url)), -1200,
               QStringLiteral("A secure connection to the server could not be made."));
    }

    void aHandshakeThatIsAnsweredWithSomethingElse()
    {
        RawServer server(neverAnswer);
        server.onConnected = [](RawConnection& connection) {
            connect(&connection, &RawConnection::received, &connection, [&connection] {
                connection.send(httpAnswer(400, "speak plainly"));
                connection.close();
            });
        };
        QUrl url = server.url();
        url.setScheme(QStringLiteral("https"));
        verify(failureOfRequest(requestFor(url)), -1200,
               QStringLiteral("A secure connection to the server could not be made."));
    }

    void aProxyThatFails_data()
    {
        QTest::addColumn<QByteArray>("answer");
        QTest::addColumn<int>("code");
        QTest::addColumn<QString>("description");
        const auto noNetwork = QStringLiteral("There is no network connection.");
        const auto noConnection = QStringLiteral("The connection to the server could not be made.");

        QTest::newRow("wants authentication")
            << httpAnswer(407, {}, {"Proxy-Authenticate: Basic realm=\"x\""}) << -1004 << noConnection;
        QTest::newRow("cannot reach the server") << httpAnswer(503) << -1004 << noConnection;
        // Qt's network layer does not tell these from a network that cannot be reached.
        QTest::newRow("refuses") << httpAnswer(403) << -1009 << noNetwork;
        QTest::newRow("talks nonsense") << QByteArray("nonsense\r\n\r\n") << -1009 << noNetwork;
    }

    void aProxyThatFails()
    {
        QFETCH(QByteArray, answer);
        QFETCH(int, code);
        QFETCH(QString, description);
        const RawServer proxy(answer);
        const ProxyInForce inForce(QStringLiteral("127.0.0.1"), proxy.port());
        verify(failureOfRequest(requestFor(QUrl(QStringLiteral("https://nothing.invalid/")))), code,
               description);
        QVERIFY(!proxy.requests().empty());
        QCOMPARE(proxy.requests().front().verb, QByteArray("CONNECT"));
    }

    void aProxyThatNobodyRuns()
    {
        quint16 closed = 0;
        {
            const RawServer server(httpAnswer(200));
            closed = server.port();
        }
        const ProxyInForce inForce(QStringLiteral("127.0.0.1"), closed);
        verify(failureOfRequest(requestFor(QUrl(QStringLiteral("https://nothing.invalid/")))), -1009,
               QStringLiteral("There is no network connection."));
    }

    void aProxyThatIsNotFound()
    {
        const ProxyInForce inForce(QStringLiteral("nothing.invalid"), 8080);
        verify(failureOfRequest(requestFor(QUrl(QStringLiteral("https://nothing.invalid/")))), -1003,
               QStringLiteral("The server could not be found."));
    }

    void aProxyThatClosesAtOnce()
    {
        // Qt goes on waiting, so that the inactivity limit is what ends it.
        const RawServer proxy{QByteArray()};
        const ProxyInForce inForce(QStringLiteral("127.0.0.1"), proxy.port());
        verify(failureOfRequest(requestFor(QUrl(QStringLiteral("https://nothing.invalid/")), shortLimit)),
               -1001, QStringLiteral("The request timed out."));
        QCOMPARE(proxy.requests().size(), std::size_t(1));
    }

    void aProxyThatNeverAnswers()
    {
        const RawServer proxy(neverAnswer);
        const ProxyInForce inForce(QStringLiteral("127.0.0.1"), proxy.port());
        verify(failureOfRequest(requestFor(QUrl(QStringLiteral("https://nothing.invalid/")), shortLimit)),
               -1001, QStringLiteral("The request timed out."));
    }

    void somethingThatIsNotHttp_data()
    {
        QTest::addColumn<QByteArray>("answer");
        QTest::newRow("words") << QByteArray("220 smtp.example ESMTP ready\r\n\r\n");
        QTest::newRow("zeros") << QByteArray(4096, '\0');
        QTest::newRow("almost") << QByteArray("HTTX/1.1 200 OK\r\n\r\n");
        QTest::newRow("no status") << QByteArray("HTTP/1.1\r\n\r\n");
    }

    void somethingThatIsNotHttp()
    {
        // Qt asks again, and in the end takes it for a connection that broke before the answer.
        QFETCH(QByteArray, answer);
        const RawServer server(answer);
        verify(failureOfRequest(requestFor(server.url())), -1005,
               QStringLiteral("The network connection was lost."));
    }

    void aBodyWithoutEnd()
    {
        const RawServer server([](RawConnection& connection, const RawRequest&) {
            connection.send("HTTP/1.1 200 OK\r\n\r\n");
            connection.sendEndlessly(QByteArray(64 * 1024, 'x'), 64 * 1024 * 1024);
        });
        verify(failureOfRequest(requestFor(server.url())), -1103,
               QStringLiteral("The server's answer is too long."));
        QVERIFY(server.connections().front()->sent() < 32 * 1024 * 1024);
    }

    void aBodyThatIsAnnouncedTooLong()
    {
        const RawServer server([](RawConnection& connection, const RawRequest&) {
            connection.send("HTTP/1.1 200 OK\r\nContent-Length: 8388609\r\n\r\n" +
                            QByteArray(8 * 1024 * 1024 + 1, 'x'));
        });
        verify(failureOfRequest(requestFor(server.url())), -1103,
               QStringLiteral("The server's answer is too long."));
    }

    void aFileThatIsNotThereIsAnUnknownFailure()
    {
        verify(failureOfRequest(requestFor(QUrl(QStringLiteral("file:///nothing/here")))), -1,
               QStringLiteral("The request failed."));
    }
};

QTEST_GUILESS_MAIN(NetworkErrorsTest)
#include "tst_NetworkErrors.moc"
