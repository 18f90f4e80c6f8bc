// SPDX-License-Identifier: MIT
#include "core/Paths.h"
#include "support/FaultTest.h"

#include <QtTest>

using namespace cartloom;

namespace
{

const Wait& lookup = waits[0];
const Wait& form = waits[3];

/// JSON written with single quotes.
QByteArray json(QByteArray text)
{
    return text.replace('\'', '"');
}

/// The most of a tag that is read back.
constexpr qsizetype longestTag = 64 * 1024;

} // namespace

/// What the release service and the store's form answer with.
class FaultsJsonTest : public FaultTest
{
    Q_OBJECT

    /// One release with these fields for its download and its tag.
    [[nodiscard]] QByteArray release(const QByteArray& size, const QByteArray& before = {}) const
    {
        const QByteArray address = m_sites->url(ScriptedSites::archive).toEncoded();
        return json("{" + before + "'tag_name':'v147','assets':[{'name':'ares-macos.zip','size':" + size +
                    ",'browser_download_url':'" + address + "'}]}");
    }

    [[nodiscard]] QByteArray goodSize() const
    {
        return QByteArray::number(m_sites->body(ScriptedSites::archive).size());
    }

    void failsAtTheLookup(const QByteArray& body)
    {
        m_sites->answers[ScriptedSites::latest] = httpAnswer(200, body);
        press();
        const auto details = m_model->errorDetails();
        QVERIFY(!details.isEmpty() && details.size() < 200);
        shows({QStringLiteral("Could not read the Ares release list."), details});
        nothingChanged();
        nextPressPlays();
    }

private Q_SLOTS:
    void aReleaseThatIsNone_data()
    {
        QTest::addColumn<QByteArray>("body");
        QTest::newRow("74 deep") << QByteArray(100'000, '[');
        QTest::newRow("74 deep and closed") << QByteArray(100'000, '[') + QByteArray(100'000, ']');
        QTest::newRow("74 deep objects") << QByteArray("{\"a\":").repeated(100'000);
        QTest::newRow("74 huge text") << '"' + QByteArray(5'000'000, 'x') + '"';
        QTest::newRow("74 a million numbers") << '[' + QByteArray("1,").repeated(1'000'000) + "1]";
        QTest::newRow("74 tag is a number") << json("{'tag_name':147,'assets':[]}");
        QTest::newRow("74 tag is a list") << json("{'tag_name':['v147'],'assets':[]}");
        QTest::newRow("74 tag is null") << json("{'tag_name':null,'assets':[]}");
        QTest::newRow("74 assets are an object") << json("{'tag_name':'v1','assets':{}}");
        QTest::newRow("74 assets hold a text") << json("{'tag_name':'v1','assets':['x']}");
        QTest::newRow("74 duplicate keys, the last of another type")
            << json("{'tag_name':'v1','tag_name':5,'assets':[]}");
        QTest::newRow("74 not UTF-8") << json("{'tag_name':'\xff','assets':[]}");
        QTest::newRow("74 two values") << json("{'tag_name':'v1','assets':[]}{}");
    }

    void aReleaseThatIsNone()
    {
        QFETCH(const QByteArray, body);
        arrangeFor(lookup);
        failsAtTheLookup(body);
    }

    void aSizeThatIsNone_data()
    {
        QTest::addColumn<QByteArray>("size");
        for (const char* const size : {"1.5", "'5'", "null", "true", "[]", "{}", "1e400", "1e30",
                                       "9223372036854775808", "-9223372036854777856"})
            QTest::addRow("74 size %s", size) << QByteArray(size);
    }

    void aSizeThatIsNone()
    {
        QFETCH(const QByteArray, size);
        arrangeFor(lookup);
        failsAtTheLookup(release(size));
    }

    void aSizeThatIsNotTheDownloads_data()
    {
        QTest::addColumn<QByteArray>("size");
        for (const char* const size : {"1", "9007199254740992", "9007199254740993", "9223372036854775807"})
            QTest::addRow("74 size %s", size) << QByteArray(size);
    }

    void aSizeThatIsNotTheDownloads()
    {
        QFETCH(const QByteArray, size);
        arrangeFor(lookup);
        const QString got = QString::fromLatin1(goodSize());
        m_sites->answers[ScriptedSites::latest] = httpAnswer(200, release(size));
        pressFailsWith(
            lookup,
            {QStringLiteral("The Ares download is damaged (got %1 bytes, expected %2). Please try again.")
                 .arg(got, QString::fromLatin1(size)),
             {}});
    }

    void anOddReleaseThatServes_data()
    {
        QTest::addColumn<QByteArray>("size");
        QTest::addColumn<QByteArray>("before");
        const QByteArray good;
        QTest::newRow("74 size 0") << QByteArray("0") << QByteArray();
        QTest::newRow("74 size negative") << QByteArray("-5") << QByteArray();
        QTest::newRow("74 size the least of all") << QByteArray("-9223372036854775808") << QByteArray();
        QTest::newRow("74 duplicate keys") << good << QByteArray("'tag_name':'v1','assets':[],");
        QTest::newRow("74 huge beside it") << good << "'body':'" + QByteArray(5'000'000, 'x') + "',";
        QTest::newRow("74 deep beside it")
            << good << "'body':" + QByteArray(500, '[') + QByteArray(500, ']') + ',';
        QTest::newRow("74 a hundred thousand keys beside it")
            << good << QByteArray("'k':1,").repeated(100'000);
    }

    void anOddReleaseThatServes()
    {
        QFETCH(const QByteArray, size);
        QFETCH(const QByteArray, before);
        arrangeFor(lookup);
        m_sites->answers[ScriptedSites::latest] =
            httpAnswer(200, release(size.isEmpty() ? goodSize() : size, before));
        pressPlays();
        QCOMPARE(m_model->aresVersion(), QStringLiteral("v147"));
    }

    void aFormWithoutALink_data()
    {
        QTest::addColumn<QByteArray>("body");
        QTest::newRow("74 deep form reply") << QByteArray(100'000, '[');
        QTest::newRow("74 huge form reply") << '"' + QByteArray(5'000'000, 'x') + '"';
        QTest::newRow("74 link is a number") << json("{'url':5}");
        QTest::newRow("74 link is null") << json("{'url':null}");
        QTest::newRow("74 link is a list") << json("{'url':['http://127.0.0.1/']}");
        QTest::newRow("74 link is no address") << json("{'url':'https://['}");
        QTest::newRow("74 link of 5 MB that is no address")
            << json("{'url':'http://127.0.0.1/ ") + QByteArray(5'000'000, ' ') + "\"}";
        QTest::newRow("74 duplicate links, the last of another type") << json("{'url':'http://x/','url':7}");
    }

    void aFormWithoutALink()
    {
        QFETCH(const QByteArray, body);
        arrangeFor(form);
        m_sites->answers[ScriptedSites::form] = httpAnswer(200, body);
        pressFailsWith(form, {QStringLiteral("Gamestall did not return a download link."),
                              QString::fromUtf8(body.left(500))});
    }

    void anOddTag_data()
    {
        QTest::addColumn<QByteArray>("tag");
        QTest::newRow("75 line feeds") << QByteArray("v1\nv2\r\nv3");
        QTest::newRow("75 line feed at its end") << QByteArray("v147\n");
        QTest::newRow("75 markup") << QByteArray(
            "<b onclick=\"x\">%1</b><img src=\"file:///etc/passwd\">&amp;");
        QTest::newRow("75 name of a path") << QByteArray("../../../outside");
        QTest::newRow("75 control characters") << QByteArray("v\x01\x1b[31m\x7f");
        QTest::newRow("75 writing direction") << QByteArray("v\u202e741");
        QTest::newRow("75 1 MB") << QByteArray(1'000'000, 'v');
        QTest::newRow("75 empty") << QByteArray();
    }

    void anOddTag()
    {
        QFETCH(const QByteArray, tag);
        const auto zip = m_sites->body(ScriptedSites::archive);
        saveGame();
        restart();
        m_sites->publish(zip, tag);
        pressPlays();
        const QString text = QString::fromUtf8(tag).trimmed().left(longestTag);
        QCOMPARE(m_model->aresVersion(), tag.isEmpty() ? std::nullopt : std::optional(text));
        QCOMPARE(readFile(Paths::aresVersion()), tag);

        m_sites->publish(zip, tag + "!");
        update();
        QCOMPARE(m_model->notice(), QStringLiteral("Ares %1 is installed. The old copy is kept until the new "
                                                   "one has started once.")
                                        .arg(QString::fromUtf8(tag + '!')));
        QCOMPARE(readFile(Paths::aresVersion()), tag + '!');
        isAtRestWithoutTraces();
        m_model->play();
        QVERIFY(goesThrough(AppModel::Stage::playing));
    }

    void aTagOfAReleaseWithoutADownload_data() { addOnlyRow("75 markup in a refusal"); }

    void aTagOfAReleaseWithoutADownload()
    {
        arrangeFor(lookup);
        m_sites->answers[ScriptedSites::latest] =
            httpAnswer(200, json("{'tag_name':'<b>\\n%1','assets':[]}"));
        pressFailsWith(lookup,
                       {QStringLiteral("The latest Ares release (<b>\n%1) has no macOS download."), {}});
    }
};

QTEST_GUILESS_MAIN(FaultsJsonTest)
#include "tst_FaultsJson.moc"
