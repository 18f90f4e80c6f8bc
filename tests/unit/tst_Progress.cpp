// SPDX-License-Identifier: MIT
#include "core/AppModel.h"
#include "support/ModelProbe.h"
#include "support/Sandbox.h"

#include <QtTest>

#include <memory>
#include <thread>

using namespace cartloom;
using namespace std::chrono_literals;

class ProgressTest : public QObject
{
    Q_OBJECT

    std::unique_ptr<Sandbox> m_sandbox;
    AppModel::TimePoint m_now;
    std::shared_ptr<AppModel> m_model;

    QString speed() const { return ModelProbe::speedText(*m_model); }

private Q_SLOTS:
    void init()
    {
        m_sandbox = std::make_unique<Sandbox>();
        m_now = AppModel::TimePoint(1h);
        m_model = AppModel::create([this] { return m_now; });
        m_model->beginProgress();
    }

    void cleanup()
    {
        m_model.reset();
        m_sandbox.reset();
    }

    void beginningForgetsTheDownloadBefore()
    {
        m_now += 1s;
        m_model->progress(5'000'000, 10'000'000);
        m_now += 300ms;
        m_model->beginProgress();
        QCOMPARE(m_model->fraction(), std::nullopt);
        QCOMPARE(m_model->detailLine(), QString());
        QCOMPARE(speed(), QString());
        m_now += 500ms;
        m_model->progress(1'000'000, 10'000'000);
        QCOMPARE(speed(), QStringLiteral(" · 2 MB/s"));
    }

    void anUnknownTotalShowsTheReceivedBytesAndTheSpeed_data()
    {
        QTest::addColumn<qint64>("expected");
        QTest::newRow("zero") << qint64(0);
        QTest::newRow("not announced") << qint64(-1);
    }

    void anUnknownTotalShowsTheReceivedBytesAndTheSpeed()
    {
        QFETCH(const qint64, expected);
        m_now += 2s;
        m_model->progress(4'200'000, expected);
        QCOMPARE(m_model->fraction(), std::nullopt);
        QCOMPARE(m_model->detailLine(), QStringLiteral("4.2 MB · 2.1 MB/s"));
    }

    void aKnownTotalShowsBothAndTheSpeed()
    {
        m_now += 4s;
        m_model->progress(4'200'000, 80'100'000);
        QCOMPARE(m_model->fraction(), 4'200'000.0 / 80'100'000.0);
        QCOMPARE(m_model->detailLine(), QStringLiteral("4.2 MB of 80.1 MB · 1.1 MB/s"));
    }

    void moreThanAnnouncedNeverDrivesTheBarPastFull()
    {
        m_model->progress(11, 10);
        QCOMPARE(m_model->fraction(), 1.0);
        QCOMPARE(m_model->detailLine(), QStringLiteral("11 bytes of 10 bytes"));
    }

    void theFirstHalfSecondHasNoSpeed()
    {
        m_now += 499ms;
        m_model->progress(1'000'000, 2'000'000);
        QCOMPARE(m_model->detailLine(), QStringLiteral("1 MB of 2 MB"));
        m_now += 1ms;
        m_model->progress(1'000'000, 2'000'000);
        QCOMPARE(m_model->detailLine(), QStringLiteral("1 MB of 2 MB · 2 MB/s"));
    }

    void betweenSamplesTheBytesChangeAndTheSpeedDoesNot()
    {
        m_now += 1s;
        m_model->progress(1'000'000, 9'000'000);
        QCOMPARE(m_model->detailLine(), QStringLiteral("1 MB of 9 MB · 1 MB/s"));
        m_now += 200ms;
        m_model->progress(3'000'000, 9'000'000);
        QCOMPARE(m_model->detailLine(), QStringLiteral("3 MB of 9 MB · 1 MB/s"));
        m_now += 200ms;
        m_model->progress(4'000'000, 9'000'000);
        QCOMPARE(m_model->detailLine(), QStringLiteral("4 MB of 9 MB · 1 MB/s"));
        m_now += 100ms;
        m_model->progress(5'000'000, 9'000'000);
        QCOMPARE(m_model->detailLine(), QStringLiteral("5 MB of 9 MB · 8 MB/s"));
    }

    void fewerBytesThanAtTheLastSampleIsNoNegativeSpeed()
    {
        m_now += 1s;
        m_model->progress(5'000'000, -1);
        m_now += 1s;
        m_model->progress(1'000'000, -1);
        QCOMPARE(m_model->detailLine(), QStringLiteral("1 MB · Zero KB/s"));
    }

    void theRateIsCutToWholeBytes()
    {
        m_now += 3s;
        m_model->progress(5, -1);
        QCOMPARE(speed(), QStringLiteral(" · 1 byte/s"));
    }

    void everyReportFromAnotherThreadIsAppliedInOrder()
    {
        QStringList lines;
        connect(m_model.get(), &AppModel::detailLineChanged, this,
                [&] { lines.append(m_model->detailLine()); });
        std::thread network([report = m_model->progressCallback()] {
            for (int i = 2; i < 502; ++i)
                report(i, 1000);
        });
        network.join();
        QCOMPARE(lines.size(), 0);
        QTRY_COMPARE(lines.size(), 500);
        for (int i = 2; i < 502; ++i)
            QCOMPARE(lines.at(i - 2), QStringLiteral("%1 bytes of 1 KB").arg(i));
    }

    void aReportAfterTheModelHasGoneIsDropped()
    {
        const auto report = m_model->progressCallback();
        report(1, 2);
        m_model.reset();
        report(2, 2);
        QCoreApplication::processEvents();
    }
};

QTEST_GUILESS_MAIN(ProgressTest)
#include "tst_Progress.moc"
