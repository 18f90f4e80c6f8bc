// SPDX-License-Identifier: MIT
#include "game/AppError.h"
#include "platform/Errors.h"
#include "support/Failures.h"
#include "support/ReleaseJson.h"

#include <QtTest>

using namespace cartloom;

class ReleaseDecodingTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void whatIsNoReleaseCannotBeRead_data()
    {
        QTest::addColumn<QByteArray>("body");
        QTest::newRow("nothing") << QByteArray();
        QTest::newRow("words") << QByteArray("not JSON");
        QTest::newRow("a page") << QByteArray("<!doctype html><title>Log in to the network</title>");
        QTest::newRow("cut off") << release(asset("ares-macos.zip")).chopped(5);
        QTest::newRow("something after it") << release(asset("ares-macos.zip")) + "}";
        QTest::newRow("not UTF-8") << release(asset("ares-macos-\xff.zip"));
        QTest::newRow("a list") << QByteArray("[]");
        QTest::newRow("a list of releases") << "[" + release(asset("ares-macos.zip")) + "]";
        QTest::newRow("a text") << QByteArray("\"release\"");
        QTest::newRow("null") << QByteArray("null");
        QTest::newRow("empty object") << QByteArray("{}");
        QTest::newRow("no tag") << json("{'assets':[]}");
        QTest::newRow("tag is a number") << json("{'tag_name':148,'assets':[]}");
        QTest::newRow("tag is null") << json("{'tag_name':null,'assets':[]}");
        QTest::newRow("tag in upper case") << json("{'TAG_NAME':'v1','assets':[]}");
        QTest::newRow("no assets") << json("{'tag_name':'v1'}");
        QTest::newRow("assets are null") << json("{'tag_name':'v1','assets':null}");
        QTest::newRow("assets are an object") << json("{'tag_name':'v1','assets':{}}");
        QTest::newRow("an asset is a text") << release("\"ares-macos.zip\"");
        QTest::newRow("an asset is null") << release("null");
        QTest::newRow("an asset without a name")
            << release("{'size':1,'browser_download_url':'https://x.example'}");
        QTest::newRow("an asset without a size")
            << release("{'name':'ares-macos.zip','browser_download_url':'https://x.example'}");
        QTest::newRow("an asset without an address") << release("{'name':'ares-macos.zip','size':1}");
        QTest::newRow("another asset is broken") << release(asset("ares-macos.zip") + ",{}");
        QTest::newRow("address is a number")
            << release("{'name':'ares-macos.zip','size':1,'browser_download_url':1}");
        for (const char* const size :
             {"1.5", "'1'", "null", "true", "[]", "{}", "1e400", "9223372036854775808",
              "-9223372036854775809", "-9223372036854776832", "-9223372036854777856", "1e30"})
            QTest::addRow("size is %s", size) << release(asset("ares-macos.zip", size));
        QTest::newRow("nested deeply") << QByteArray(100'000, '[');
        QTest::newRow("nested deeply in an asset")
            << release(QByteArray(100'000, '[') + QByteArray(100'000, ']'));
    }

    void whatIsNoReleaseCannotBeRead()
    {
        QFETCH(QByteArray, body);
        const auto error = failureOf<AppError>([&] { return lookUp(body); });
        QVERIFY(error);
        QCOMPARE(error->message, unreadable);
        QVERIFY(!error->details.isEmpty());
        QVERIFY(error->details.size() < 200);
    }

    void wholeNumbersAreSizes_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<qint64>("size");
        const auto row = [](const char* text, qint64 size) {
            QTest::newRow(text) << QByteArray(text) << size;
        };
        row("0", 0);
        row("-5", -5);
        row("9007199254740991", 9007199254740991);
        row("9007199254740992", 9007199254740992);
        row("9007199254740993", 9007199254740993);
        row("9223372036854775807", std::numeric_limits<qint64>::max());
        row("-9223372036854775808", std::numeric_limits<qint64>::min());
        row("1e3", 1000);
        row("80123456.0", 80'123'456);
        row("8012345.6e1", 80'123'456);
    }

    void wholeNumbersAreSizes()
    {
        QFETCH(QByteArray, text);
        QFETCH(qint64, size);
        QCOMPARE(lookUp(release(asset("ares-macos.zip", text))).size, size);
    }

    void theLastOfTwoEqualKeysCounts()
    {
        const QByteArray body =
            json("{'tag_name':'v1','tag_name':'v2','assets':[],'assets':[") + asset("ares-macos.zip") + "]}";
        QCOMPARE(lookUp(body).tagName, QStringLiteral("v2"));
    }

    void otherKeysAreIgnored()
    {
        const QByteArray body =
            json("{'id':1,'draft':{'x':[null]},'tag_name':'v1','assets':[") + asset("ares-macos.zip") + "]}";
        QCOMPARE(lookUp(body).tagName, QStringLiteral("v1"));
    }
};

QTEST_GUILESS_MAIN(ReleaseDecodingTest)
#include "tst_ReleaseDecoding.moc"
