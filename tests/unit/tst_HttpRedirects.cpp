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

class HttpRedirectsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
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
};

QTEST_GUILESS_MAIN(HttpRedirectsTest)
#include "tst_HttpRedirects.moc"
