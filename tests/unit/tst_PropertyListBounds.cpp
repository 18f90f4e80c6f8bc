// SPDX-License-Identifier: MIT
#include "platform/PropertyList.h"
#include "support/BinaryList.h"
#include "support/ResourceUse.h"
#include "support/Sandbox.h"

#include <QtTest>

using namespace cartloom;
using namespace std::chrono_literals;

namespace
{

/// A list of 1 MiB, with as many repetitions as fit.
QByteArray filled(const QByteArray& before, const QByteArray& repeated, const QByteArray& after = {})
{
    constexpr qsizetype maxFileBytes = 1024 * 1024;
    const auto list = [&](qsizetype count) {
        return "<plist><dict>" + before + repeated.repeated(count) + after + "</dict></plist>";
    };
    return list((maxFileBytes - list(0).size()) / repeated.size());
}

QByteArray attributes(int count, qsizetype length)
{
    QByteArray all;
    for (int i = 0; i < count; ++i)
        all += ' ' + QByteArray(length, 'a') + QByteArray::number(i) + "=''";
    return all;
}

} // namespace

/// Property lists that cost a parser much more than their size. Without the limits each exceeds a bound, or
/// did in the library that was used before.
class PropertyListBoundsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void timeAndMemoryAreBounded_data()
    {
        QTest::addColumn<QByteArray>("list");
        QTest::newRow("77 shared references") << BinaryList::bomb(40, "named");
        QTest::newRow("77 array in itself") << BinaryList::of({BinaryList::array({0, 0})});
        constexpr int keys = 1'000'000;
        QTest::newRow("77 keys that share an object") << BinaryList::of(
            {BinaryList::marker(0xd, keys) + QByteArray(keys, '\1'), BinaryList::text("CFBundleExecutablE")},
            {.referenceBytes = 1});
        QTest::newRow("77 text of 1 MiB") << filled("<key>A</key><string>", "x", "</string>");
        QTest::newRow("77 nested arrays") << filled({}, "<array>");
        QTest::newRow("77 nested short elements") << filled({}, "<a>");
        QTest::newRow("77 many values") << filled({}, "<a/>");
        QTest::newRow("77 references to characters") << filled("<a>", "&amp;", "</a>");
        QTest::newRow("77 references to nothing")
            << "<!DOCTYPE plist SYSTEM 'a'><plist><dict>" + QByteArray("&b;").repeated(300'000);
        QTest::newRow("77 attributes") << filled("<a" + attributes(60'000, 1) + ">", "x", "</a>");
        QTest::newRow("77 long attributes") << filled("<a" + attributes(4'000, 200) + ">", "x", "</a>");
        QTest::newRow("77 parentheses")
            << "<!DOCTYPE plist [<!ELEMENT a " + QByteArray(1'000'000, '(') + "]>";
        // As much as is not refused.
        QTest::newRow("77 9,990 nested elements")
            << "<plist><dict>" + ('<' + QByteArray(100, 'a') + '>').repeated(9'990);
        QTest::newRow("77 9,980 references")
            << filled("<a>" + QByteArray("&amp;").repeated(9'980), "x", "</a>");
        QTest::newRow("77 90 attributes") << filled("<a" + attributes(90, 11'000) + ">", "x", "</a>");
        QTest::newRow("77 comment") << filled("<!--", "- ", "-->");
        QTest::newRow("77 CDATA") << filled("<a><![CDATA[", "]", "]]></a>");
    }

    void timeAndMemoryAreBounded()
    {
        QFETCH(const QByteArray, list);
        const Sandbox sandbox;
        const auto file = sandbox.scratch() / "Info.plist";
        writeFile(file, list);
        // Other programs make a processor slower, none makes it faster.
        constexpr int repeats = 5;
        auto fastest = std::chrono::milliseconds::max();
        for (int i = 0; i < repeats; ++i) {
            const auto use =
                ResourceUse::of([&] { static_cast<void>(PropertyList::text(file, "CFBundleExecutable")); });
            QVERIFY(use.peakBytes <= 16 * 1024 * 1024);
            fastest = std::min(fastest, use.processorTime);
        }
        QVERIFY(fastest <= 50ms);
    }
};

QTEST_GUILESS_MAIN(PropertyListBoundsTest)
#include "tst_PropertyListBounds.moc"
