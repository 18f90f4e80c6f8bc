// SPDX-License-Identifier: MIT
#include "support/Download.h"
#include "support/EventLoopWait.h"
#include "support/RawServer.h"

#include <QtTest>

#include <algorithm>

namespace fs = std::filesystem;
using namespace cartloom;

namespace
{

struct Report
{
    qint64 received;
    qint64 expected;
};

} // namespace

class FileDownloaderTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void fileIsThereWhenTheDownloadReturns()
    {
        const RawServer server(httpAnswer(200, "contents"));
        Download download;
        QCOMPARE(download.fetch(server.url()), download.destination());
        QCOMPARE(readFile(download.destination()), QByteArray("contents"));
        QCOMPARE(download.names(), QStringList{QStringLiteral("file.bin")});
    }

    void requestIsTheCallersAndAsksForPlainBytes()
    {
        const RawServer server(httpAnswer(200));
        Download download;
        auto request = requestFor(server.url(QString()).toString().toStdString() + "/a%7Eb?c=%2d");
        request.headers = {"User-Agent: somebody"};
        static_cast<void>(download.fetch(request));
        QCOMPARE(server.requests().front().path, QByteArray("/a%7Eb?c=%2d"));
        QCOMPARE(server.requests().front().header("User-Agent"), QByteArray("somebody"));
        QCOMPARE(server.requests().front().header("Accept-Encoding"), QByteArray("identity"));
    }

    void status2xxIsAFile_data()
    {
        QTest::addColumn<int>("status");
        for (const int status : {200, 204, 205, 206, 299})
            QTest::addRow("%d", status) << status;
    }

    void status2xxIsAFile()
    {
        QFETCH(const int, status);
        const RawServer server(httpAnswer(status));
        Download download;
        QCOMPARE(download.fetch(server.url()), download.destination());
        QCOMPARE(readFile(download.destination()), QByteArray());
    }

    void destinationIsReplaced_data()
    {
        QTest::addColumn<QString>("what");
        for (const auto* const what : {"file", "folder", "dangling link", "link to a file"})
            QTest::newRow(what) << QString::fromLatin1(what);
    }

    void destinationIsReplaced()
    {
        QFETCH(const QString, what);
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

    void progressEndsWithTheSizeOfTheFile_data()
    {
        QTest::addColumn<QByteArray>("head");
        QTest::addColumn<QByteArray>("tail");
        QTest::addColumn<qint64>("expected");
        const QByteArray ok("HTTP/1.1 200 OK\r\n");
        QTest::newRow("length") << ok + "Content-Length: 3000000\r\n\r\n"
                                << QByteArray() << qint64(3'000'000);
        QTest::newRow("no length") << ok + "\r\n" << QByteArray() << qint64(-1);
        QTest::newRow("chunks") << ok + "Transfer-Encoding: chunked\r\n\r\n2dc6c0\r\n"
                                << QByteArray("\r\n0\r\n\r\n") << qint64(-1);
    }

    void progressEndsWithTheSizeOfTheFile()
    {
        QFETCH(const QByteArray, head);
        QFETCH(const QByteArray, tail);
        QFETCH(const qint64, expected);
        const QByteArray body(3'000'000, 'x');
        const RawServer server(head + body + tail);
        std::vector<Report> reports;
        bool onMainThread = false;
        Download download([&](qint64 received, qint64 announced) {
            reports.push_back({received, announced});
            onMainThread = onMainThread || QThread::currentThread() == QCoreApplication::instance()->thread();
        });
        static_cast<void>(download.fetch(server.url()));
        QVERIFY(!reports.empty());
        QVERIFY(!onMainThread);
        QVERIFY(std::ranges::is_sorted(reports, {}, &Report::received));
        for (const auto& report : reports)
            QCOMPARE(report.expected, expected);
        QCOMPARE(reports.back().received, body.size());
        QCOMPARE(readFile(download.destination()), body);
    }

    void encodedBodyHasNoExpectedSize()
    {
        const QByteArray body(100'000, 'x');
        const RawServer server(httpAnswer(200, qCompress(body).mid(4), {"Content-Encoding: deflate"}));
        std::vector<Report> reports;
        Download download([&](qint64 received, qint64 expected) { reports.push_back({received, expected}); });
        static_cast<void>(download.fetch(server.url()));
        QVERIFY(!reports.empty());
        for (const auto& report : reports)
            QCOMPARE(report.expected, -1);
        QCOMPARE(reports.back().received, body.size());
        QCOMPARE(readFile(download.destination()), body);
    }

    void localFileIsCopied()
    {
        Download download;
        const auto source = download.sandbox.scratch() / "a source.bin";
        writeFile(source, "contents");
        QCOMPARE(download.fetch(QUrl::fromLocalFile(QString::fromStdString(source.native()))),
                 download.destination());
        QCOMPARE(readFile(download.destination()), QByteArray("contents"));
        QCOMPARE(readFile(source), QByteArray("contents"));
    }

    void twentyDownloadsLeaveNoDescriptorOrThread()
    {
        if (!fs::exists("/proc/self/fd"))
            QSKIP("this system does not list a process's descriptors and threads");
        const RawServer server(httpAnswer(200, QByteArray(300'000, 'x')));
        const auto entriesIn = [&](const char* folder) {
            // The server closes its ends from the event loop.
            const bool closed = comesTrue([&] {
                return std::ranges::all_of(server.connections(),
                                           [](const auto& each) { return each->isClosed(); });
            });
            return closed ? entriesOf(folder) : -1;
        };
        const auto once = [&] { static_cast<void>(Download().fetch(server.url())); };
        once();
        const auto descriptors = entriesIn("/proc/self/fd");
        const auto threads = entriesIn("/proc/self/task");
        for (int i = 0; i < 20; ++i)
            once();
        QTRY_COMPARE(entriesIn("/proc/self/fd"), descriptors);
        QTRY_COMPARE(entriesIn("/proc/self/task"), threads);
    }
};

QTEST_GUILESS_MAIN(FileDownloaderTest)
#include "tst_FileDownloader.moc"
