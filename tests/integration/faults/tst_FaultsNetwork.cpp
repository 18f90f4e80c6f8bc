// SPDX-License-Identifier: MIT
#include "support/FaultTest.h"
#include "support/TestOrigins.h"

#include <QtTest>

using namespace cartloom;
using Stage = AppModel::Stage;

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

} // namespace

/// Networks that are not there, break, or speak something else.
class FaultsNetworkTest : public FaultTest
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
        m_sites->scripts[wait.path] = script;
        pressFailsWith(wait, networkFailure(QLatin1String(wait.step), code));
    }

private Q_SLOTS:
    void withEverythingInstalledNoNetworkIsNeeded_data()
    {
        QTest::addColumn<QUrl>("origin");
        QTest::newRow("01 offline: nobody answers") << closedPort();
        QTest::newRow("01 offline: no name is found") << QUrl(QStringLiteral("https://nothing.invalid"));
        QTest::newRow("01 offline: whoever is asked keeps silent") << QUrl();
    }

    void withEverythingInstalledNoNetworkIsNeeded()
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
        pressPlays();
        nothingChanged();
        QCOMPARE(m_sites->asked(), QStringList());
    }

    void aNameThatIsNotFound_data() { addRowForEachWait("02 name not found"); }
    void aNameThatIsNotFound() { failsFrom(QUrl(QStringLiteral("https://nothing.invalid")), -1003); }

    void aConnectionThatIsRefused_data() { addRowForEachWait("03 connection refused"); }
    void aConnectionThatIsRefused() { failsFrom(closedPort(), -1004); }

    void aResetInTheMiddle_data() { addRowForEachWait("07 reset in the middle"); }
    void aResetInTheMiddle() { failsWithScript(resetInTheMiddle, -1005); }

    void aConnectionClosedBeforeTheFirstByte_data() { addRowForEachWait("08 closed before the first byte"); }
    void aConnectionClosedBeforeTheFirstByte()
    {
        failsWithScript([](RawConnection& connection, const RawRequest&) { connection.close(); }, -1005);
    }

    void somethingThatIsNotHttp_data()
    {
        QTest::addColumn<Wait>("wait");
        QTest::addColumn<QByteArray>("garbage");
        for (const auto& wait : waits) {
            QTest::addRow("09 words: %s", wait.name) << wait << QByteArray("220 smtp.example ready\r\n\r\n");
            QTest::addRow("09 zeros: %s", wait.name) << wait << QByteArray(4096, '\0');
            QTest::addRow("09 almost HTTP: %s", wait.name) << wait << QByteArray("HTTX/1.1 200 OK\r\n\r\n");
        }
    }

    void somethingThatIsNotHttp()
    {
        QFETCH(const QByteArray, garbage);
        failsWithScript(
            [garbage](RawConnection& connection, const RawRequest&) {
                connection.send(garbage);
                connection.close();
            },
            -1005);
    }

    void aLoginPageInPlaceOfTheAnswer_data() { addRowForEachWait("10 a page to log in to the network"); }

    void aLoginPageInPlaceOfTheAnswer()
    {
        QFETCH(const Wait, wait);
        arrangeFor(wait);
        const Failure failure = unusable(wait, loginPage);
        m_sites->answers[wait.path] = httpAnswer(200, loginPage, {"Content-Type: text/html"});
        pressFailsWith(wait, failure);
    }

    void aFailedAttemptIsForgotten_data() { addRowForEachWait("11 two failed attempts, then a good one"); }

    void aFailedAttemptIsForgotten()
    {
        QFETCH(const Wait, wait);
        arrangeFor(wait);
        m_sites->scripts[wait.path] = [](RawConnection& connection, const RawRequest&) {
            connection.close();
        };
        press();
        press();
        shows(networkFailure(QLatin1String(wait.step), -1005), wait.isForTheGame());
        nothingChanged();
        nextPressPlays();
    }
};

QTEST_GUILESS_MAIN(FaultsNetworkTest)
#include "tst_FaultsNetwork.moc"
