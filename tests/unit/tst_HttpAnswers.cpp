// SPDX-License-Identifier: MIT
#include "platform/HttpSession.h"
#include "support/Failures.h"
#include "support/InterimStatus.h"
#include "support/RawServer.h"
#include "support/RequestFailures.h"
#include "support/Requests.h"
#include "support/ResultOf.h"

#include <QtTest>

#include <chrono>

using namespace cartloom;
using namespace std::chrono_literals;

class HttpAnswersTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void anyStatusIsAnAnswer_data()
    {
        QTest::addColumn<int>("status");
        QTest::addColumn<bool>("success");
        for (const int status : {200, 201, 204, 205, 299})
            QTest::addRow("%d", status) << status << true;
        for (const int status :
             finalStatuses({199, 300, 304, 305, 400, 401, 403, 404, 407, 410, 416, 429, 500, 501, 503, 599}))
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

    void aStatusOf199IsAnAnswerUnlessAnotherOneIsWaitedFor()
    {
        const RawServer server(httpAnswer(199, "body"));
        const auto request = requestFor(server.url());
        HttpSession session;
        if (interimAnswersArePassedOver)
            verifyUrlError(failureOfRequest(request), -1005,
                           QStringLiteral("The network connection was lost."));
        else
            QCOMPARE(resultOf(session.get(request, {})).status, 199);
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
        QTest::newRow("header line of 100 KB")
            << "HTTP/1.1 200 OK\r\nX-Long: " + QByteArray(100 * 1024, 'x') +
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
};

QTEST_GUILESS_MAIN(HttpAnswersTest)
#include "tst_HttpAnswers.moc"
