// SPDX-License-Identifier: MIT
#include "game/AppError.h"
#include "game/FileDownloader.h"
#include "game/FriendlyError.h"
#include "platform/Errors.h"
#include "support/Download.h"
#include "support/Failures.h"
#include "support/RawServer.h"
#include "support/Requests.h"
#include "support/ResultOf.h"
#include "support/Sandbox.h"

#include <QtTest>

#include <chrono>
#include <system_error>
#include <thread>

namespace fs = std::filesystem;
using namespace cartloom;
using namespace std::chrono_literals;

namespace
{

std::ptrdiff_t entriesOf(const char* folder)
{
    return std::distance(fs::directory_iterator(folder), fs::directory_iterator());
}

} // namespace

class DownloadFailuresTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void noFailureTouchesWhatStandsAtTheDestination_data()
    {
        QTest::addColumn<QByteArray>("answer");
        QTest::newRow("HTTP error") << httpAnswer(404, "page");
        QTest::newRow("nothing") << QByteArray();
        QTest::newRow("short body") << QByteArray("HTTP/1.1 200 OK\r\nContent-Length: 1000\r\n\r\nhalf");
        QTest::newRow("redirect elsewhere") << httpRedirect("http://192.0.2.1/");
    }

    void noFailureTouchesWhatStandsAtTheDestination()
    {
        QFETCH(QByteArray, answer);
        const RawServer server(answer);
        Download download;
        writeFile(download.destination(), "old");
        QVERIFY(failureOf<std::exception>([&] { return download.fetch(server.url()); }));
        QCOMPARE(readFile(download.destination()), QByteArray("old"));
        QCOMPARE(download.names(), QStringList{QStringLiteral("file.bin")});
    }

    void aRedirectThatMustNotBeFollowedIsNoStatus_data()
    {
        QTest::addColumn<QByteArray>("target");
        QTest::addColumn<int>("code");
        QTest::newRow("plain http") << QByteArray("http://192.0.2.1/") << -1022;
        QTest::newRow("local file") << QByteArray("file:///etc/hostname") << -1002;
        QTest::newRow("endless") << QByteArray("/again") << -1007;
    }

    void aRedirectThatMustNotBeFollowedIsNoStatus()
    {
        QFETCH(QByteArray, target);
        QFETCH(int, code);
        const RawServer server(httpRedirect(target));
        Download download;
        const auto error = failureOf<PlatformError>([&] { return download.fetch(server.url()); });
        QVERIFY(error);
        QCOMPARE(error->code, code);
        QCOMPARE(download.names(), QStringList());
    }

    void aFolderThatIsMissingIsTheSystemsOwnError()
    {
        const RawServer server(httpAnswer(200));
        Download download;
        fs::remove(download.destination().parent_path());
        const auto error = failureOf<std::system_error>([&] { return download.fetch(server.url()); });
        QVERIFY(error);
        QCOMPARE(error->code().value(), ENOENT);
    }

    void anInactivityLimitIsNoCancellation()
    {
        const RawServer server([](RawConnection& connection, const RawRequest&) {
            connection.send("HTTP/1.1 200 OK\r\nContent-Length: 1000\r\n\r\nhalf");
        });
        Download download;
        const auto error = failureOf<PlatformError>(
            [&] { return resultOf(download.downloader.download(requestFor(server.url(), 300ms), {})); });
        QVERIFY(error);
        QCOMPARE(error->code, -1001);
        QVERIFY(!FriendlyError::isCancel(*error));
        QCOMPARE(download.names(), QStringList());
    }

    void aCancellationBeforeTheTransferEndsTheWait()
    {
        const RawServer server(keepSilent);
        Download download;
        const CancellationSource source;
        source.cancel();
        const auto error =
            failureOf<PlatformError>([&] { return download.fetch(server.url(), source.token()); });
        QVERIFY(error);
        QVERIFY(FriendlyError::isCancel(*error));
        QCOMPARE(download.names(), QStringList());
    }

    void aCancellationBeforeTheAnswerEndsTheWait()
    {
        const CancellationSource source;
        const RawServer server([&](RawConnection&, const RawRequest&) { source.cancel(); });
        Download download;
        const auto error =
            failureOf<PlatformError>([&] { return download.fetch(server.url(), source.token()); });
        QVERIFY(error);
        QVERIFY(FriendlyError::isCancel(*error));
    }

    void aCancellationDuringTheTransferEndsTheWait()
    {
        const CancellationSource source;
        const RawServer server([](RawConnection& connection, const RawRequest&) {
            connection.send("HTTP/1.1 200 OK\r\nContent-Length: 1000\r\n\r\nhalf");
        });
        Download download;
        writeFile(download.destination(), "old");
        auto task = download.downloader.download(requestFor(server.url()), source.token());
        // The first half has been written.
        QVERIFY(QTest::qWaitFor([&] {
            const fs::directory_iterator files(download.destination().parent_path());
            return std::any_of(begin(files), end(files),
                               [](const auto& file) { return file.file_size() == 4; });
        }));
        source.cancel();
        const auto error = failureOf<PlatformError>([&] { return resultOf(std::move(task)); });
        QVERIFY(error);
        QCOMPARE(error->domain, QStringLiteral("NSURLErrorDomain"));
        QCOMPARE(error->code, -999);
        QCOMPARE(readFile(download.destination()), QByteArray("old"));
        QCOMPARE(download.names(), QStringList{QStringLiteral("file.bin")});
    }

    void aCancellationAfterTheTransferChangesNothing()
    {
        const RawServer server(httpAnswer(200, "contents"));
        const CancellationSource source;
        Download download;
        static_cast<void>(download.fetch(server.url(), source.token()));
        source.cancel();
        QCOMPARE(readFile(download.destination()), QByteArray("contents"));
    }

    void nothingIsLeftOfTwentyDownloads()
    {
        if (!fs::exists("/proc/self/fd"))
            QSKIP("this system does not list a process's descriptors and threads");
        const RawServer server(httpAnswer(200, QByteArray(300'000, 'x')));
        const auto once = [&] {
            Download download;
            static_cast<void>(download.fetch(server.url()));
            QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        };
        const auto settled = [&](const char* folder) {
            // The server's ends of the connections close from the event loop.
            const auto allClosed = [&] {
                return std::all_of(server.connections().begin(), server.connections().end(),
                                   [](const auto& connection) { return connection->isClosed(); });
            };
            return QTest::qWaitFor(allClosed) ? entriesOf(folder) : -1;
        };
        once();
        const auto descriptors = settled("/proc/self/fd");
        const auto threads = settled("/proc/self/task");
        for (int i = 0; i < 20; ++i)
            once();
        QTRY_COMPARE(settled("/proc/self/fd"), descriptors);
        QTRY_COMPARE(settled("/proc/self/task"), threads);
    }

    void droppingADownloaderEndsItsTransfer()
    {
        const RawServer server(keepSilent);
        const Sandbox sandbox;
        {
            FileDownloader downloader(sandbox.scratch() / "file.bin", [](qint64, qint64) {});
            const auto task = downloader.download(requestFor(server.url()), {});
            QVERIFY(QTest::qWaitFor([&] { return !server.requests().empty(); }));
        }
        QVERIFY(QTest::qWaitFor([&] { return server.connections().front()->isClosed(); }));
        QVERIFY(fs::is_empty(sandbox.scratch()));
    }
};

QTEST_GUILESS_MAIN(DownloadFailuresTest)
#include "tst_DownloadFailures.moc"
