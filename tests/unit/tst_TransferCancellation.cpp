// SPDX-License-Identifier: MIT
#include "support/Checked.h"
#include "support/Download.h"
#include "support/EventLoopWait.h"
#include "support/FullPort.h"
#include "support/RawServer.h"
#include "support/RequestFailures.h"

#include <QElapsedTimer>
#include <QtTest>

#include <atomic>
#include <semaphore>
#include <thread>

#include <dlfcn.h>
#include <netdb.h>

using namespace cartloom;
using namespace std::chrono_literals;

namespace
{

/// Longer than the test may take: only the cancellation can end the wait.
constexpr auto timeout = 10min;

constexpr auto blockedName = "blocked.invalid";
std::atomic<bool> lookupBegun = false;
std::atomic<bool> lookupEnded = false;
std::binary_semaphore lookupMayEnd{0};

std::atomic<int> watchedPort = 0;
std::atomic<bool> connectCalled = false;

template <typename Function>
Function* systemFunction(const char* name, Function*)
{
    return reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name));
}

} // namespace

/// Interposed: blocks for one name until the test releases it, or for long enough to fail the test.
extern "C" int getaddrinfo(const char* node, const char* service, const addrinfo* hints, addrinfo** result)
{
    if (node && std::string_view(node) == blockedName) {
        lookupBegun = true;
        static_cast<void>(lookupMayEnd.try_acquire_for(30s));
        lookupEnded = true;
        return EAI_FAIL;
    }
    return systemFunction("getaddrinfo", &getaddrinfo)(node, service, hints, result);
}

/// Interposed: shows when a connection to the watched port has begun.
extern "C" int connect(int socket, const sockaddr* address, socklen_t length)
{
    const int result = systemFunction("connect", &connect)(socket, address, length);
    const int error = errno;
    if (address->sa_family == AF_INET &&
        ntohs(reinterpret_cast<const sockaddr_in*>(address)->sin_port) == watchedPort)
        connectCalled = true;
    errno = error;
    return result;
}

/// Cancels a download in each of its states, while the server never goes on.
class TransferCancellationTest : public QObject
{
    Q_OBJECT

    /// Cancels once the state is reached and checks how the download ends.
    template <typename Condition>
    static void cancelEnds(Download& download, const QUrl& url, const Condition& reached)
    {
        const CancellationSource source;
        auto task = download.downloader.download(requestFor(url, timeout), source.token());
        QVERIFY(comesTrue(reached));
        QElapsedTimer timer;
        timer.start();
        source.cancel();
        const auto error = failureOf<PlatformError>([&] { return resultOf(std::move(task)); });
        qInfo("cancelled after %lld us", timer.nsecsElapsed() / 1000);
        CHECKED(verifyUrlError(error, -999, QStringLiteral("The request was cancelled.")));
        QCOMPARE(download.names(), QStringList());
    }

    template <typename Condition>
    static void cancelEnds(const QUrl& url, const Condition& reached)
    {
        Download download;
        cancelEnds(download, url, reached);
    }

private Q_SLOTS:
    void cancelDuringNameLookup()
    {
        CHECKED(cancelEnds(QUrl(QStringLiteral("http://%1/").arg(QLatin1String(blockedName))),
                           [] { return lookupBegun.load(); }));
        QVERIFY(!lookupEnded);
        lookupMayEnd.release();
        QVERIFY(comesTrue([] { return lookupEnded.load(); }));
    }

    void cancelDuringConnection()
    {
        const FullPort port;
        watchedPort = port.url().port();
        cancelEnds(port.url(), [] { return connectCalled.load(); });
    }

    void cancelDuringTlsHandshake()
    {
        bool greeted = false;
        RawServer server(keepSilent);
        server.onConnected = [&](RawConnection& connection) {
            connect(&connection, &RawConnection::received, &connection, [&] { greeted = true; });
        };
        QUrl url = server.url();
        url.setScheme(QStringLiteral("https"));
        cancelEnds(url, [&] { return greeted; });
    }

    void cancelBeforeTheHeaders()
    {
        const RawServer server(keepSilent);
        cancelEnds(server.url(), [&] { return !server.requests().empty(); });
    }

    void cancelDuringSlowHeaders()
    {
        const RawServer server([](RawConnection& connection, const RawRequest&) {
            connection.drip("HTTP/1.1 200 OK\r\nX-Long: " + QByteArray(100'000, 'x'), 1ms);
        });
        cancelEnds(server.url(), [&] {
            return !server.connections().empty() && server.connections().front()->sent() > 50;
        });
    }

    void cancelDuringTheBody()
    {
        const RawServer server([](RawConnection& connection, const RawRequest&) {
            connection.send("HTTP/1.1 200 OK\r\nContent-Length: 1000\r\n\r\nhalf");
        });
        std::atomic<bool> received = false;
        Download download([&](qint64, qint64) { received = true; });
        // libcurl's own timers of the first second would end the wait without a wake-up.
        const QDeadlineTimer quiet(1500ms);
        cancelEnds(download, server.url(), [&] { return received && quiet.hasExpired(); });
    }

    void cancelledTokenSendsNothing()
    {
        const RawServer server(httpAnswer(200));
        const CancellationSource source;
        source.cancel();
        CHECKED(verifyUrlError(failureOfRequest(requestFor(server.url()), source.token()), -999,
                               QStringLiteral("The request was cancelled.")));
        QCoreApplication::processEvents();
        QCOMPARE(server.requests().size(), std::size_t(0));
    }

    void cancelAfterTheEndChangesNothing()
    {
        const RawServer server(httpAnswer(200, "contents"));
        const CancellationSource source;
        Download download;
        static_cast<void>(download.fetch(server.url(), source.token()));
        source.cancel();
        QCOMPARE(readFile(download.destination()), QByteArray("contents"));
    }

    void cancelTogetherWithTheEndHasOneOutcome()
    {
        const RawServer server(httpAnswer(200, "contents"));
        for (int i = 0; i < 20; ++i) {
            const CancellationSource source;
            std::thread canceller;
            Download download([&](qint64, qint64) {
                if (!canceller.joinable())
                    canceller = std::thread([&] { source.cancel(); });
            });
            const auto error =
                failureOf<PlatformError>([&] { return download.fetch(server.url(), source.token()); });
            canceller.join();
            QVERIFY(!error || error->code == -999);
            if (error)
                QCOMPARE(download.names(), QStringList());
            else
                QCOMPARE(readFile(download.destination()), QByteArray("contents"));
        }
    }
};

QTEST_GUILESS_MAIN(TransferCancellationTest)
#include "tst_TransferCancellation.moc"
