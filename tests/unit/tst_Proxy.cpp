// SPDX-License-Identifier: MIT
#include "support/Checked.h"
#include "support/ProxyInForce.h"
#include "support/RawServer.h"
#include "support/RequestFailures.h"

#include <QtTest>

using namespace cartloom;
using namespace std::chrono_literals;

namespace
{

const auto localHost = QStringLiteral("127.0.0.1");

std::optional<PlatformError> failureThroughProxy(std::chrono::milliseconds timeout = 20s)
{
    return failureOfRequest(requestFor(std::string("https://nothing.invalid/"), timeout));
}

} // namespace

/// Requests through the proxy that the system's settings name.
class ProxyTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void plainRequestGoesToTheProxy()
    {
        const RawServer proxy(httpAnswer(200, "by proxy"));
        const ProxyInForce inForce(localHost, proxy.port());
        QCOMPARE(fetchText(requestFor(std::string("http://nothing.invalid/a%7Eb"))).body,
                 QByteArray("by proxy"));
        QCOMPARE(proxy.requests().front().path, QByteArray("http://nothing.invalid/a%7Eb"));
    }

    void refusedTunnelIsALostConnection_data()
    {
        QTest::addColumn<QByteArray>("answer");
        QTest::newRow("wants authentication")
            << httpAnswer(407, {}, {"Proxy-Authenticate: Basic realm=\"x\""});
        QTest::newRow("cannot reach the server") << httpAnswer(503);
        QTest::newRow("forbids it") << httpAnswer(403);
        QTest::newRow("closes at once") << QByteArray();
    }

    void refusedTunnelIsALostConnection()
    {
        QFETCH(const QByteArray, answer);
        const RawServer proxy(answer);
        const ProxyInForce inForce(localHost, proxy.port());
        CHECKED(
            verifyUrlError(failureThroughProxy(), -1005, QStringLiteral("The network connection was lost.")));
        QCOMPARE(proxy.requests().front().verb, QByteArray("CONNECT"));
    }

    void proxyThatDoesNotSpeakHttpIsReported()
    {
        const RawServer proxy(QByteArray("nonsense\r\n\r\n"));
        const ProxyInForce inForce(localHost, proxy.port());
        verifyUrlError(failureThroughProxy(), -1005, QStringLiteral("The network connection was lost."));
    }

    void proxyThatIsNotRunningIsReported()
    {
        const ProxyInForce inForce(localHost, RawServer(QByteArray()).port());
        verifyUrlError(failureThroughProxy(), -1004,
                       QStringLiteral("The connection to the server could not be made."));
    }

    void proxyThatIsNotFoundIsReported()
    {
        const ProxyInForce inForce(QStringLiteral("nothing.invalid"), 8080);
        verifyUrlError(failureThroughProxy(), -1003, QStringLiteral("The server could not be found."));
    }

    void proxyThatNeverAnswersTimesOut()
    {
        const RawServer proxy(keepSilent);
        const ProxyInForce inForce(localHost, proxy.port());
        CHECKED(verifyUrlError(failureThroughProxy(300ms), -1001, QStringLiteral("The request timed out.")));
        QCOMPARE(proxy.requests().size(), std::size_t(1));
    }
};

QTEST_GUILESS_MAIN(ProxyTest)
#include "tst_Proxy.moc"
