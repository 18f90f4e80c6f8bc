// SPDX-License-Identifier: MIT
#include "support/Checked.h"
#include "support/FaultTest.h"
#include "support/ProxyInForce.h"
#include "support/RequestFailures.h"
#include "support/TestOrigins.h"

#include <QtTest>

using namespace cartloom;

namespace
{

constexpr qint64 enoughToBeRead = 2'000'000;
const QByteArray loginPage("<!doctype html><title>Log in</title><form><input name=\"user\"></form>");

/// A port on which nobody listens.
QUrl closedPort()
{
    return RawServer(QByteArray()).url(QString());
}

void resetInTheMiddle(RawConnection& connection, const RawRequest&)
{
    QObject::connect(&connection, &RawConnection::bytesSent, &connection, [&connection] {
        if (connection.sent() > enoughToBeRead)
            connection.reset();
    });
    connection.send("HTTP/1.1 200 OK\r\nContent-Length: 8000000\r\n\r\n");
    connection.sendEndlessly(QByteArray(64 * 1024, 'x'), 8'000'000);
}

void closeAtOnce(RawConnection& connection, const RawRequest&)
{
    connection.close();
}

} // namespace

/// Networks that are absent, break, or answer with something else than HTTP.
class NetworkTest : public FaultTest
{
    Q_OBJECT

    void failsFrom(const QUrl& origin, int code)
    {
        QFETCH(const Wait, wait);
        arrangeFor(wait);
        serveFrom(wait, origin);
        pressFailsWith(wait, networkFailure(QLatin1String(wait.step), code));
    }

    void failsWithScript(const RawServer::Respond& script, int code)
    {
        QFETCH(const Wait, wait);
        arrangeFor(wait);
        // A service that does not know the size, so that a download does not end for being too long.
        if (wait.path != QByteArray(ScriptedSites::latest))
            m_sites->answers[ScriptedSites::latest] =
                httpAnswer(200, ScriptedSites::release("v147", 0, m_sites->url(ScriptedSites::archive)));
        m_sites->scripts[wait.path] = script;
        pressFailsWith(wait, networkFailure(QLatin1String(wait.step), code));
    }

private Q_SLOTS:
    void installedProgramNeedsNoNetwork_data()
    {
        QTest::addColumn<QUrl>("origin");
        QTest::newRow("01 offline: connection refused") << closedPort();
        QTest::newRow("01 offline: no name is found") << QUrl(QStringLiteral("https://nothing.invalid"));
        QTest::newRow("01 offline: no answer") << QUrl();
    }

    void installedProgramNeedsNoNetwork()
    {
        QFETCH(const QUrl, origin);
        installAres();
        saveGame();
        restart();
        if (origin.isEmpty()) {
            for (auto& [path, answer] : m_sites->answers)
                answer.clear();
        } else {
            TestOrigins::setReleaseApi(origin);
            TestOrigins::setStore(origin);
        }
        remember();
        CHECKED(pressPlays());
        CHECKED(nothingChanged());
        QCOMPARE(m_sites->asked(), QStringList());
    }

    void unknownHostIsReported_data() { addRowForEachWait("02 name not found"); }
    void unknownHostIsReported() { failsFrom(QUrl(QStringLiteral("http://nothing.invalid")), -1003); }

    void refusedConnectionIsReported_data() { addRowForEachWait("03 connection refused"); }
    void refusedConnectionIsReported() { failsFrom(closedPort(), -1004); }

    void resetDuringTheBodyIsReported_data() { addRowForEachWait("07 reset in the middle"); }
    void resetDuringTheBodyIsReported() { failsWithScript(resetInTheMiddle, -1005); }

    void closeBeforeTheFirstByteIsReported_data() { addRowForEachWait("08 closed before the first byte"); }
    void closeBeforeTheFirstByteIsReported() { failsWithScript(closeAtOnce, -1005); }

    void answerThatIsNotHttpIsReported_data()
    {
        QTest::addColumn<Wait>("wait");
        QTest::addColumn<QByteArray>("garbage");
        for (const auto& wait : waits) {
            QTest::addRow("09 words: %s", wait.name) << wait << QByteArray("220 smtp.example ready\r\n\r\n");
            QTest::addRow("09 zeros: %s", wait.name) << wait << QByteArray(4096, '\0');
            QTest::addRow("09 almost HTTP: %s", wait.name) << wait << QByteArray("HTTX/1.1 200 OK\r\n\r\n");
        }
    }

    void answerThatIsNotHttpIsReported()
    {
        QFETCH(const QByteArray, garbage);
        failsWithScript(
            [garbage](RawConnection& connection, const RawRequest&) {
                connection.send(garbage);
                connection.close();
            },
            -1011);
    }

    void loginPageIsNotTakenForTheAnswer_data() { addRowForEachWait("10 a page to log in to the network"); }

    void loginPageIsNotTakenForTheAnswer()
    {
        QFETCH(const Wait, wait);
        arrangeFor(wait);
        const Failure failure = unusable(wait, loginPage);
        m_sites->answers[wait.path] = httpAnswer(200, loginPage, {"Content-Type: text/html"});
        pressFailsWith(wait, failure);
    }

    void goodAttemptAfterFailedOnesPlays_data()
    {
        addRowForEachWait("11 two failed attempts, then a good one");
    }

    void goodAttemptAfterFailedOnesPlays()
    {
        QFETCH(const Wait, wait);
        arrangeFor(wait);
        m_sites->scripts[wait.path] = closeAtOnce;
        CHECKED(press());
        CHECKED(press());
        CHECKED(shows(networkFailure(QLatin1String(wait.step), -1005), wait.isForTheGame()));
        CHECKED(nothingChanged());
        nextPressPlays();
    }

    // The system refuses a connection to a multicast address without sending anything.
    void unreachableNetworkIsReported()
    {
        verifyUrlError(failureOfRequest(requestFor(std::string("https://224.0.0.1/"))), -1009,
                       QStringLiteral("There is no network connection."));
    }

    void addressOfAnotherSchemeIsRefused_data()
    {
        QTest::addColumn<std::string>("address");
        for (const char* const address :
             {"ftp://127.0.0.1/file", "file:///etc/hostname", "FILE:/etc/hostname", "data:text/plain,hello",
              "mailto:x@y", "/relative", "x", ""})
            QTest::newRow(address) << std::string(address);
    }

    void addressOfAnotherSchemeIsRefused()
    {
        QFETCH(const std::string, address);
        HttpRequest request = requestFor(address);
        request.schemes = AllowedSchemes::httpOrHttps;
        verifyUrlError(failureOfRequest(request), -1002,
                       QStringLiteral("This kind of address is not supported."));
    }

    void plainHttpIsRefusedBeforeAnythingIsSent()
    {
        const RawServer server(httpAnswer(200));
        HttpRequest request = requestFor(server.url());
        request.schemes = AllowedSchemes::https;
        CHECKED(verifyUrlError(failureOfRequest(request), -1022,
                               QStringLiteral("The address is not a secure one.")));
        const ProxyInForce inForce(QStringLiteral("127.0.0.1"), server.port());
        CHECKED(verifyUrlError(failureOfRequest(request), -1022,
                               QStringLiteral("The address is not a secure one.")));
        QCoreApplication::processEvents();
        QCOMPARE(server.connections().size(), std::size_t(0));
    }

    void missingLocalFileIsAnUnknownFailure()
    {
        verifyUrlError(failureOfRequest(requestFor(std::string("file:///nothing/here"))), -1,
                       QStringLiteral("The request failed."));
    }
};

QTEST_GUILESS_MAIN(NetworkTest)
#include "tst_Network.moc"
