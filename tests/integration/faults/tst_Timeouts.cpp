// SPDX-License-Identifier: MIT
#include "support/Checked.h"
#include "support/FaultTest.h"
#include "support/FullPort.h"

#include <QTimer>
#include <QtTest>

using namespace cartloom;
using namespace std::chrono_literals;

namespace
{

/// Longer than any answer from this machine takes while it has other work.
constexpr std::chrono::milliseconds shortTimeout = 400ms;
constexpr std::chrono::milliseconds stutterTimeout = 900ms;
constexpr int pieces = 20;
constexpr std::chrono::milliseconds betweenPieces = 50ms;

std::chrono::milliseconds& timeoutOf(const Wait& wait, Timeouts& timeouts)
{
    const QByteArray path = wait.path;
    if (path == ScriptedSites::latest)
        return timeouts.releaseLookup;
    if (path == ScriptedSites::archive)
        return timeouts.emulator;
    return path == ScriptedSites::game ? timeouts.game : timeouts.store;
}

/// Sends the bytes in pieces. Each pause is within the timeout, their sum is not.
void sendStuttering(RawConnection& connection, const QByteArray& bytes)
{
    static_assert(pieces * betweenPieces > stutterTimeout);
    auto* const timer = new QTimer(&connection);
    const auto length = bytes.size() / pieces + 1;
    QObject::connect(timer, &QTimer::timeout, &connection,
                     [&connection, timer, bytes, length, sent = qsizetype(0)]() mutable {
                         connection.send(bytes.mid(sent, length));
                         sent += length;
                         if (sent >= bytes.size()) {
                             timer->stop();
                             connection.close();
                         }
                     });
    timer->start(betweenPieces);
}

} // namespace

/// Servers that keep their callers waiting. Only the timeout under test is shortened, so that each case also
/// shows which one its requests are made with.
class TimeoutsTest : public FaultTest
{
    Q_OBJECT

    void shorten(const Wait& wait, std::chrono::milliseconds timeout)
    {
        timeoutOf(wait, m_timeouts) = timeout;
        arrangeFor(wait);
    }

    void timesOut(const Wait& wait)
    {
        CHECKED(press());
        CHECKED(shows(networkFailure(QLatin1String(wait.step), -1001), wait.isForTheGame()));
        CHECKED(nothingChanged());
        m_timeouts = {};
        restart();
        nextPressPlays();
    }

private Q_SLOTS:
    void programsOwnTimeouts()
    {
        constexpr Timeouts own;
        QCOMPARE(own.releaseLookup, 30s);
        QCOMPARE(own.emulator, 60s);
        QCOMPARE(own.store, 30s);
        QCOMPARE(own.game, 60s);
        const Limits limits = limitsFor(30s);
        QCOMPARE(limits.idleTimeout, 30s);
        QCOMPARE(limits.connectTimeout, 30s);
    }

    void missingAnswerTimesOut_data() { addRowForEachWait("04 never answered"); }

    void missingAnswerTimesOut()
    {
        QFETCH(const Wait, wait);
        shorten(wait, shortTimeout);
        m_sites->answers[wait.path].clear();
        timesOut(wait);
    }

    void connectionThatIsNeverAcceptedTimesOut_data() { addRowForEachWait("04 connection never taken"); }

    void connectionThatIsNeverAcceptedTimesOut()
    {
        QFETCH(const Wait, wait);
        const FullPort port;
        shorten(wait, shortTimeout);
        serveFrom(wait, port.url());
        timesOut(wait);
    }

    void tlsHandshakeThatIsNeverAnsweredTimesOut_data() { addRowForEachWait("04 handshake never answered"); }

    void tlsHandshakeThatIsNeverAnsweredTimesOut()
    {
        QFETCH(const Wait, wait);
        const RawServer server(keepSilent);
        QUrl origin = server.url(QString());
        origin.setScheme(QStringLiteral("https"));
        shorten(wait, shortTimeout);
        serveFrom(wait, origin);
        timesOut(wait);
    }

    void stallInTheMiddleTimesOut_data() { addRowForEachWait("05 stall in the middle"); }

    void stallInTheMiddleTimesOut()
    {
        QFETCH(const Wait, wait);
        shorten(wait, shortTimeout);
        const QByteArray half = m_sites->answers[wait.path].chopped(m_sites->body(wait.path).size() / 2);
        m_sites->scripts[wait.path] = [half](RawConnection& connection, const RawRequest&) {
            connection.send(half);
        };
        timesOut(wait);
    }

    void stutteringDeliveryArrives_data() { addRowForEachWait("06 stuttering delivery"); }

    void stutteringDeliveryArrives()
    {
        QFETCH(const Wait, wait);
        shorten(wait, stutterTimeout);
        m_sites->scripts[wait.path] = [this](RawConnection& connection, const RawRequest& request) {
            sendStuttering(connection, m_sites->answers[request.path]);
        };
        pressPlays();
    }
};

QTEST_GUILESS_MAIN(TimeoutsTest)
#include "tst_Timeouts.moc"
