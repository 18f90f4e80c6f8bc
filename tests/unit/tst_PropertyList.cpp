// SPDX-License-Identifier: MIT
#include "platform/PropertyList.h"
#include "support/BinaryList.h"
#include "support/Sandbox.h"

#include <QtTest>

using namespace cartloom;

namespace
{

constexpr auto key = "CFBundleExecutable";
constexpr qsizetype maxFileBytes = 1024 * 1024;

QByteArray xml(const QByteArray& contents)
{
    return "<plist><dict><key>CFBundleExecutable</key><string>named</string>" + contents + "</dict></plist>";
}

/// A list of exactly the maximum length.
QByteArray longest()
{
    const auto list = [](qsizetype length) {
        return xml("<key>A</key><string>" + QByteArray(length, 'x') + "</string>");
    };
    return list(maxFileBytes - list(0).size());
}

QByteArray binary(const QByteArray& value)
{
    return BinaryList::of({BinaryList::dictionary({1, 2}), BinaryList::text(key), value});
}

} // namespace

class PropertyListTest : public QObject
{
    Q_OBJECT

    const Sandbox m_sandbox;

    [[nodiscard]] std::optional<QString> textIn(const QByteArray& list) const
    {
        const auto file = m_sandbox.scratch() / "Info.plist";
        writeFile(file, list);
        return PropertyList::text(file, key);
    }

private Q_SLOTS:
    void textIsRead_data()
    {
        QTest::addColumn<QByteArray>("list");
        QTest::addColumn<QString>("text");
        const auto named = QStringLiteral("named");
        QTest::newRow("XML") << xml({}) << named;
        QTest::newRow("XML, with a document type")
            << "<?xml version='1.0' encoding='UTF-8'?><!DOCTYPE plist PUBLIC 'a' 'http://b/c'>" + xml({})
            << named;
        QTest::newRow("XML, comment") << xml("<!-- <string>other</string> -->") << named;
        QTest::newRow("XML, of 1 MiB") << longest() << named;
        QTest::newRow("XML, key after a nested one")
            << QByteArray(
                   "<plist><dict><key>A</key><dict><key>CFBundleExecutable</key><string>other</string></dict>"
                   "<key>CFBundleExecutable</key><string>named</string></dict></plist>")
            << named;
        // As Python's plistlib writes {"Other": 7, "CFBundleExecutable": "other"}.
        QTest::newRow("binary, of another program")
            << QByteArray("bplist00\xd2\x01\x02\x03\x04"
                          "UOther_\x10\x12"
                          "CFBundleExecutable\x10\x07Uother\x08\r\x13(*"
                          "\0\0\0\0\0\0\x01\x01\0\0\0\0\0\0\0\x05\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0"
                          "0",
                          85)
            << QStringLiteral("other");
        QTest::newRow("binary") << binary(BinaryList::text("named")) << named;
        QTest::newRow("binary, UTF-16")
            << binary(BinaryList::utf16(QStringLiteral("ä日"))) << QStringLiteral("ä日");
        QTest::newRow("binary, key in UTF-16")
            << BinaryList::of({BinaryList::dictionary({1, 2}), BinaryList::utf16(QLatin1String(key)),
                               BinaryList::text("named")})
            << named;
        QTest::newRow("binary, top object last")
            << BinaryList::of(
                   {BinaryList::text(key), BinaryList::text("named"), BinaryList::dictionary({0, 1})},
                   {.top = 2})
            << named;
        QTest::newRow("binary, beside a bomb") << BinaryList::bomb(40, "named") << named;
        QTest::newRow("binary, of 1 MiB")
            << BinaryList::of({BinaryList::dictionary({1, 2, 3, 4}), BinaryList::text("A"),
                               BinaryList::text(key), BinaryList::text(QByteArray(maxFileBytes - 200, 'x')),
                               BinaryList::text("named")})
            << named;
    }

    void textIsRead()
    {
        QFETCH(const QByteArray, list);
        QTEST(textIn(list).value_or(QStringLiteral("none")), "text");
    }

    void unreadableListHasNoText_data()
    {
        QTest::addColumn<QByteArray>("list");
        const auto value = BinaryList::text("named");
        QTest::newRow("XML, value of another kind under the key")
            << QByteArray("<plist><dict><key>CFBundleExecutable</key><dict><key>CFBundleExecutable</key>"
                          "<string>named</string></dict></dict></plist>");
        QTest::newRow("XML, not closed") << xml({}).chopped(20);
        QTest::newRow("XML, declared entity") << "<!DOCTYPE plist [<!ENTITY a 'b'>]>" + xml({});
        QTest::newRow("XML, declared attribute")
            << "<!DOCTYPE plist [<!ATTLIST dict a CDATA 'b'>]>" + xml({});
        QTest::newRow("XML, 1 byte over 1 MiB") << longest() + ' ';
        QTest::newRow("binary, mark only") << QByteArray("bplist00");
        QTest::newRow("binary, cut off") << binary(value).chopped(1);
        QTest::newRow("binary, value of another kind") << binary(BinaryList::array({1}));
        QTest::newRow("binary, text longer than the file") << binary(BinaryList::marker(0x5, 1'000'000));
        QTest::newRow("binary, UTF-16 longer than the file") << binary(BinaryList::marker(0x6, 30));
        QTest::newRow("binary, array at the top") << BinaryList::of({BinaryList::array({0})});
        QTest::newRow("binary, reference to no object") << BinaryList::of({BinaryList::dictionary({7, 7})});
        QTest::newRow("binary, more keys than bytes") << BinaryList::of({BinaryList::marker(0xd, 9'999)});
        for (const quint64 width : {0U, 9U, 255U}) {
            const QByteArrayList objects{BinaryList::dictionary({1, 2}), BinaryList::text(key), value};
            QTest::addRow("binary, offsets of %llu bytes", width)
                << BinaryList::of(objects, {.offsetBytes = width});
            QTest::addRow("binary, references of %llu bytes", width)
                << BinaryList::of(objects, {.referenceBytes = width});
        }
        QTest::newRow("binary, no such top object") << BinaryList::of({value}, {.top = 1});
        QTest::newRow("binary, all ones in the trailer") << "bplist00" + QByteArray(32, '\xff');
    }

    void unreadableListHasNoText()
    {
        QFETCH(const QByteArray, list);
        QCOMPARE(textIn(list), std::nullopt);
    }
};

QTEST_GUILESS_MAIN(PropertyListTest)
#include "tst_PropertyList.moc"
