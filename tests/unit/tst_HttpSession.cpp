// SPDX-License-Identifier: MIT
#include "platform/HttpSession.h"
#include "support/Failures.h"
#include "support/RawServer.h"
#include "support/Requests.h"
#include "support/ResultOf.h"

#include <QtTest>

#include <chrono>

using namespace cartloom;
using namespace std::chrono_literals;

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
