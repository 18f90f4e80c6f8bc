// SPDX-License-Identifier: MIT
#include "game/AppError.h"
#include "game/FileDownloader.h"
#include "game/FriendlyError.h"
#include "platform/Errors.h"
#include "support/Download.h"
#include "support/Failures.h"
#include "support/InterimStatus.h"
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
        for (const int status : finalStatuses({199, 300, 304, 400, 401, 403, 404, 407, 416, 429, 500, 503}))
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
};

QTEST_GUILESS_MAIN(FileDownloaderTest)
#include "tst_FileDownloader.moc"
