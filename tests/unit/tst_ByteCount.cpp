// SPDX-License-Identifier: MIT
#include "core/ByteCount.h"

#include <QLocale>
#include <QtTest>

using namespace cartloom;

class ByteCountTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void countsAreRounded_data()
    {
        QTest::addColumn<qint64>("bytes");
        QTest::addColumn<QString>("text");
        const auto row = [](qint64 bytes, const char* text) {
            QTest::addRow("%lld", static_cast<long long>(bytes)) << bytes << QString::fromLatin1(text);
        };
        row(0, "Zero KB");
        row(1, "1 byte");
        row(2, "2 bytes");
        row(999, "999 bytes");
        row(1'000, "1 KB");
        row(1'499, "1 KB");
        row(1'500, "2 KB");
        row(999'499, "999 KB");
        row(999'500, "1 MB");
        row(999'950, "1 MB");
        row(1'000'000, "1 MB");
        row(1'049'999, "1 MB");
        row(1'050'000, "1.1 MB");
        row(12'300'000, "12.3 MB");
        row(16'000'000, "16 MB");
        row(80'123'456, "80.1 MB");
        row(99'960'000, "100 MB");
        row(999'949'999, "999.9 MB");
        row(999'950'000, "1 GB");
        row(1'250'000'000, "1.25 GB");
        row(1'204'999'999, "1.2 GB");
        row(1'005'000'000, "1.01 GB");
        row(10'000'000'000, "10 GB");
        row(999'994'999'999, "999.99 GB");
        row(999'995'000'000, "1 TB");
        row(1'500'000'000'000'000, "1.5 PB");
        row(std::numeric_limits<qint64>::max(), "9.22 EB");
        row(-1, "-1 bytes");
    }

    void countsAreRounded()
    {
        QFETCH(qint64, bytes);
        QFETCH(QString, text);
        QCOMPARE(ByteCount::text(bytes), text);
    }

    void textIsIndependentOfTheLocale()
    {
        QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
        QCOMPARE(ByteCount::text(12'300'000), QStringLiteral("12.3 MB"));
        QLocale::setDefault(QLocale::c());
    }
};

QTEST_GUILESS_MAIN(ByteCountTest)
#include "tst_ByteCount.moc"
