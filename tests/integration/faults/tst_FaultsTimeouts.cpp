// SPDX-License-Identifier: MIT
#include "ShortLimits.h"
#include "support/FaultTest.h"

#include <QTimer>
#include <QtTest>

#include <array>

#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

using namespace cartloom;
using namespace std::chrono_literals;

namespace
{

/// Long enough for every answer that is to come, from a machine that has other work.
constexpr std::chrono::milliseconds silenceLimit = 400ms;
constexpr std::chrono::milliseconds stutterLimit = 900ms;
constexpr int pieces = 20;
constexpr std::chrono::milliseconds betweenPieces = 50ms;

/// A port whose system takes no connection any more, because nobody accepts those that wait.
class FullPort
{
public:
    FullPort()
    {
        socklen_t length = sizeof m_address;
        m_address.sin_family = AF_INET;
        m_address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        m_listener = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
        auto* const address = reinterpret_cast<sockaddr*>(&m_address);
        if (::bind(m_listener, address, length) != 0 || ::listen(m_listener, 0) != 0 ||
            ::getsockname(m_listener, address, &length) != 0)
            qFatal("cannot listen");
        for (int& caller : m_callers) {
            caller = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
            ::connect(caller, address, length);
        }
    }
    ~FullPort()
    {
        ::close(m_listener);
        for (const int caller : m_callers)
            ::close(caller);
    }
    FullPort(const FullPort&) = delete;
    FullPort& operator=(const FullPort&) = delete;

    [[nodiscard]] QUrl url() const
    {
        return QUrl(QStringLiteral("http://127.0.0.1:%1").arg(ntohs(m_address.sin_port)));
    }

private:
    sockaddr_in m_address = {};
    int m_listener = -1;
    std::array<int, 8> m_callers = {};
};

/// Sends the bytes in pieces, with a pause before each that is well within the limit; all of it takes longer.
void sendStuttering(RawConnection& connection, const QByteArray& bytes)
{
    static_assert(pieces * betweenPieces > stutterLimit);
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

/// Servers that keep their callers waiting. The limits are shorter than the program's own, which are checked.
class FaultsTimeoutsTest : public FaultTest
{
    Q_OBJECT

    void timesOut(const Wait& wait)
    {
        press();
        shows(networkFailure(QLatin1String(wait.step), -1001), wait.isForTheGame());
        nothingChanged();
        ShortLimits::set(30s);
        nextPressPlays();
    }

private Q_SLOTS:
    void init()
    {
        FaultTest::init();
        ShortLimits::set(silenceLimit);
    }

    void anAnswerThatNeverComes_data() { addRowForEachWait("04 never answered"); }

    void anAnswerThatNeverComes()
    {
        QFETCH(const Wait, wait);
        arrangeFor(wait);
        m_sites->answers[wait.path].clear();
        timesOut(wait);
    }

    void aConnectionThatIsNeverTaken_data() { addRowForEachWait("04 connection never taken"); }

    void aConnectionThatIsNeverTaken()
    {
        QFETCH(const Wait, wait);
        const FullPort port;
        arrangeFor(wait);
        serveFrom(wait, port.url());
        timesOut(wait);
    }

    void aStallInTheMiddle_data() { addRowForEachWait("05 stall in the middle"); }

    void aStallInTheMiddle()
    {
        QFETCH(const Wait, wait);
        arrangeFor(wait);
        const QByteArray half = m_sites->answers[wait.path].chopped(m_sites->body(wait.path).size() / 2);
        m_sites->scripts[wait.path] = [half](RawConnection& connection, const RawRequest&) {
            connection.send(half);
        };
        timesOut(wait);
    }

    void aStutteringDelivery_data() { addRowForEachWait("06 stuttering delivery"); }

    void aStutteringDelivery()
    {
        QFETCH(const Wait, wait);
        arrangeFor(wait);
        ShortLimits::set(stutterLimit);
        m_sites->scripts[wait.path] = [this](RawConnection& connection, const RawRequest& request) {
            sendStuttering(connection, m_sites->answers[request.path]);
        };
        pressPlays();
    }

    void theLimitsAreThoseOfTheProgram()
    {
        pressPlays();
        QCOMPARE(ShortLimits::asked(), (std::vector<std::chrono::milliseconds>{30s, 60s, 30s, 30s, 60s}));
    }
};

QTEST_GUILESS_MAIN(FaultsTimeoutsTest)
#include "tst_FaultsTimeouts.moc"
