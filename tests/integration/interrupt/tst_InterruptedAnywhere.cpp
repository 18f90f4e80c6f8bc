// SPDX-License-Identifier: MIT
#include "InterruptedTest.h"
#include "PowerLoss.h"

#include <QtTest>

#include <algorithm>
#include <array>
#include <cerrno>

using namespace cartloom;

namespace
{

constexpr std::array operations{"install",  "update", "rollback", "commit",
                                "recovery", "game",   "import",   "reset"};

} // namespace

/// Every operation, interrupted at every call that changes the file system, one after the other, until there
/// is none left to interrupt.
class InterruptedAnywhereTest : public InterruptedTest
{
    Q_OBJECT

private Q_SLOTS:
    void nextPressPlays_data()
    {
        QTest::addColumn<QString>("operation");
        QTest::addColumn<QByteArray>("with");
        for (const auto* operation : operations) {
            const auto name = QString::fromLatin1(operation);
            QTest::addRow("66 %s killed", operation) << name << QByteArray("kill");
            QTest::addRow("49 %s without space", operation) << name << QByteArray::number(ENOSPC);
            QTest::addRow("49 %s with a failing disk", operation) << name << QByteArray::number(EIO);
        }
    }

    void nextPressPlays()
    {
        QFETCH(const QString, operation);
        QFETCH(const QByteArray, with);
        int points = 0;
        for (bool interrupted = true; interrupted;) {
            prepare(operation);
            const auto end = run(commandOf(operation), {QByteArray::number(points + 1), with, {}});
            interrupted = end.calls.size() > points;
            const QString where =
                QStringLiteral("point %1, %2: ").arg(points + 1).arg(end.calls.value(points));
            const bool killed = interrupted && with == "kill";
            QVERIFY2(killed ? end.killed : end.well, qPrintable(where + end.complaint));
            const auto aftermath = run(QStringLiteral("aftermath"));
            QVERIFY2(aftermath.well, qPrintable(where + aftermath.complaint));
            points += interrupted;
        }
        QVERIFY(points > 0);
        qInfo("%s: %d points", QTest::currentDataTag(), points);
    }

    void nextPressPlaysAfterPowerLoss_data()
    {
        QTest::addColumn<QString>("operation");
        QTest::addColumn<Remains>("remains");
        for (const auto* operation : operations) {
            const auto name = QString::fromLatin1(operation);
            QTest::addRow("101 %s, unflushed files empty", operation) << name << Remains::nothing;
            QTest::addRow("101 %s, unflushed files of zeros", operation) << name << Remains::zeros;
            QTest::addRow("101 %s, unflushed files half", operation) << name << Remains::half;
        }
    }

    /// Names change on the disk in the order of the calls, as a journalling file system has them: those that
    /// it still lacked are as after a loss at an earlier call.
    void nextPressPlaysAfterPowerLoss()
    {
        QFETCH(const QString, operation);
        QFETCH(const Remains, remains);
        int points = 0;
        for (bool interrupted = true; interrupted;) {
            prepare(operation);
            const auto end = run(commandOf(operation), {QByteArray::number(points + 1), "kill", {}});
            interrupted = end.calls.size() > points;
            loseUnflushed(end.calls.first(std::min<qsizetype>(points, end.calls.size())), remains);
            const auto aftermath = run(QStringLiteral("aftermath"));
            QVERIFY2(aftermath.well, qPrintable(QStringLiteral("point %1, %2: %3")
                                                    .arg(points + 1)
                                                    .arg(end.calls.value(points), aftermath.complaint)));
            points += interrupted;
        }
        QVERIFY(points > 0);
        qInfo("%s: %d points", QTest::currentDataTag(), points);
    }
};

QTEST_GUILESS_MAIN(InterruptedAnywhereTest)
#include "tst_InterruptedAnywhere.moc"
