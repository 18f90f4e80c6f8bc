// SPDX-License-Identifier: MIT
#include "support/Checked.h"
#include "support/FaultTest.h"
#include "support/RequestFailures.h"
#include "support/TestCertificates.h"

#include <QtTest>

using namespace cartloom;

namespace
{

RawServer::Tls trusted()
{
    return TestCertificates::server(QStringLiteral("good"));
}

/// Redirects from /N to /N-1 and answers at /0.
void countDown(RawConnection& connection, const RawRequest& request)
{
    const int left = request.path.mid(1).toInt();
    connection.send(left > 0 ? httpRedirect("/" + QByteArray::number(left - 1)) : httpAnswer(200, "there"));
    connection.close();
}

} // namespace

/// Redirects that are followed, and those that must not be.
class RedirectsTest : public FaultTest
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { TestCertificates::trustAuthority(); }

    void redirectLoopIsReported_data() { addRowForEachWait("17 redirect loop"); }

    void redirectLoopIsReported()
    {
        QFETCH(const Wait, wait);
        arrangeFor(wait);
        m_sites->answers[wait.path] = httpRedirect(wait.path);
        pressFailsWith(wait, networkFailure(QLatin1String(wait.step), -1007));
    }

    void redirectFromHttpsToHttpIsRefused_data() { addRowForEachWait("18 https to http"); }

    void redirectFromHttpsToHttpIsRefused()
    {
        QFETCH(const Wait, wait);
        const RawServer plain(httpAnswer(200));
        const RawServer secure(httpRedirect(plain.url().toEncoded()), trusted());
        arrangeFor(wait);
        serveFrom(wait, secure.url(QString()));
        CHECKED(pressFailsWith(wait, networkFailure(QLatin1String(wait.step), -1022)));
        QCOMPARE(secure.requests().size(), std::size_t(1));
        QCOMPARE(plain.connections().size(), std::size_t(0));
    }

    void redirectToAnotherSchemeIsRefused_data()
    {
        QTest::addColumn<QByteArray>("target");
        QTest::addColumn<Wait>("wait");
        for (const char* const target :
             {"ftp://127.0.0.1/file", "file:///etc/hostname", "data:text/plain,hello"}) {
            for (const auto& wait : waits)
                QTest::addRow("19 to %s: %s", target, wait.name) << QByteArray(target) << wait;
        }
    }

    void redirectToAnotherSchemeIsRefused()
    {
        QFETCH(const QByteArray, target);
        QFETCH(const Wait, wait);
        arrangeFor(wait);
        m_sites->answers[wait.path] = httpRedirect(target);
        pressFailsWith(wait, networkFailure(QLatin1String(wait.step), -1002));
    }

    void twentyRedirectsAreFollowed()
    {
        const RawServer server(countDown);
        QCOMPARE(fetchText(requestFor(server.url(QStringLiteral("/20")))).body, QByteArray("there"));
        QCOMPARE(server.requests().size(), std::size_t(21));
    }

    void twentyOneRedirectsAreTooMany()
    {
        const RawServer server(countDown);
        CHECKED(verifyUrlError(failureOfRequest(requestFor(server.url(QStringLiteral("/21")))), -1007,
                               QStringLiteral("Too many redirects.")));
        QCOMPARE(server.requests().size(), std::size_t(21));
    }

    void headersAndCookiesFollowTheRedirect()
    {
        const RawServer server([](RawConnection& connection, const RawRequest& request) {
            connection.send(request.path == "/"
                                ? httpAnswer(302, "unread", {"Location: one", "Set-Cookie: a=1"})
                                : httpAnswer(200, "there"));
            connection.close();
        });
        auto request = requestFor(server.url());
        request.headers = {"User-Agent: somebody"};
        QCOMPARE(fetchText(request).body, QByteArray("there"));
        QCOMPARE(server.requests()[1].path, QByteArray("/one"));
        QCOMPARE(server.requests()[1].header("User-Agent"), QByteArray("somebody"));
        QCOMPARE(server.requests()[1].header("Accept-Encoding"), QByteArray("identity"));
        QCOMPARE(server.requests()[1].header("Cookie"), QByteArray("a=1"));
    }

    void targetIsRequestedByteForByte_data()
    {
        QTest::addColumn<bool>("tls");
        QTest::addColumn<bool>("relative");
        QTest::newRow("plain, absolute") << false << false;
        QTest::newRow("plain, path only") << false << true;
        QTest::newRow("TLS, absolute") << true << false;
        QTest::newRow("TLS, path only") << true << true;
    }

    void targetIsRequestedByteForByte()
    {
        QFETCH(const bool, tls);
        QFETCH(const bool, relative);
        const QByteArray target = "/f/%7Eme/%41?x=%7e%2D%2f";
        QByteArray origin;
        const RawServer server(
            [&](RawConnection& connection, const RawRequest& request) {
                connection.send(request.path == "/" ? httpRedirect(origin + target) : httpAnswer(200));
                connection.close();
            },
            tls ? trusted() : RawServer::Tls());
        if (!relative)
            origin = server.url(QString()).toEncoded();
        for (int i = 0; i < 20; ++i) {
            static_cast<void>(fetchText(requestFor(server.url())));
            QCOMPARE(server.requests().back().path, target);
        }
    }

    void postIsRepeatedOnlyFor307And308_data()
    {
        QTest::addColumn<int>("status");
        QTest::addColumn<QByteArray>("verb");
        for (const int status : {301, 302, 303})
            QTest::addRow("%d", status) << status << QByteArray("GET");
        for (const int status : {307, 308})
            QTest::addRow("%d", status) << status << QByteArray("POST");
    }

    void postIsRepeatedOnlyFor307And308()
    {
        QFETCH(const int, status);
        QFETCH(const QByteArray, verb);
        const RawServer server([status](RawConnection& connection, const RawRequest& request) {
            connection.send(request.path == "/" ? httpAnswer(status, {}, {"Location: /next"})
                                                : httpAnswer(200));
            connection.close();
        });
        static_cast<void>(fetchText(formFor(server.url(), "form")));
        QCOMPARE(server.requests()[1].verb, verb);
        QCOMPARE(server.requests()[1].body, verb == "POST" ? QByteArray("form") : QByteArray());
    }

    void endlessBodyOfARedirectIsNotRead()
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
        QCOMPARE(fetchText(requestFor(server.url())).body, QByteArray("there"));
        QVERIFY(server.connections().front()->sent() < 32 * 1024 * 1024);
    }

    void redirectWithoutATargetIsARefusal()
    {
        const RawServer server(httpAnswer(302, "where to?"));
        QCOMPARE(fetchText(requestFor(server.url())).status, 302);
    }
};

QTEST_GUILESS_MAIN(RedirectsTest)
#include "tst_Redirects.moc"
