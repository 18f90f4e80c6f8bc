// SPDX-License-Identifier: MIT
#include "ui/ScrollPosition.h"

#include <QtTest>

using namespace cartloom;

/// A content of 1000 in a view of 300, with a margin of 20.
class ScrollPositionTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void anAreaIsShownWithItsMarginByTheShortestWay_data()
    {
        QTest::addColumn<qreal>("top");
        QTest::addColumn<qreal>("height");
        QTest::addColumn<qreal>("present");
        QTest::addColumn<qreal>("expected");
        const auto row = [](const char* name, qreal top, qreal height, qreal present, qreal expected) {
            QTest::newRow(name) << top << height << present << expected;
        };
        row("in view", 150, 50, 100, 100);
        row("just in view above", 120, 50, 100, 100);
        row("just in view below", 330, 50, 100, 100);
        row("its margin is cut above", 119, 50, 100, 99);
        row("its margin is cut below", 331, 50, 100, 101);
        row("far above", 200, 50, 600, 180);
        row("far below", 800, 50, 0, 570);
        row("at the very beginning", 0, 50, 500, 0);
        row("too near the beginning for a margin", 10, 50, 500, 0);
        row("at the very end", 950, 50, 0, 700);
        row("too near the end for a margin", 940, 50, 0, 700);
        row("taller than the view", 200, 400, 0, 320);
        row("without a height", 800, 0, 33, 33);
    }

    void anAreaIsShownWithItsMarginByTheShortestWay()
    {
        QFETCH(qreal, top);
        QFETCH(qreal, height);
        QFETCH(qreal, present);
        QFETCH(qreal, expected);
        QCOMPARE(ScrollPosition::showing({0, top, 100, height}, 20, present, 300, 1000), expected);
    }

    void aContentThatFitsStaysWhereItIs()
    {
        QCOMPARE(ScrollPosition::showing({0, 250, 100, 40}, 20, 0, 300, 300), 0.0);
        QCOMPARE(ScrollPosition::showing({0, 150, 100, 40}, 20, 0, 300, 200), 0.0);
    }
};

QTEST_APPLESS_MAIN(ScrollPositionTest)
#include "tst_ScrollPosition.moc"
