// SPDX-License-Identifier: MIT
#include "platform/HttpSession.h"
#include "support/Failures.h"
#include "support/RawServer.h"
#include "support/ResultOf.h"

#include <QtTest>

#include <chrono>

using namespace cartloom;
using namespace std::chrono_literals;

namespace
{

QNetworkRequest requestFor(const QUrl& url, std::chrono::milliseconds limit = 20s)
{
    QNetworkRequest request(url);
    request.setTransferTimeout(static_cast<int>(limit.count()));
    return request;
}

QNetworkRequest formFor(const QUrl& url)
{
    auto request = requestFor(url);
    request.setRawHeader("Content-Type", "text/plain");
    return request;
}

} // namespace

class HttpSessionTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void anAnswerComesWithItsStatusAndItsWholeBody()
    {
        const RawServer server(httpAnswer(200, "hello"));
        HttpSession session;
        const auto answer = resultOf(session.get(requestFor(server.url(QStringLiteral("/x?y=1"))), {}));
        QCOMPARE(answer.status, 200);
        QCOMPARE(answer.body, QByteArray("hello"));
        QCOMPARE(server.requests().size(), std::size_t(1));
        QCOMPARE(server.requests().front().verb, QByteArray("GET"));
        QCOMPARE(server.requests().front().path, QByteArray("/x?y=1"));
    }

    void anyStatusIsAnAnswer_data()
    {
        QTest::addColumn<int>("status");
        QTest::addColumn<bool>("success");
        for (const int status : {200, 201, 204, 205, 299})
            QTest::addRow("%d", status) << status << true;
        for (const int status :
             {199, 300, 304, 305, 400, 401, 403, 404, 407, 410, 416, 429, 500, 501, 503, 599})
            QTest::addRow("%d", status) << status << false;
    }

    void anyStatusIsAnAnswer()
    {
        QFETCH(int, status);
        QFETCH(bool, success);
        const RawServer server(httpAnswer(status));
        HttpSession session;
        const auto answer = resultOf(session.get(requestFor(server.url()), {}));
        QCOMPARE(answer.status, status);
        QCOMPARE(answer.isSuccess(), success);
        QCOMPARE(answer.body, QByteArray());
    }

    void aStatusOf199WithABodyIsAnAnswer()
    {
        const RawServer server(httpAnswer(199, "body"));
        HttpSession session;
        QCOMPARE(resultOf(session.get(requestFor(server.url()), {})).status, 199);
    }

    void aContinueBeforeTheAnswerIsPassedOver()
    {
        const RawServer server("HTTP/1.1 100 Continue\r\n\r\n" + httpAnswer(200, "hello"));
        HttpSession session;
        const auto answer = resultOf(session.get(requestFor(server.url()), {}));
        QCOMPARE(answer.status, 200);
        QCOMPARE(answer.body, QByteArray("hello"));
    }

    void aNotModifiedWithTheLengthOfWhatItLeavesOutIsAnAnswer()
    {
        const RawServer server("HTTP/1.1 304 Not Modified\r\nContent-Length: 1000\r\n\r\n");
        HttpSession session;
        QCOMPARE(resultOf(session.get(requestFor(server.url()), {})).status, 304);
    }

    void aPostSendsItsBodyAndItsHeaders()
    {
        const RawServer server(httpAnswer(200, "done"));
        HttpSession session;
        auto request = formFor(server.url());
        request.setRawHeader("X-Own", "kept");
        QCOMPARE(resultOf(session.post(request, "a=b", {})).body, QByteArray("done"));
        QCOMPARE(server.requests().front().verb, QByteArray("POST"));
        QCOMPARE(server.requests().front().body, QByteArray("a=b"));
        QCOMPARE(server.requests().front().header("content-type"), QByteArray("text/plain"));
        QCOMPARE(server.requests().front().header("x-own"), QByteArray("kept"));
    }

    void cookiesOfOneAnswerTravelWithTheNextRequest()
    {
        const RawServer server(httpAnswer(200, {}, {"Set-Cookie: a=1; Path=/", "Set-Cookie: b=2; HttpOnly"}));
        HttpSession session;
        static_cast<void>(resultOf(session.get(requestFor(server.url()), {})));
        static_cast<void>(resultOf(session.post(formFor(server.url()), "x", {})));
        QCOMPARE(server.requests().size(), std::size_t(2));
        QVERIFY(server.requests()[0].header("Cookie").isNull());
        QCOMPARE(server.requests()[1].header("Cookie"), QByteArray("a=1; b=2"));
    }

    void cookiesDoNotOutliveTheirSession()
    {
        const RawServer server(httpAnswer(200, {}, {"Set-Cookie: a=1"}));
        for (int i = 0; i < 2; ++i) {
            HttpSession session;
            static_cast<void>(resultOf(session.get(requestFor(server.url()), {})));
        }
        QVERIFY(server.requests()[1].header("Cookie").isNull());
    }

    void redirectsAreFollowedWithTheHeadersAndTheCookies()
    {
        const RawServer server([](RawConnection& connection, const RawRequest& request) {
            const QByteArray next = request.path == "/" ? "one?x=%20y" : request.path[1] == 'o' ? "/two" : "";
            connection.send(
                next.isEmpty()
                    ? httpAnswer(200, "there")
                    : httpAnswer(302, "unread", {"Location: " + next, "Set-Cookie: at=" + next.left(4)}));
            connection.close();
        });
        HttpSession session;
        auto request = requestFor(server.url());
        request.setRawHeader("User-Agent", "somebody");
        QCOMPARE(resultOf(session.get(request, {})).body, QByteArray("there"));
        QCOMPARE(server.requests().size(), std::size_t(3));
        QCOMPARE(server.requests()[1].path, QByteArray("/one?x=%20y"));
        QCOMPARE(server.requests()[2].path, QByteArray("/two"));
        QCOMPARE(server.requests()[2].header("User-Agent"), QByteArray("somebody"));
        QCOMPARE(server.requests()[2].header("Cookie"), QByteArray("at=/two"));
    }

    void aRedirectedPostIsRepeatedOnlyWhereTheStatusSaysSo_data()
    {
        QTest::addColumn<int>("status");
        QTest::addColumn<QByteArray>("verb");
        for (const int status : {301, 302, 303})
            QTest::addRow("%d", status) << status << QByteArray("GET");
        for (const int status : {307, 308})
            QTest::addRow("%d", status) << status << QByteArray("POST");
    }

    void aRedirectedPostIsRepeatedOnlyWhereTheStatusSaysSo()
    {
        QFETCH(int, status);
        QFETCH(QByteArray, verb);
        const RawServer server([&](RawConnection& connection, const RawRequest& request) {
            connection.send(request.path == "/" ? httpAnswer(status, {}, {"Location: /next"})
                                                : httpAnswer(200));
            connection.close();
        });
        HttpSession session;
        static_cast<void>(resultOf(session.post(formFor(server.url()), "form", {})));
        QCOMPARE(server.requests()[1].verb, verb);
        QCOMPARE(server.requests()[1].body, verb == "POST" ? QByteArray("form") : QByteArray());
    }

    void aRedirectWithAnEndlessBodyIsFollowed()
    {
        const RawServer server([](RawConnection& connection, const RawRequest& request) {
            if (request.path == "/") {
                connection.send("HTTP/1.1 302 Found\r\nLocation: /next\r\n\r\n");
                connection.sendEndlessly(QByteArray(64 * 1024, 'x'), 64 * 1024 * 1024);
            } else {
                connection.send(httpAnswer(200, "there"));
                connection.close();
            }
        });
        HttpSession session;
        QCOMPARE(resultOf(session.get(requestFor(server.url()), {})).body, QByteArray("there"));
        QVERIFY(server.connections().front()->sent() < 32 * 1024 * 1024);
    }

    void aRedirectWithoutATargetIsAnAnswer()
    {
        const RawServer server(httpAnswer(302, "where to?"));
        HttpSession session;
        const auto answer = resultOf(session.get(requestFor(server.url()), {}));
        QCOMPARE(answer.status, 302);
        QCOMPARE(answer.body, QByteArray("where to?"));
    }

    void aBodyOfExactlyTheLongestLengthIsAnAnswer()
    {
        const RawServer server(httpAnswer(200, QByteArray(8 * 1024 * 1024, 'x')));
        HttpSession session;
        QCOMPARE(resultOf(session.get(requestFor(server.url()), {})).body.size(), 8 * 1024 * 1024);
    }

    void oddAnswersThatAreUnderstood_data()
    {
        QTest::addColumn<QByteArray>("answer");
        QTest::addColumn<QByteArray>("body");
        QTest::newRow("no length") << QByteArray("HTTP/1.1 200 OK\r\n\r\nhello") << QByteArray("hello");
        QTest::newRow("HTTP/1.0") << QByteArray("HTTP/1.0 200 OK\r\n\r\nhello") << QByteArray("hello");
        QTest::newRow("bare line feeds")
            << QByteArray("HTTP/1.1 200 OK\nContent-Length: 5\n\nhello") << QByteArray("hello");
        QTest::newRow("longer than announced")
            << QByteArray("HTTP/1.1 200 OK\r\nContent-Length: 5\r\n\r\nhello world") << QByteArray("hello");
        QTest::newRow("chunks with an extension and a trailer")
            << QByteArray("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n"
                          "5;x=y\r\nhello\r\n0\r\nTrailer: z\r\n\r\n")
            << QByteArray("hello");
        QTest::newRow("length and chunked together")
            << QByteArray("HTTP/1.1 200 OK\r\nContent-Length: 500\r\nTransfer-Encoding: chunked\r\n\r\n"
                          "5\r\nhello\r\n0\r\n\r\n")
            << QByteArray("hello");
        QTest::newRow("negative length")
            << QByteArray("HTTP/1.1 200 OK\r\nContent-Length: -5\r\n\r\nhello") << QByteArray("hello");
        QTest::newRow("header line of 90 KB") << "HTTP/1.1 200 OK\r\nX-Long: " + QByteArray(90 * 1024, 'x') +
                                                     "\r\nContent-Length: 5\r\n\r\nhello"
                                              << QByteArray("hello");
    }

    void oddAnswersThatAreUnderstood()
    {
        QFETCH(QByteArray, answer);
        QFETCH(QByteArray, body);
        const RawServer server(answer);
        HttpSession session;
        const auto got = resultOf(session.get(requestFor(server.url()), {}));
        QCOMPARE(got.status, 200);
        QCOMPARE(got.body, body);
    }

    void brokenAnswersEndInTheSameWayEachTime_data()
    {
        QTest::addColumn<QByteArray>("answer");
        QTest::addColumn<int>("code");
        QTest::addColumn<QByteArray>("body");
        const QByteArray ok("HTTP/1.1 200 OK\r\n");
        const auto chunked = ok + "Transfer-Encoding: chunked\r\n\r\n";
        const QByteArray nothing;
        const QByteArray hello("hello");
        const int whole = 0;

        // Qt takes a chunk size that it cannot read for the end of the body.
        QTest::newRow("chunk size that overflows") << chunked + "fffffffffffffffff\r\nhello\r\n0\r\n\r\n"
                                                   << whole << nothing;
        QTest::newRow("chunk size that is negative") << chunked + "-5\r\nhello\r\n0\r\n\r\n"
                                                     << whole << nothing;
        QTest::newRow("chunk size that is no number") << chunked + "hello\r\nhello\r\n0\r\n\r\n"
                                                      << whole << nothing;
        QTest::newRow("length that overflows")
            << ok + "Content-Length: 99999999999999999999\r\n\r\nhello" << whole << hello;
        QTest::newRow("two lengths") << ok + "Content-Length: 5\r\nContent-Length: 6\r\n\r\nhello!" << whole
                                     << hello;
        QTest::newRow("gzip that is none")
            << ok + "Content-Encoding: gzip\r\nContent-Length: 5\r\n\r\nhello" << whole << nothing;
        QTest::newRow("gzip with a broken middle")
            << ok + "Content-Encoding: gzip\r\nContent-Length: 36\r\n\r\n" +
                   QByteArray::fromHex(
                       "1f8b0800000000000203cb48cdc936a8c8182547c95172941cf4240045449f68b0040000")
            << whole << nothing;
        QTest::newRow("NUL in a header")
            << ok + QByteArray("X-Nul: a\0b\r\n", 12) + "Content-Length: 5\r\n\r\nhello" << whole << hello;
        QTest::newRow("header line of 1 MB")
            << ok + "X-Long: " + QByteArray(1024 * 1024, 'x') + "\r\n\r\nhello" << whole << hello;
        QTest::newRow("100,000 header lines")
            << ok + QByteArray("X-Y: z\r\n").repeated(100'000) + "\r\nhello" << whole << hello;
        QTest::newRow("status that is no number")
            << QByteArray("HTTP/1.1 OK 200\r\n\r\nhello") << -1005 << nothing;
    }

    void brokenAnswersEndInTheSameWayEachTime()
    {
        QFETCH(QByteArray, answer);
        QFETCH(int, code);
        QFETCH(QByteArray, body);
        const RawServer server(answer);
        HttpSession session;
        HttpAnswer got;
        const auto error = failureOf<PlatformError>(
            [&] { return got = resultOf(session.get(requestFor(server.url()), {})); });
        QCOMPARE(error ? error->code : 0, code);
        QCOMPARE(got.body, body);
    }

    void aTokenThatHasFiredKeepsTheRequestFromBeingSent()
    {
        const RawServer server(httpAnswer(200));
        HttpSession session;
        const CancellationSource source;
        source.cancel();
        const auto error = failureOf<PlatformError>(
            [&] { return resultOf(session.get(requestFor(server.url()), source.token())); });
        QVERIFY(error);
        QCOMPARE(error->code, -999);
        QCoreApplication::processEvents();
        QCOMPARE(server.connections().size(), std::size_t(0));
    }

    void aCancellationInTheMiddleOfTheBodyEndsTheWait()
    {
        const CancellationSource source;
        const RawServer server([&](RawConnection& connection, const RawRequest&) {
            connect(&connection, &RawConnection::bytesSent, &connection, [&] { source.cancel(); });
            connection.send("HTTP/1.1 200 OK\r\nContent-Length: 1000\r\n\r\nhalf");
        });
        HttpSession session;
        const auto error = failureOf<PlatformError>(
            [&] { return resultOf(session.get(requestFor(server.url()), source.token())); });
        QVERIFY(error);
        QCOMPARE(error->code, -999);
    }

    void aCancellationAfterTheAnswerChangesNothing()
    {
        const RawServer server(httpAnswer(200, "hello"));
        const CancellationSource source;
        HttpSession session;
        const auto answer = resultOf(session.get(requestFor(server.url()), source.token()));
        source.cancel();
        QCOMPARE(answer.body, QByteArray("hello"));
    }

    void aStutteringDeliveryWithinTheLimitSucceeds()
    {
        const QByteArray answer = httpAnswer(200, "slowly");
        const RawServer server([&](RawConnection& connection, const RawRequest&) {
            // The next byte goes out when the one before has gone.
            connect(&connection, &RawConnection::bytesSent, &connection, [&] {
                if (connection.sent() < answer.size())
                    connection.send(answer.mid(connection.sent(), 1));
            });
            connection.send(answer.left(1));
        });
        HttpSession session;
        QCOMPARE(resultOf(session.get(requestFor(server.url()), {})).body, QByteArray("slowly"));
    }

    void aFailedRequestLeavesTheSessionUsable()
    {
        bool broken = true;
        const RawServer server([&](RawConnection& connection, const RawRequest&) {
            connection.send(broken ? "HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\nhalf"
                                   : httpAnswer(200, "well"));
            connection.close();
        });
        HttpSession session;
        QVERIFY(
            failureOf<PlatformError>([&] { return resultOf(session.get(requestFor(server.url()), {})); }));
        broken = false;
        QCOMPARE(resultOf(session.get(requestFor(server.url()), {})).body, QByteArray("well"));
    }
};

QTEST_GUILESS_MAIN(HttpSessionTest)
#include "tst_HttpSession.moc"
