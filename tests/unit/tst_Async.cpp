// SPDX-License-Identifier: MIT
#include "async/Cancellation.h"
#include "async/Post.h"
#include "async/RunOnWorker.h"
#include "async/TaskHandle.h"
#include "support/ResultOf.h"

#include <QtTest>

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <optional>
#include <stdexcept>
#include <thread>
#include <vector>

using namespace cartloom;

namespace
{

bool isMainThread()
{
    return QThread::currentThread() == QCoreApplication::instance()->thread();
}

QCoro::Task<int> sumOnWorkers(int count)
{
    int sum = 0;
    for (int i = 0; i < count; ++i)
        sum += co_await runOnWorker([i] { return i; });
    co_return sum;
}

} // namespace

/// The way off the main thread and back, and cancellation.
class AsyncTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { enablePosting(); }

    void postedFunctionRunsAfterTheCall()
    {
        bool ran = false;
        post([&] { ran = true; });
        QVERIFY(!ran);
        QTRY_VERIFY(ran);
    }

    void postsOfOneThreadRunInOrderOnTheMainThread()
    {
        std::vector<int> order;
        bool elsewhere = false;
        std::thread poster([&] {
            for (int i = 0; i < 1000; ++i)
                post([&, i] {
                    order.push_back(i);
                    elsewhere = elsewhere || !isMainThread();
                });
        });
        poster.join();
        QVERIFY(order.empty());
        QTRY_COMPARE(order.size(), std::size_t(1000));
        QVERIFY(std::ranges::is_sorted(order));
        QVERIFY(!elsewhere);
    }

    void postsOfManyThreadsAllRun()
    {
        int sum = 0;
        std::vector<std::thread> posters;
        for (int t = 0; t < 8; ++t)
            posters.emplace_back([&] {
                for (int i = 0; i < 250; ++i)
                    post([&] { ++sum; });
            });
        for (auto& poster : posters)
            poster.join();
        QTRY_COMPARE(sum, 2000);
    }

    void nestedPostRunsAfterThoseAlreadyQueued()
    {
        std::vector<int> order;
        post([&] {
            post([&] { order.push_back(3); });
            order.push_back(1);
        });
        post([&] { order.push_back(2); });
        QTRY_COMPARE(order, (std::vector{1, 2, 3}));
    }

    void workRunsElsewhereAndResumesOnTheMainThread()
    {
        bool workedOnMain = true;
        bool resumedOnMain = false;
        const auto body = [&]() -> QCoro::Task<int> {
            const int result = co_await runOnWorker([&] {
                workedOnMain = isMainThread();
                return 7;
            });
            resumedOnMain = isMainThread();
            co_return result;
        };
        QCOMPARE(resultOf(body()), 7);
        QVERIFY(!workedOnMain);
        QVERIFY(resumedOnMain);
    }

    void exceptionOfTheWorkIsThrownToTheAwaiter()
    {
        const auto body = []() -> QCoro::Task<void> {
            co_await runOnWorker([] { throw std::runtime_error("broken"); });
        };
        QVERIFY_THROWS_EXCEPTION(std::runtime_error, resultOf(body()));
    }

    void workerThreadIsGoneAfterwards()
    {
        const std::filesystem::path threads("/proc/self/task");
        if (!exists(threads))
            QSKIP("this system does not list a process's threads");
        const auto count = [&] {
            return std::distance(std::filesystem::directory_iterator(threads),
                                 std::filesystem::directory_iterator());
        };
        const auto before = count();
        QCOMPARE(resultOf(sumOnWorkers(100)), 4950);
        QTRY_COMPARE(count(), before);
    }

    void startedTaskBeginsAfterTheCall()
    {
        bool entered = false;
        const auto handle = TaskHandle::start([&](CancellationToken) -> QCoro::Task<void> {
            entered = true;
            co_return;
        });
        QVERIFY(!entered);
        QVERIFY(!handle.hasBegun());
        QVERIFY(handle.isRunning());
        QTRY_VERIFY(!handle.isRunning());
        QVERIFY(handle.hasBegun());
        QVERIFY(entered);
    }

    void startNowRunsToTheFirstWait()
    {
        std::vector<int> order;
        const auto handle = TaskHandle::startNow([&](CancellationToken) -> QCoro::Task<void> {
            order.push_back(1);
            co_await runOnWorker([] {});
            order.push_back(2);
        });
        QCOMPARE(order, (std::vector{1}));
        QVERIFY(handle.hasBegun());
        QVERIFY(handle.isRunning());
        QTRY_VERIFY(!handle.isRunning());
        QCOMPARE(order, (std::vector{1, 2}));
    }

    void cancelFiresTheTaskToken()
    {
        bool cancelled = false;
        const auto handle = TaskHandle::start([&](CancellationToken token) -> QCoro::Task<void> {
            co_await runOnWorker([] {});
            cancelled = token.isCancelled();
        });
        handle.cancel();
        QTRY_VERIFY(!handle.isRunning());
        QVERIFY(cancelled);
    }

    void droppedHandleCancelsNothing()
    {
        std::optional<bool> cancelled;
        static_cast<void>(TaskHandle::start([&](CancellationToken token) -> QCoro::Task<void> {
            co_await runOnWorker([] {});
            cancelled = token.isCancelled();
        }));
        QTRY_VERIFY(cancelled);
        QVERIFY(!*cancelled);
    }

    void capturesOfTheBodyLiveUntilItsEnd_data()
    {
        QTest::addColumn<bool>("now");
        QTest::newRow("start") << false;
        QTest::newRow("startNow") << true;
    }

    void capturesOfTheBodyLiveUntilItsEnd()
    {
        QFETCH(const bool, now);
        auto captured = std::make_shared<int>(7);
        const std::weak_ptr<int> alive = captured;
        int seen = 0;
        {
            const TaskHandle::Body body = [captured, &seen](CancellationToken) -> QCoro::Task<void> {
                co_await runOnWorker([] {});
                seen = *captured;
            };
            static_cast<void>(now ? TaskHandle::startNow(body) : TaskHandle::start(body));
        }
        captured.reset();
        QVERIFY(!alive.expired());
        QTRY_COMPARE(seen, 7);
        QTRY_VERIFY(alive.expired());
    }

    void tokenWithoutSourceNeverFires()
    {
        const CancellationToken token;
        const CancellationCallback callback(token, [] { QFAIL("fired"); });
        QVERIFY(!token.isCancelled());
    }

    void tokenFiresOnceForAllCopies()
    {
        const CancellationSource source;
        const auto copy = source.token();
        int calls = 0;
        const CancellationCallback callback(copy, [&] { ++calls; });
        QCOMPARE(calls, 0);
        source.cancel();
        source.cancel();
        QCOMPARE(calls, 1);
        QVERIFY(copy.isCancelled());
        QVERIFY(source.token().isCancelled());
    }

    void droppedSourceCancelsNothing()
    {
        const auto token = CancellationSource().token();
        QVERIFY(!token.isCancelled());
    }

    void callbackOnFiredTokenRunsAtOnce()
    {
        const CancellationSource source;
        source.cancel();
        bool called = false;
        const CancellationCallback callback(source.token(), [&] { called = true; });
        QVERIFY(called);
    }

    void destroyedCallbackDoesNotRun()
    {
        const CancellationSource source;
        std::optional<CancellationCallback> callback;
        callback.emplace(source.token(), [] { QFAIL("fired"); });
        callback.reset();
        source.cancel();
    }

    void callbackMayDestroyItselfOthersAndTheSource()
    {
        std::optional<CancellationSource> source(std::in_place);
        std::optional<CancellationCallback> first;
        std::optional<CancellationCallback> second;
        std::vector<int> order;
        const auto marker = std::make_shared<int>(7);
        first.emplace(source->token(), [&, marker] {
            first.reset();
            second.reset();
            source.reset();
            order.push_back(*marker);
        });
        second.emplace(source->token(), [] { QFAIL("fired"); });
        const CancellationCallback third(source->token(), [&] { order.push_back(3); });
        source->cancel();
        QCOMPARE(order, (std::vector{7, 3}));
    }

    void destructorWaitsForCallbackOnAnotherThread()
    {
        for (int i = 0; i < 200; ++i) {
            const CancellationSource source;
            std::atomic<bool> alive = true;
            std::atomic<bool> late = false;
            std::optional<CancellationCallback> callback;
            callback.emplace(source.token(), [&] { late = late || !alive; });
            std::thread canceller([&] { source.cancel(); });
            callback.reset();
            alive = false;
            canceller.join();
            QVERIFY(!late);
        }
    }
};

QTEST_GUILESS_MAIN(AsyncTest)
#include "tst_Async.moc"
