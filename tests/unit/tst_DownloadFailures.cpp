// SPDX-License-Identifier: MIT
#include "errors/AppError.h"
#include "support/Download.h"
#include "support/Failures.h"
#include "support/RawServer.h"
#include "support/Unprivileged.h"

#include <QtTest>

#include <atomic>

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>

namespace fs = std::filesystem;
using namespace cartloom;

namespace
{

const QStringList onlyTheFile{QStringLiteral("file.bin")};

/// The next close() of a file open for writing fails with this errno; 0 for none.
std::atomic<int> closeError = 0;

bool isWrittenFile(int descriptor)
{
    struct stat status = {};
    return ::fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode) &&
           (::fcntl(descriptor, F_GETFL) & O_ACCMODE) == O_WRONLY;
}

} // namespace

/// Interposed: some file systems report a failed write only here.
extern "C" int close(int descriptor)
{
    static auto* const system = reinterpret_cast<int (*)(int)>(::dlsym(RTLD_NEXT, "close"));
    const int error = closeError != 0 && isWrittenFile(descriptor) ? closeError.exchange(0) : 0;
    const int result = system(descriptor);
    if (error == 0)
        return result;
    errno = error;
    return -1;
}

/// Failures of a download beside those of the network.
class DownloadFailuresTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void statusOutside2xxIsAnError_data()
    {
        QTest::addColumn<int>("status");
        for (const int status : {300, 304, 400, 401, 403, 404, 407, 416, 429, 500, 503, 599})
            QTest::addRow("%d", status) << status;
    }

    void statusOutside2xxIsAnError()
    {
        QFETCH(const int, status);
        const RawServer server(httpAnswer(status, "reason"));
        Download download;
        const QUrl url = server.url(QStringLiteral("/some%20file?a=b"));
        const auto error = failureOf<AppError>([&] { return download.fetch(url); });
        QVERIFY(error);
        QCOMPARE(error->message, QStringLiteral("The server answered with error %1.").arg(status));
        QCOMPARE(error->details, QString::fromLatin1(url.toEncoded()));
        QCOMPARE(download.names(), QStringList());
    }

    // libcurl waits for a final status after 1xx, so that these are not left to a server.
    void statusIsJudgedAtTheBoundsOf2xx()
    {
        for (const int status : {199, 300}) {
            const HttpResponse response{status};
            QVERIFY(!response.isSuccess());
            const auto error = failureOf<AppError>([&] {
                FileDownloader::requireFile(requestFor(std::string("https://x.example/f")), response);
                return 0;
            });
            QVERIFY(error);
            QCOMPARE(error->message, QStringLiteral("The server answered with error %1.").arg(status));
            QCOMPARE(error->details, QStringLiteral("https://x.example/f"));
        }
        for (const int status : {200, 299}) {
            const HttpResponse response{status};
            QVERIFY(response.isSuccess());
            FileDownloader::requireFile(requestFor(std::string("https://x.example/f")), response);
        }
    }

    void responseWithoutStatusIsAFileOnlyForALocalFile()
    {
        FileDownloader::requireFile(requestFor(std::string("file:///f")), {});
        const auto error = failureOf<AppError>([&] {
            FileDownloader::requireFile(requestFor(std::string("https://x.example/f")), {});
            return 0;
        });
        QVERIFY(error);
        QCOMPARE(error->message, QStringLiteral("The download finished without a file."));
        QCOMPARE(error->details, QString());
    }

    void detailsNameTheFirstAddress()
    {
        const RawServer server([](RawConnection& connection, const RawRequest& request) {
            connection.send(request.path == "/first" ? httpRedirect("/second") : httpAnswer(404));
            connection.close();
        });
        Download download;
        const QUrl first = server.url(QStringLiteral("/first"));
        const auto error = failureOf<AppError>([&] { return download.fetch(first); });
        QVERIFY(error);
        QCOMPARE(error->details, first.toString());
    }

    void endlessErrorPageIsNotRead()
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

    void destinationThatCannotBeRemovedIsReported()
    {
        const RawServer server(httpAnswer(200, "new"));
        Download download;
        writeFile(download.destination() / "locked/file", "old");
        download.sandbox.giveToEveryone();
        fs::permissions(download.destination() / "locked", fs::perms::owner_read | fs::perms::owner_exec);
        int error = 0;
        {
            const Unprivileged unprivileged;
            error = errnoOf([&] { static_cast<void>(download.fetch(server.url())); });
        }
        fs::permissions(download.destination() / "locked", fs::perms::all);
        QCOMPARE(error, EACCES);
        QCOMPARE(readFile(download.destination() / "locked/file"), QByteArray("old"));
        QCOMPARE(download.names(), onlyTheFile);
    }

    void failureKeepsTheOldFile_data()
    {
        QTest::addColumn<QByteArray>("answer");
        QTest::newRow("HTTP error") << httpAnswer(404, "page");
        QTest::newRow("no answer") << QByteArray();
        QTest::newRow("short body") << QByteArray("HTTP/1.1 200 OK\r\nContent-Length: 1000\r\n\r\nhalf");
        QTest::newRow("redirect to a local file") << httpRedirect("file:///etc/hostname");
    }

    void failureKeepsTheOldFile()
    {
        QFETCH(const QByteArray, answer);
        const RawServer server(answer);
        Download download;
        writeFile(download.destination(), "old");
        QVERIFY(failureOf<std::exception>([&] { return download.fetch(server.url()); }));
        QCOMPARE(readFile(download.destination()), QByteArray("old"));
        QCOMPARE(download.names(), onlyTheFile);
    }

    void missingFolderIsReported()
    {
        const RawServer server(httpAnswer(200));
        Download download;
        fs::remove(download.destination().parent_path());
        QCOMPARE(errnoOf([&] { static_cast<void>(download.fetch(server.url())); }), ENOENT);
    }

    void fullDiskAtCloseIsReported()
    {
        const RawServer server(httpAnswer(200, "contents"));
        Download download;
        closeError = ENOSPC;
        QCOMPARE(errnoOf([&] { static_cast<void>(download.fetch(server.url())); }), 28);
        QCOMPARE(closeError.exchange(0), 0);
        QCOMPARE(download.names(), QStringList());
    }
};

QTEST_GUILESS_MAIN(DownloadFailuresTest)
#include "tst_DownloadFailures.moc"
