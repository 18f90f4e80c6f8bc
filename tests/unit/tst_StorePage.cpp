// SPDX-License-Identifier: MIT
#include "game/GameDownloader.h"

#include <QtTest>

using namespace cartloom;

namespace
{

using Text = std::optional<QString>;

/// A page written with single quotes.
QString html(const char* text)
{
    return QString::fromUtf8(text).replace(u'\'', u'"');
}

QString upload(const char* name, const char* id)
{
    return QStringLiteral("<div><b>%1</b><a data-upload_id=\"%2\">Get</a></div>\n")
        .arg(QLatin1String(name), QLatin1String(id));
}

} // namespace

Q_DECLARE_METATYPE(Text)

class StorePageTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void tokenIsFoundInEitherOrder_data()
    {
        QTest::addColumn<QString>("page");
        QTest::addColumn<Text>("token");
        const auto row = [](const char* name, const char* page, const char* token) {
            QTest::newRow(name) << html(page) << (token ? Text(QString::fromUtf8(token)) : Text());
        };
        row("name first", "<input type='hidden' name='csrf_token' value='abc'>", "abc");
        row("value first", "<input value='abc' name='csrf_token' type='hidden'>", "abc");
        row("upper case", "<INPUT NAME='CSRF_TOKEN' VALUE='AbC'>", "AbC");
        row("upper case, value first", "<INPUT VALUE='AbC' NAME='CSRF_TOKEN'>", "AbC");
        row("line feeds and tabs between", "name='csrf_token'\n\t  value='abc'", "abc");
        row("not unescaped", "name='csrf_token' value='a&amp;b+/='", "a&amp;b+/=");
        row("other letters", "name='csrf_token' value='é~日本'", "é~日本");
        row("over lines", "name='csrf_token' value='a\nb'", "a\nb");
        row("the first of two", "name='csrf_token' value='one' name='csrf_token' value='two'", "one");
        row("the first pattern wins over an earlier second",
            "value='second' name='csrf_token' > name='csrf_token' value='first'", "first");
        row("part of a longer name", "data-name='csrf_token' value='abc'", "abc");
        row("empty value", "name='csrf_token' value=''", nullptr);
        row("empty, then a good one", "name='csrf_token' value='' name='csrf_token' value='abc'", "abc");
        row("nothing between", "name='csrf_token'value='abc'", nullptr);
        row("something between", "name='csrf_token' id='x' value='abc'", nullptr);
        row("no quotes", "name=csrf_token value=abc", nullptr);
        row("another name", "name='csrf_token2' value='abc'", nullptr);
        row("cut off", "name='csrf_token' value='abc", nullptr);
        row("empty page", "", nullptr);
    }

    void tokenIsFoundInEitherOrder()
    {
        QFETCH(QString, page);
        QFETCH(Text, token);
        QCOMPARE(GameDownloader::parseCSRF(page), token);
    }

    void uploadIsTheOneNamedBeforeItsId_data()
    {
        QTest::addColumn<QString>("page");
        QTest::addColumn<Text>("id");
        const auto none = Text();
        QTest::newRow("second of two")
            << upload("Manual.pdf", "11") + upload("Quillet64.z64", "22") << Text(QStringLiteral("22"));
        QTest::newRow("first of two")
            << upload("Quillet64.z64", "22") + upload("Manual.pdf", "11") << Text(QStringLiteral("22"));
        QTest::newRow("any case") << upload("Manual.pdf", "11") + upload("QUILLET64.Z64", "22")
                                  << Text(QStringLiteral("22"));
        QTest::newRow("first of two so named")
            << upload("Quillet64.z64", "1") + upload("Quillet64.z64", "2") << Text(QStringLiteral("1"));
        QTest::newRow("part of a longer name")
            << upload("Manual.pdf", "11") + upload("old-Quillet64.z64.zip", "22")
            << Text(QStringLiteral("22"));
        QTest::newRow("single of another name") << upload("Game.n64", "33") << Text(QStringLiteral("33"));
        QTest::newRow("two of other names") << upload("One.n64", "1") + upload("Two.n64", "2") << none;
        QTest::newRow("named after the last id")
            << upload("One.n64", "1") + upload("Two.n64", "2") + QStringLiteral("Quillet64.z64") << none;
        QTest::newRow("single, named after its id")
            << upload("One.n64", "1") + QStringLiteral("Quillet64.z64") << Text(QStringLiteral("1"));
        QTest::newRow("named in the title of the page")
            << QStringLiteral("Quillet64.z64 for everyone ") + upload("One.n64", "1") +
                   upload("Quillet64.z64", "2")
            << Text(QStringLiteral("1"));
        QTest::newRow("attribute in upper case")
            << QStringLiteral("Quillet64.z64 DATA-UPLOAD_ID=\"5\"") << none;
        QTest::newRow("id that is no number")
            << QStringLiteral("Quillet64.z64 data-upload_id=\"5a\"") << none;
        QTest::newRow("id without digits") << QStringLiteral("Quillet64.z64 data-upload_id=\"\"") << none;
        QTest::newRow("long id") << upload("Quillet64.z64", "00123456789012345678901234567890")
                                 << Text(QStringLiteral("00123456789012345678901234567890"));
        QTest::newRow("empty page") << QString() << none;
    }

    void uploadIsTheOneNamedBeforeItsId()
    {
        QFETCH(QString, page);
        QFETCH(Text, id);
        QCOMPARE(GameDownloader::parseUploadID(page), id);
    }

    void matchAfterMillionsOfBytesIsFound()
    {
        const QString padding(2'000'000, u' ');
        const QString page = padding + QStringLiteral("value=\"x\"") + padding +
                             QStringLiteral("name=\"csrf_token\"") + upload("Quillet64.z64", "7");
        QCOMPARE(GameDownloader::parseCSRF(page), Text(QStringLiteral("x")));
        QCOMPARE(GameDownloader::parseUploadID(page), Text(QStringLiteral("7")));
    }
};

QTEST_GUILESS_MAIN(StorePageTest)
#include "tst_StorePage.moc"
