// SPDX-License-Identifier: MIT
#include "platform/PropertyList.h"
#include "support/Sandbox.h"

#include <plist/plist.h>

#include <QtTest>

#include <cstdlib>

namespace fs = std::filesystem;
using namespace cartloom;

namespace
{

using Text = std::optional<QString>;

const char* const key = "CFBundleExecutable";

QByteArray xml(const QByteArray& dictionary)
{
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
           "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
           "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
           "<plist version=\"1.0\">" +
           dictionary + "</plist>\n";
}

QByteArray entry(const QByteArray& value)
{
    return "<dict><key>CFBundleExecutable</key>" + value + "</dict>";
}

QByteArray binary(const char* text)
{
    const plist_t root = plist_new_dict();
    plist_dict_set_item(root, "Other", plist_new_uint(7));
    plist_dict_set_item(root, key, plist_new_string(text));
    char* bytes = nullptr;
    uint32_t length = 0;
    plist_to_bin(root, &bytes, &length);
    const QByteArray result(bytes, static_cast<qsizetype>(length));
    // The library has a function for it, of another name in each of its versions.
    std::free(bytes);
    plist_free(root);
    return result;
}

/// What is found in a property list with these bytes.
Text textIn(const QByteArray& bytes)
{
    const Sandbox sandbox;
    writeFile(sandbox.scratch() / "Info.plist", bytes);
    return PropertyList::text(sandbox.scratch() / "Info.plist", key);
}

} // namespace

class PropertyListTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aTextIsFound_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("text");
        const auto ares = QStringLiteral("ares");
        QTest::newRow("XML") << xml(entry("<string>ares</string>")) << ares;
        QTest::newRow("XML among others")
            << xml("<dict><key>A</key><array><true/></array><key>CFBundleExecutable</key>"
                   "<string>ares</string><key>B</key><integer>5</integer></dict>")
            << ares;
        QTest::newRow("XML with entities")
            << xml(entry("<string>a&amp;b &lt;c&gt;</string>")) << QStringLiteral("a&b <c>");
        QTest::newRow("XML with other letters")
            << xml(entry("<string>ä日</string>")) << QStringLiteral("ä日");
        QTest::newRow("XML with a path") << xml(entry("<string>../x</string>")) << QStringLiteral("../x");
        QTest::newRow("binary") << binary("ares") << ares;
        QTest::newRow("binary with other letters") << binary("ä日") << QStringLiteral("ä日");
    }

    void aTextIsFound()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(QString, text);
        QCOMPARE(textIn(bytes), Text(text));
    }

    void thereIsNone_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        const QByteArray whole = xml(entry("<string>ares</string>"));
        QTest::newRow("empty file") << QByteArray();
        QTest::newRow("words") << QByteArray("not a property list");
        QTest::newRow("zeros") << QByteArray(1000, '\0');
        QTest::newRow("cut off in the text") << whole.left(whole.indexOf("ares") + 2);
        QTest::newRow("binary cut off") << binary("ares").chopped(10);
        QTest::newRow("binary head alone") << QByteArray("bplist00");
        QTest::newRow("a list at the top") << xml("<array><string>ares</string></array>");
        QTest::newRow("a text at the top") << xml("<string>ares</string>");
        QTest::newRow("no such key") << xml("<dict><key>Other</key><string>x</string></dict>");
        QTest::newRow("key in another case")
            << xml("<dict><key>cfbundleexecutable</key><string>x</string></dict>");
        QTest::newRow("key one level down")
            << xml("<dict><key>A</key>" + entry("<string>x</string>") + "</dict>");
        for (const char* const value :
             {"<integer>5</integer>", "<true/>", "<array/>", "<dict/>", "<data>YQ==</data>"})
            QTest::newRow(value) << xml(entry(value));
        QTest::newRow("longer than a mebibyte") << whole + QByteArray(1024 * 1024, ' ');
        QTest::newRow("nested deeply") << xml(QByteArray("<array>").repeated(100'000));
    }

    void thereIsNone()
    {
        QFETCH(QByteArray, bytes);
        QCOMPARE(textIn(bytes), Text());
    }

    void entitiesAreNeitherExpandedNorReadFromFiles()
    {
        const QByteArray bomb = "<?xml version=\"1.0\"?><!DOCTYPE plist [<!ENTITY a \"xxxxxxxxxx\"><!ENTITY "
                                "b \"&a;&a;&a;&a;&a;\">"
                                "<!ENTITY f SYSTEM \"file:///etc/hostname\">]><plist>" +
                                entry("<string>&b;&f;</string>") + "</plist>";
        const Text text = textIn(bomb);
        QVERIFY(!text || text->size() <= 6);
    }

    void whatCannotBeReadHasNone()
    {
        const Sandbox sandbox;
        QCOMPARE(PropertyList::text(sandbox.scratch() / "nothing", key), Text());
        QCOMPARE(PropertyList::text(sandbox.scratch(), key), Text());
        QCOMPARE(PropertyList::text("/dev/zero", key), Text());
    }
};

QTEST_GUILESS_MAIN(PropertyListTest)
#include "tst_PropertyList.moc"
