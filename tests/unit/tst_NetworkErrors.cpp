// SPDX-License-Identifier: MIT
#include "support/ProxyInForce.h"
#include "support/RawServer.h"
#include "support/RequestFailures.h"
#include "support/Requests.h"

#include <QtTest>

using namespace cartloom;
using namespace std::chrono_literals;

namespace
{

/// Shorter than anyone's patience, longer than any answer from this machine takes.
constexpr auto shortLimit = 300ms;

} // namespace

/// Each code through a network operation that really fails that way.
class NetworkErrorsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aNameThatIsNotFound()
    {
        verifyUrlError(failureOfRequest(requestFor(QUrl(QStringLiteral("https://nothing.invalid/")))), -1003,
                       QStringLiteral("The server could not be found."));
    }

    void aPortOnWhichNobodyListens()
    {
        QUrl closed;
        {
            const RawServer server(httpAnswer(200));
            closed = server.url();
        }
        verifyUrlError(failureOfRequest(requestFor(closed)), -1004,
                       QStringLiteral("The connection to the server could not be made."));
    }

    void aNetworkThatCannotBeReached()
    {
        // An address of a group cannot be connected to, which the system says without sending anything.
        verifyUrlError(failureOfRequest(requestFor(QUrl(QStringLiteral("https://224.0.0.1/")))), -1009,
                       QStringLiteral("There is no network connection."));
    }

    void anAnswerThatNeverComes()
    {
        const RawServer server(keepSilent);
        verifyUrlError(failureOfRequest(requestFor(server.url(), shortLimit)), -1001,
                       QStringLiteral("The request timed out."));
    }

    void aBodyThatStallsInTheMiddle()
    {
        const RawServer server([](RawConnection& connection, const RawRequest&) {
            connection.send("HTTP/1.1 200 OK\r\nContent-Length: 1000\r\n\r\nhalf");
        });
        verifyUrlError(failureOfRequest(requestFor(server.url(), shortLimit)), -1001,
                       QStringLiteral("The request timed out."));
    }

    void aCancellationIsNotATimeOut()
    {
        CancellationSource source;
        const RawServer server([&](RawConnection&, const RawRequest&) { source.cancel(); });
        HttpSession session;
        verifyUrlError(failureOf<PlatformError>(
                           [&] { return resultOf(session.get(requestFor(server.url()), source.token())); }),
                       -999, QStringLiteral("The request was cancelled."));
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
        verifyUrlError(failureOfRequest(requestFor(server.url())), -1005,
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
        verifyUrlError(failureOfRequest(requestFor(server.url())), -1005,
                       QStringLiteral("The network connection was lost."));
    }

    void aRedirectLoop()
    {
        const RawServer server(httpRedirect("/again"));
        verifyUrlError(failureOfRequest(requestFor(server.url())), -1007,
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
        verifyUrlError(failureOfRequest(requestFor(server.url())), -1002,
                       QStringLiteral("This kind of address is not supported."));
    }

    void anAddressOfAnotherScheme_data()
    {
        QTest::addColumn<QString>("address");
        for (const char* const address : {"ftp://127.0.0.1/file", "data:text/plain,hello", "qrc:/file",
                                          "mailto:x@y", "/relative", "x", ""})
            QTest::newRow(address) << QString::fromLatin1(address);
    }

    void anAddressOfAnotherScheme()
    {
        QFETCH(QString, address);
        verifyUrlError(failureOfRequest(requestFor(QUrl(address))), -1002,
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
        verifyUrlError(failureOfRequest(requestFor(QUrl(address))), -1022,
                       QStringLiteral("The address is not a secure one."));
        QCoreApplication::processEvents();
        QCOMPARE(proxy.connections().size(), std::size_t(0));
    }

    void aRedirectToPlainHttpOnAnotherMachine()
    {
        const RawServer server(httpRedirect("http://192.0.2.1/"));
        verifyUrlError(failureOfRequest(requestFor(server.url())), -1022,
                       QStringLiteral("The address is not a secure one."));
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
        verifyUrlError(failureOfRequest(requestFor(server.url())), -1005,
                       QStringLiteral("The network connection was lost."));
    }

    void aBodyWithoutEnd()
    {
        const RawServer server([](RawConnection& connection, const RawRequest&) {
            connection.send("HTTP/1.1 200 OK\r\n\r\n");
            connection.sendEndlessly(QByteArray(64 * 1024, 'x'), 64 * 1024 * 1024);
        });
        verifyUrlError(failureOfRequest(requestFor(server.url())), -1103,
                       QStringLiteral("The server's answer is too long."));
        QVERIFY(server.connections().front()->sent() < 32 * 1024 * 1024);
    }

    void aBodyThatIsAnnouncedTooLong()
    {
        const RawServer server([](RawConnection& connection, const RawRequest&) {
            connection.send("HTTP/1.1 200 OK\r\nContent-Length: 8388609\r\n\r\n" +
                            QByteArray(8 * 1024 * 1024 + 1, 'x'));
        });
        verifyUrlError(failureOfRequest(requestFor(server.url())), -1103,
                       QStringLiteral("The server's answer is too long."));
    }

    void aFileThatIsNotThereIsAnUnknownFailure()
    {
        verifyUrlError(failureOfRequest(requestFor(QUrl(QStringLiteral("file:///nothing/here")))), -1,
                       QStringLiteral("The request failed."));
    }
};

QTEST_GUILESS_MAIN(NetworkErrorsTest)
#include "tst_NetworkErrors.moc"
