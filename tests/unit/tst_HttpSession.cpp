// SPDX-License-Identifier: MIT
#include "support/Failures.h"
#include "support/RawServer.h"
#include "support/RequestFailures.h"
#include "support/Requests.h"
#include "support/ResultOf.h"
#include "support/TestCertificates.h"

#include <QtTest>

using namespace cartloom;

/// Requests of a session, and the cookies it keeps between them.
class HttpSessionTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { TestCertificates::trustAuthority(); }

    void responseHasStatusAndWholeBody()
    {
        const RawServer server(httpAnswer(200, "hello"));
        const auto response = fetchText(requestFor(server.url(QStringLiteral("/x?y=1"))));
        QCOMPARE(response.status, 200);
        QCOMPARE(response.body, QByteArray("hello"));
        QCOMPARE(server.requests().size(), std::size_t(1));
        QCOMPARE(server.requests().front().verb, QByteArray("GET"));
        QCOMPARE(server.requests().front().path, QByteArray("/x?y=1"));
        QCOMPARE(server.requests().front().header("Accept-Encoding"), QByteArray("identity"));
    }

    void addressIsSentByteForByte_data()
    {
        QTest::addColumn<bool>("tls");
        QTest::newRow("plain") << false;
        QTest::newRow("TLS") << true;
    }

    void addressIsSentByteForByte()
    {
        QFETCH(const bool, tls);
        const std::string address = "/f/%7Eme/%41/../b//c?x=%7e%2D%2f&y=a+b%20c'(d)";
        const RawServer server(httpAnswer(200),
                               tls ? RawServer::Tls(TestCertificates::server(QStringLiteral("good")))
                                   : RawServer::Tls());
        for (int i = 0; i < 20; ++i) {
            static_cast<void>(
                fetchText(requestFor(server.url(QString()).toString().toStdString() + address)));
            QCOMPARE(server.requests().back().path.toStdString(), address);
        }
    }

    void postSendsBodyAndHeaders()
    {
        const RawServer server(httpAnswer(200, "done"));
        auto request = formFor(server.url(), "a=b");
        request.headers.emplace_back("X-Own: kept");
        QCOMPARE(fetchText(request).body, QByteArray("done"));
        QCOMPARE(server.requests().front().verb, QByteArray("POST"));
        QCOMPARE(server.requests().front().body, QByteArray("a=b"));
        QCOMPARE(server.requests().front().header("content-type"), QByteArray("text/plain"));
        QCOMPARE(server.requests().front().header("x-own"), QByteArray("kept"));
    }

    void cookiesAreSentWithTheNextRequest()
    {
        const RawServer server(httpAnswer(200, {}, {"Set-Cookie: a=1; Path=/", "Set-Cookie: b=2; HttpOnly"}));
        HttpSession session;
        static_cast<void>(resultOf(session.fetch(requestFor(server.url()), {})));
        static_cast<void>(resultOf(session.fetch(formFor(server.url(), "x"), {})));
        QCOMPARE(server.requests().size(), std::size_t(2));
        QVERIFY(server.requests()[0].header("Cookie").isNull());
        auto cookies = server.requests()[1].header("Cookie").split(';');
        for (auto& cookie : cookies)
            cookie = cookie.trimmed();
        std::ranges::sort(cookies);
        QCOMPARE(cookies, (QByteArrayList{"a=1", "b=2"}));
    }

    void cookiesEndWithTheirSession()
    {
        const RawServer server(httpAnswer(200, {}, {"Set-Cookie: a=1"}));
        static_cast<void>(fetchText(requestFor(server.url())));
        static_cast<void>(fetchText(requestFor(server.url())));
        QCOMPARE(server.requests().size(), std::size_t(2));
        QVERIFY(server.requests()[1].header("Cookie").isNull());
    }

    void failedRequestLeavesTheSessionUsable()
    {
        bool broken = true;
        const RawServer server([&](RawConnection& connection, const RawRequest&) {
            connection.send(broken ? "HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\nhalf"
                                   : httpAnswer(200, "well"));
            connection.close();
        });
        HttpSession session;
        QVERIFY(
            failureOf<PlatformError>([&] { return resultOf(session.fetch(requestFor(server.url()), {})); }));
        broken = false;
        QCOMPARE(resultOf(session.fetch(requestFor(server.url()), {})).body, QByteArray("well"));
    }
};

QTEST_GUILESS_MAIN(HttpSessionTest)
#include "tst_HttpSession.moc"
