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

/// What fails on the way through a proxy.
class ProxyErrorsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
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
        verifyUrlError(failureOfRequest(requestFor(QUrl(QStringLiteral("https://nothing.invalid/")))), code,
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
        const auto failure = failureOfRequest(requestFor(QUrl(QStringLiteral("https://nothing.invalid/"))));
        // Older versions of Qt do not tell it from the lack of a network.
        if (QT_VERSION >= QT_VERSION_CHECK(6, 8, 0))
            verifyUrlError(failure, -1004, QStringLiteral("The connection to the server could not be made."));
        else
            verifyUrlError(failure, -1009, QStringLiteral("There is no network connection."));
    }

    void aProxyThatIsNotFound()
    {
        const ProxyInForce inForce(QStringLiteral("nothing.invalid"), 8080);
        verifyUrlError(failureOfRequest(requestFor(QUrl(QStringLiteral("https://nothing.invalid/")))), -1003,
                       QStringLiteral("The server could not be found."));
    }

    void aProxyThatClosesAtOnce()
    {
        // Qt goes on waiting, so that the inactivity limit is what ends it.
        const RawServer proxy{QByteArray()};
        const ProxyInForce inForce(QStringLiteral("127.0.0.1"), proxy.port());
        verifyUrlError(
            failureOfRequest(requestFor(QUrl(QStringLiteral("https://nothing.invalid/")), shortLimit)), -1001,
            QStringLiteral("The request timed out."));
        QCOMPARE(proxy.requests().size(), std::size_t(1));
    }

    void aProxyThatNeverAnswers()
    {
        const RawServer proxy(keepSilent);
        const ProxyInForce inForce(QStringLiteral("127.0.0.1"), proxy.port());
        verifyUrlError(
            failureOfRequest(requestFor(QUrl(QStringLiteral("https://nothing.invalid/")), shortLimit)), -1001,
            QStringLiteral("The request timed out."));
    }
};

QTEST_GUILESS_MAIN(ProxyErrorsTest)
#include "tst_ProxyErrors.moc"
