// SPDX-License-Identifier: MIT
#include "platform/MainThread.h"

#include <QtTest>

#include <thread>

using namespace cartloom;

class MainThreadTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void nothingRunsInsideTheCall()
    {
        bool ran = false;
        MainThread::post([&] { ran = true; });
        QVERIFY(!ran);
        QTRY_VERIFY(ran);
    }

    void everythingRunsOnTheMainThreadInItsOrder()
    {
        std::vector<int> order;
        bool elsewhere = false;
        std::thread poster([&] {
            for (int i = 0; i < 1000; ++i)
                MainThread::post([&, i] {
                    order.push_back(i);
                    elsewhere = elsewhere || QThread::currentThread() != thread();
                });
        });
        poster.join();
        QVERIFY(order.empty());
        QTRY_COMPARE(order.size(), std::size_t(1000));
        QVERIFY(std::is_sorted(order.begin(), order.end()));
        QVERIFY(!elsewhere);
    }

    void nothingIsLostOfManyThreads()
    {
        int sum = 0;
        std::vector<std::thread> posters;
        for (int t = 0; t < 8; ++t)
            posters.emplace_back([&] {
                for (int i = 0; i < 250; ++i)
                    MainThread::post([&] { ++sum; });
            });
        for (auto& poster : posters)
            poster.join();
        QTRY_COMPARE(sum, 2000);
    }

    void whatAFunctionPostsRunsAfterIt()
    {
        std::vector<int> order;
        MainThread::post([&] {
            MainThread::post([&] { order.push_back(3); });
            order.push_back(1);
        });
        MainThread::post([&] { order.push_back(2); });
        QTRY_COMPARE(order, (std::vector{1, 2, 3}));
    }
};

QTEST_GUILESS_MAIN(MainThreadTest)
#include "tst_MainThread.moc"
