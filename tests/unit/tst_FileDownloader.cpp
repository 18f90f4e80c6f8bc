// SPDX-License-Identifier: MIT
#include "game/AppError.h"
#include "game/FileDownloader.h"
#include "game/FriendlyError.h"
#include "platform/Errors.h"
#include "support/Failures.h"
#include "support/RawServer.h"
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

QNetworkRequest requestFor(const QUrl& url, std::chrono::milliseconds limit = 20s)
{
    QNetworkRequest request(url);
    request.setTransferTimeout(static_cast<int>(limit.count()));
    return request;
}

const auto neverAnswer = [](RawConnection&, const RawRequest&) {};
const auto noProgress = [](qint64, qint64) {};

std::ptrdiff_t entriesOf(const char* folder)
{
    return std::distance(fs::directory_iterator(folder), fs::directory_iterator());
}

/// One download into a folder that holds nothing else, and how it ended.
struct Download
{
    explicit Download(ProgressCallback progress = noProgress)
        : downloader(destination(), std::move(progress))
    {
        fs::create_directories(destination().parent_path());
    }

    [[nodiscard]] fs::path destination() const { return sandbox.scratch() / "downloads/file.bin"; }
    [[nodiscard]] QStringList names() const
    {
        return QDir(QString::fromStdString(destination().parent_path().native()))
            .entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot, QDir::Name);
    }

    fs::path fetch(const QUrl& url, CancellationToken token = {})
    {
        return resultOf(downloader.download(requestFor(url), std::move(token)));
    }

    Sandbox sandbox;
    FileDownloader downloader;
};

} // namespace

class FileDownloaderTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theFileIsThereWhenTheCallerGoesOn()
    {
        const RawServer server(httpAnswer(200, "contents"));
        Download download;
        QCOMPARE(download.fetch(server.url()), download.destination());
        QCOMPARE(readFile(download.destination()), QByteArray("contents"));
        QCOMPARE(download.names(), QStringList{QStringLiteral("file.bin")});
    }

    void theRequestIsTheCallersAndAsksForThePlainBytes()
    {
        const RawServer server(httpAnswer(200));
        Download download;
        auto request = requestFor(server.url(QStringLiteral("/a?b=c")));
        request.setRawHeader("User-Agent", "somebody");
        static_cast<void>(resultOf(download.downloader.download(request, {})));
        QCOMPARE(server.requests().front().path, QByteArray("/a?b=c"));
        QCOMPARE(server.requests().front().header("User-Agent"), QByteArray("somebody"));
        QCOMPARE(server.requests().front().header("Accept-Encoding"), QByteArray("identity"));
    }

    void statusesBeyondTwoHundredAreErrorsWithTheirNumber_data()
    {
        QTest::addColumn<int>("status");
        for (const int status : {199, 300, 304, 400, 401, 403, 404, 407, 416, 429, 500, 503})
            QTest::addRow("%d", status) << status;
    }

    void statusesBeyondTwoHundredAreErrorsWithTheirNumber()
    {
        QFETCH(int, status);
        const RawServer server(httpAnswer(status, "what went wrong"));
        Download download;
        const QUrl url = server.url(QStringLiteral("/some%20file?a=b"));
        const auto error = failureOf<AppError>([&] { return download.fetch(url); });
        QVERIFY(error);
        QCOMPARE(error->message, QStringLiteral("The server answered with error %1.").arg(status));
        QCOMPARE(error->details, QString::fromLatin1(url.toEncoded()));
        QCOMPARE(download.names(), QStringList());
    }

    void statusesOfTwoHundredAreNoErrors_data()
    {
        QTest::addColumn<int>("status");
        for (const int status : {200, 204, 205, 206, 299})
            QTest::addRow("%d", status) << status;
    }

    void statusesOfTwoHundredAreNoErrors()
    {
        QFETCH(int, status);
        const RawServer server(httpAnswer(status));
        Download download;
        QCOMPARE(download.fetch(server.url()), download.destination());
        QCOMPARE(readFile(download.destination()), QByteArray());
    }

    void theDetailsNameTheAddressThatWasAskedFirst()
    {
        const RawServer server([](RawConnection& connection, const RawRequest& request) {
            connection.send(request.path == "/first" ? httpRedirect("/second") : httpAnswer(404));
            connection.close();
        });
        Download download;
        const auto error =
            failureOf<AppError>([&] { return download.fetch(server.url(QStringLiteral("/first"))); });
        QVERIFY(error);
        QCOMPARE(error->details, server.url(QStringLiteral("/first")).toString());
    }

    void anEndlessErrorPageIsNotRead()
    {
        const RawServer server([](RawConnection& connection, const RawRequest&) {
            connection.send("HTTP/1.1 500 Broken\r\n\r\n");
            connection.sendEndlessly(QByteArray(64 * 1024, 'x'), 64 * 1024 * 1024);
        });
        Download download;
        const auto error = failureOf<AppError>([&] { return download.fetch(server.url()); });
        QVERIFY(error);
        QCOMPARE(error->message, QStringLiteral("The server answered with error 500."));
        QVERIFY(server.connections().front()->sent() < 32 * 1024 * 1024);
    }

    void whatStandsAtTheDestinationIsReplaced_data()
    {
        QTest::addColumn<QString>("what");
        for (const auto& what : {QStringLiteral("file"), QStringLiteral("folder"),
                                 QStringLiteral("dangling link"), QStringLiteral("link to a file")})
            QTest::newRow(qPrintable(what)) << what;
    }

    void whatStandsAtTheDestinationIsReplaced()
    {
        QFETCH(QString, what);
        const RawServer server(httpAnswer(200, "new"));
        Download download;
        const auto elsewhere = download.sandbox.scratch() / "elsewhere";
        writeFile(elsewhere, "elsewhere");
        if (what == QStringLiteral("folder"))
            writeFile(download.destination() / "inside/file", "old");
        else if (what == QStringLiteral("file"))
            writeFile(download.destination(), "old and longer");
        else
            fs::create_symlink(what == QStringLiteral("dangling link") ? "nowhere" : elsewhere,
                               download.destination());
        QCOMPARE(download.fetch(server.url()), download.destination());
        QVERIFY(fs::is_regular_file(fs::symlink_status(download.destination())));
        QCOMPARE(readFile(download.destination()), QByteArray("new"));
        QCOMPARE(readFile(elsewhere), QByteArray("elsewhere"));
    }

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
        const RawServer server(neverAnswer);
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

    void progressRisesToTheAnnouncedLength()
    {
        const QByteArray body(3'000'000, 'x');
        const RawServer server(httpAnswer(200, body));
        std::vector<std::pair<qint64, qint64>> seen;
        bool onMainThread = false;
        Download download([&](qint64 received, qint64 expected) {
            seen.emplace_back(received, expected);
            onMainThread = onMainThread || QThread::currentThread() == QCoreApplication::instance()->thread();
        });
        static_cast<void>(download.fetch(server.url()));
        QVERIFY(!seen.empty());
        QVERIFY(!onMainThread);
        QVERIFY(std::is_sorted(seen.begin(), seen.end()));
        for (const auto& [received, expected] : seen)
            QCOMPARE(expected, body.size());
        QCOMPARE(seen.back().first, body.size());
        QCOMPARE(readFile(download.destination()), body);
    }

    void anUnknownLengthStaysUnknownToTheEnd_data()
    {
        QTest::addColumn<QByteArray>("answer");
        QTest::newRow("no length") << "HTTP/1.1 200 OK\r\n\r\n" + QByteArray(1'000'000, 'x');
        QTest::newRow("chunked") << "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\nf4240\r\n" +
                                        QByteArray(1'000'000, 'x') + "\r\n0\r\n\r\n";
    }

    void anUnknownLengthStaysUnknownToTheEnd()
    {
        QFETCH(QByteArray, answer);
        const RawServer server(answer);
        std::vector<std::pair<qint64, qint64>> seen;
        Download download([&](qint64 received, qint64 expected) { seen.emplace_back(received, expected); });
        static_cast<void>(download.fetch(server.url()));
        QVERIFY(!seen.empty());
        QVERIFY(std::is_sorted(seen.begin(), seen.end()));
        for (const auto& [received, expected] : seen)
            QCOMPARE(expected, -1);
        QCOMPARE(readFile(download.destination()).size(), 1'000'000);
    }

    void aLocalFileIsServedWithoutAStatus()
    {
        Download download;
        const auto source = download.sandbox.scratch() / "a source.bin";
        writeFile(source, "contents");
        const auto url = QUrl::fromLocalFile(QString::fromStdString(source.native()));
        QCOMPARE(download.fetch(url), download.destination());
        QCOMPARE(readFile(download.destination()), QByteArray("contents"));
        QCOMPARE(readFile(source), QByteArray("contents"));
    }

    void aNameThatTheServerSuggestsIsIgnored()
    {
        const RawServer server(
            httpAnswer(200, "contents", {"Content-Disposition: attachment; filename=\"../../evil\""}));
        Download download;
        QCOMPARE(download.fetch(server.url()), download.destination());
        QCOMPARE(download.names(), QStringList{QStringLiteral("file.bin")});
        QVERIFY(!fs::exists(download.sandbox.root() / "evil"));
    }

    void nothingIsLeftOfTwentyDownloads()
    {
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
        const RawServer server(neverAnswer);
        const Sandbox sandbox;
        {
            FileDownloader downloader(sandbox.scratch() / "file.bin", noProgress);
            const auto task = downloader.download(requestFor(server.url()), {});
            QVERIFY(QTest::qWaitFor([&] { return !server.requests().empty(); }));
        }
        QVERIFY(QTest::qWaitFor([&] { return server.connections().front()->isClosed(); }));
        QVERIFY(fs::is_empty(sandbox.scratch()));
    }
};

QTEST_GUILESS_MAIN(FileDownloaderTest)
#include "tst_FileDownloader.moc"
