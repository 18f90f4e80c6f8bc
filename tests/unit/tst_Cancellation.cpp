// SPDX-License-Identifier: MIT
#include "platform/Cancellation.h"

#include <QtTest>

#include <atomic>
#include <optional>
#include <thread>

using namespace cartloom;

class CancellationTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aTokenOfNobodyNeverFires()
    {
        const CancellationToken token;
        const CancellationCallback callback(token, [] { QFAIL("fired"); });
        QVERIFY(!token.isCancelled());
    }

    void aTokenFiresOnceAndForAllItsCopies()
    {
        const CancellationSource source;
        const auto token = source.token();
        const auto copy = token;
        int calls = 0;
        const CancellationCallback callback(copy, [&] { ++calls; });
        QCOMPARE(calls, 0);
        source.cancel();
        source.cancel();
        QCOMPARE(calls, 1);
        QVERIFY(token.isCancelled());
        QVERIFY(copy.isCancelled());
        QVERIFY(source.token().isCancelled());
    }

    void droppingTheSourceCancelsNothing()
    {
        std::optional<CancellationSource> source(std::in_place);
        const auto token = source->token();
        source.reset();
        QVERIFY(!token.isCancelled());
    }

    void aCallbackOnAFiredTokenRunsAtOnce()
    {
        const CancellationSource source;
        source.cancel();
        bool called = false;
        const CancellationCallback callback(source.token(), [&] { called = true; });
        QVERIFY(called);
    }

    void aCallbackThatIsGoneDoesNotRun()
    {
        const CancellationSource source;
        {
            const CancellationCallback callback(source.token(), [] { QFAIL("fired"); });
        }
        source.cancel();
    }

    void aCallbackMayLetGoOfItselfAndOfOthersAndOfTheSource()
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

    void aDestructorWaitsForItsCallbackOnAnotherThread()
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

QTEST_GUILESS_MAIN(CancellationTest)
#include "tst_Cancellation.moc"
