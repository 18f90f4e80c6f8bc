// SPDX-License-Identifier: MIT
#include "game/AppError.h"
#include "game/FileDownloader.h"
#include "platform/Errors.h"
#include "support/Failures.h"
#include "support/RawServer.h"
#include "support/ResultOf.h"
#include "support/Sandbox.h"
#include "support/Unprivileged.h"

#include <QtTest>

#include <system_error>
#include <thread>

namespace fs = std::filesystem;
using namespace cartloom;

namespace
{

/// A download whose server never answers, so that only what the test reports can end it.
struct Waiting
{
    Waiting() { writeFile(arrived, "contents"); }

    QCoro::Task<void> start()
    {
        try {
            result = co_await downloader.download(QNetworkRequest(server.url()), {});
        } catch (...) {
            error = std::current_exception();
        }
        ++resumed;
    }

    /// Lets the event loop run until the caller has been resumed, and then some more.
    bool settle()
    {
        const bool once = QTest::qWaitFor([this] { return resumed > 0; });
        for (int i = 0; i < 10; ++i)
            QCoreApplication::processEvents();
        return once && resumed == 1;
    }

    [[nodiscard]] int code() const
    {
        const auto failure = failureOf<PlatformError>([this]() -> int { std::rethrow_exception(error); });
        return failure ? failure->code : 0;
    }

    Sandbox sandbox;
    fs::path arrived = sandbox.scratch() / "arrived";
    fs::path destination = sandbox.scratch() / "destination";
    RawServer server{keepSilent};
    FileDownloader downloader{destination, [](qint64, qint64) {}};
    fs::path result;
    std::exception_ptr error;
    int resumed = 0;
};

const auto lost = std::make_exception_ptr(urlError(UrlError::networkConnectionLost));

} // namespace

/// Whatever a session reports, in whatever order: the caller is resumed exactly once.
class DownloadReportsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aFinishedFileAndACompletion()
    {
        Waiting waiting;
        const auto task = waiting.start();
        waiting.downloader.didFinishDownloading(waiting.arrived, 200, {});
        QCOMPARE(waiting.resumed, 0);
        QCOMPARE(readFile(waiting.destination), QByteArray("contents"));
        waiting.downloader.didComplete(nullptr);
        QVERIFY(waiting.settle());
        QCOMPARE(waiting.result, waiting.destination);
    }

    void aCompletionsErrorWinsAndTheMovedFileStays()
    {
        Waiting waiting;
        const auto task = waiting.start();
        waiting.downloader.didFinishDownloading(waiting.arrived, 200, {});
        waiting.downloader.didComplete(lost);
        QVERIFY(waiting.settle());
        QCOMPARE(waiting.code(), -1005);
        QCOMPARE(readFile(waiting.destination), QByteArray("contents"));
    }

    void aCompletionWithoutAFile()
    {
        Waiting waiting;
        const auto task = waiting.start();
        waiting.downloader.didComplete(nullptr);
        QVERIFY(waiting.settle());
        const auto failure = failureOf<AppError>([&]() -> int { std::rethrow_exception(waiting.error); });
        QVERIFY(failure);
        QCOMPARE(failure->message, QStringLiteral("The download finished without a file."));
        QCOMPARE(failure->details, QString());
    }

    void anErrorAndThenAFile()
    {
        Waiting waiting;
        const auto task = waiting.start();
        waiting.downloader.didComplete(lost);
        waiting.downloader.didFinishDownloading(waiting.arrived, 200, {});
        waiting.downloader.didComplete(nullptr);
        QVERIFY(waiting.settle());
        QCOMPARE(waiting.code(), -1005);
    }

    void aFileWithoutAStatusIsNotJudged()
    {
        Waiting waiting;
        const auto task = waiting.start();
        waiting.downloader.didFinishDownloading(waiting.arrived, std::nullopt, {});
        waiting.downloader.didComplete(nullptr);
        QVERIFY(waiting.settle());
        QCOMPARE(waiting.result, waiting.destination);
    }

    void aRefusedFileIsNotTouched()
    {
        Waiting waiting;
        const auto task = waiting.start();
        waiting.downloader.didFinishDownloading(waiting.arrived, 300, {});
        waiting.downloader.didComplete(nullptr);
        QVERIFY(waiting.settle());
        const auto failure = failureOf<AppError>([&]() -> int { std::rethrow_exception(waiting.error); });
        QVERIFY(failure);
        QCOMPARE(failure->message, QStringLiteral("The server answered with error 300."));
        QCOMPARE(failure->details, QString());
        QVERIFY(fs::exists(waiting.arrived));
        QVERIFY(!fs::exists(waiting.destination));
    }

    void aFileThatCannotBeMovedIsTheSystemsOwnError()
    {
        Waiting waiting;
        const auto task = waiting.start();
        waiting.downloader.didFinishDownloading(waiting.sandbox.scratch() / "vanished", 200, {});
        waiting.downloader.didComplete(nullptr);
        QVERIFY(waiting.settle());
        const auto failure =
            failureOf<std::system_error>([&]() -> int { std::rethrow_exception(waiting.error); });
        QVERIFY(failure);
        QCOMPARE(failure->code().value(), ENOENT);
    }

    void aPlaceThatCannotBeClearedIsTheSystemsOwnError()
    {
        Waiting waiting;
        const auto task = waiting.start();
        // A folder whose contents this user may not remove, at the destination itself.
        writeFile(waiting.destination / "locked/file", "old");
        for (const auto& folder : {waiting.sandbox.root(), waiting.sandbox.scratch()})
            fs::permissions(folder, fs::perms::all);
        fs::permissions(waiting.destination / "locked", fs::perms::owner_read | fs::perms::owner_exec);
        {
            const Unprivileged unprivileged;
            waiting.downloader.didFinishDownloading(waiting.arrived, 200, {});
        }
        waiting.downloader.didComplete(nullptr);
        QVERIFY(waiting.settle());
        fs::permissions(waiting.destination / "locked", fs::perms::all);
        const auto failure =
            failureOf<std::system_error>([&]() -> int { std::rethrow_exception(waiting.error); });
        QVERIFY(failure);
        QCOMPARE(failure->code().value(), EACCES);
        QCOMPARE(readFile(waiting.destination / "locked/file"), QByteArray("old"));
        QCOMPARE(readFile(waiting.arrived), QByteArray("contents"));
    }

    void completionsOverAndOver()
    {
        Waiting waiting;
        const auto task = waiting.start();
        waiting.downloader.didFinishDownloading(waiting.arrived, 200, {});
        for (int i = 0; i < 5; ++i)
            waiting.downloader.didComplete(i % 2 == 0 ? nullptr : lost);
        QVERIFY(waiting.settle());
        QCOMPARE(waiting.result, waiting.destination);
        waiting.downloader.didComplete(lost);
        QVERIFY(waiting.settle());
    }

    void completionsFromManyThreadsAtOnce()
    {
        Waiting waiting;
        const auto task = waiting.start();
        std::vector<std::thread> threads;
        for (int i = 0; i < 8; ++i)
            threads.emplace_back([&, i] {
                if (i == 0)
                    waiting.downloader.didFinishDownloading(waiting.arrived, 200, {});
                waiting.downloader.didWriteData(i, -1);
                waiting.downloader.didComplete(i % 2 == 0 ? lost : nullptr);
            });
        for (auto& thread : threads)
            thread.join();
        QVERIFY(waiting.settle());
    }

    void completionsBeforeTheStartAreNobodysConcern()
    {
        Waiting waiting;
        waiting.downloader.didComplete(lost);
        const auto task = waiting.start();
        waiting.downloader.didFinishDownloading(waiting.arrived, 200, {});
        waiting.downloader.didComplete(nullptr);
        QVERIFY(waiting.settle());
        QCOMPARE(waiting.result, waiting.destination);
    }

    void aCancellationThatComesTogetherWithTheCompletion()
    {
        for (int i = 0; i < 20; ++i) {
            const Sandbox sandbox;
            const RawServer server(httpAnswer(200, "contents"));
            const CancellationSource source;
            FileDownloader downloader(sandbox.scratch() / "file", [&](qint64, qint64) {});
            std::thread canceller;
            const auto outcome = failureOf<PlatformError>([&] {
                canceller = std::thread([&] { source.cancel(); });
                return resultOf(downloader.download(QNetworkRequest(server.url()), source.token()));
            });
            canceller.join();
            QVERIFY(!outcome || outcome->code == -999);
            QCOMPARE(fs::exists(sandbox.scratch() / "file"), !outcome);
        }
    }
};

QTEST_GUILESS_MAIN(DownloadReportsTest)
#include "tst_DownloadReports.moc"
