// SPDX-License-Identifier: MIT
#include "emulator/ReleaseReply.h"
#include "storage/Paths.h"
#include "support/Checked.h"
#include "support/Failures.h"
#include "support/FaultTest.h"
#include "support/ReleaseJson.h"
#include "support/TestCertificates.h"
#include "support/TestOrigins.h"

#include <QtTest>

#include <sys/stat.h>

using namespace cartloom;

namespace
{

const Wait& lookup = waits[0];
const Wait& archive = waits[1];
const Wait& form = waits[3];
const Wait& game = waits[4];

constexpr qsizetype maxTagBytes = 64 * 1024;
const auto unreadable = QStringLiteral("Could not read the Ares release list.");

} // namespace

/// Replies of the release service and of the store's form.
class JsonTest : public FaultTest
{
    Q_OBJECT

    /// A release with this download and these members before it.
    [[nodiscard]] static QByteArray releaseOf(const QByteArray& size, const QByteArray& address,
                                              const QByteArray& before = {})
    {
        return json("{" + before + "'tag_name':'v147','assets':[" + asset("ares-macos.zip", size, address) +
                    "]}");
    }

    [[nodiscard]] QByteArray goodSize() const
    {
        return QByteArray::number(m_sites->body(ScriptedSites::archive).size());
    }
    [[nodiscard]] QByteArray goodAddress() const { return m_sites->url(ScriptedSites::archive).toEncoded(); }

    /// Makes a reply name this link for the file of the wait.
    void linkTo(const Wait& wait, const QByteArray& link)
    {
        if (wait.isForTheGame())
            m_sites->answers[ScriptedSites::form] = httpAnswer(200, json("{'url':'" + link + "'}"));
        else
            m_sites->answers[ScriptedSites::latest] = httpAnswer(200, releaseOf(goodSize(), link));
    }

    static void addRowForEachLink(const char* fault)
    {
        QTest::addColumn<Wait>("wait");
        for (const auto& wait : {archive, game})
            QTest::addRow("%s: %s", fault, wait.name) << wait;
    }

private Q_SLOTS:
    void initTestCase() { TestCertificates::trustAuthority(); }

    void unreadableReleaseListFailsTheStep_data()
    {
        QTest::addColumn<QByteArray>("body");
        QTest::newRow("74 deep") << QByteArray(100'000, '[');
        QTest::newRow("74 huge text") << '"' + QByteArray(5'000'000, 'x') + '"';
        QTest::newRow("74 tag is a number") << json("{'tag_name':147,'assets':[]}");
        QTest::newRow("74 size 1.5") << release(asset("ares-macos.zip", "1.5"));
    }

    void unreadableReleaseListFailsTheStep()
    {
        QFETCH(const QByteArray, body);
        arrangeFor(lookup);
        m_sites->answers[ScriptedSites::latest] = httpAnswer(200, body);
        const auto error = failureOf<AppError>([&] { return AresInstaller::releaseIn(body); });
        QVERIFY(error);
        pressFailsWith(lookup, {unreadable, error->details});
    }

    void linkToAnotherSchemeIsRefused_data()
    {
        QTest::addColumn<Wait>("wait");
        QTest::addColumn<QByteArray>("link");
        for (const auto& wait : {archive, game}) {
            for (const char* const link : {"file:///etc/hostname", "FILE:/etc/hostname", "file:///FIFO",
                                           "ftp://127.0.0.1/f", "data:text/plain,rom", "/files/game"})
                QTest::addRow("74 link %s: %s", link, wait.name) << wait << QByteArray(link);
        }
    }

    void linkToAnotherSchemeIsRefused()
    {
        QFETCH(const Wait, wait);
        QFETCH(QByteArray, link);
        // Opening it would block.
        const auto fifo = outside() / "fifo";
        QCOMPARE(::mkfifo(fifo.c_str(), 0600), 0);
        link.replace("/FIFO", QByteArray::fromStdString(fifo.native()));
        arrangeFor(wait);
        linkTo(wait, link);
        pressFailsWith(wait, networkFailure(QLatin1String(wait.step), -1002));
    }

    void plainHttpLinkOfASecureSiteIsRefused_data() { addRowForEachLink("74 http link"); }

    void plainHttpLinkOfASecureSiteIsRefused()
    {
        QFETCH(const Wait, wait);
        arrangeFor(wait);
        const RawServer site(
            [this](RawConnection& connection, const RawRequest& request) {
                connection.send(m_sites->answers.at(request.path));
                connection.close();
            },
            TestCertificates::server(QStringLiteral("good")));
        TestOrigins::setReleaseApi(site.url(QString()));
        TestOrigins::setStore(site.url(QString()));
        CHECKED(press());
        CHECKED(shows(networkFailure(QLatin1String(wait.step), -1022), wait.isForTheGame()));
        CHECKED(nothingChanged());
        QCOMPARE(m_sites->asked(), QStringList());
        nextPressPlays();
    }

    void linkIsRequestedByteForByte_data() { addRowForEachLink("74 escapes in the link"); }

    void linkIsRequestedByteForByte()
    {
        QFETCH(const Wait, wait);
        const QByteArray path = "/f/%7Eme/%41?x=%7e%2D%2f";
        arrangeFor(wait);
        m_sites->answers[path] = m_sites->answers[wait.path];
        linkTo(wait, m_sites->origin().toEncoded() + path);
        CHECKED(pressPlays());
        QVERIFY(m_sites->asked().contains(QString::fromLatin1(path)));
    }

    void sizeThatDiffersFromTheDownloadIsRefused_data()
    {
        QTest::addColumn<QByteArray>("size");
        QTest::addColumn<QByteArray>("got");
        // A download ends when it has one byte too many.
        QTest::addRow("74 size 1") << QByteArray("1") << QByteArray("2");
        for (const char* const size : {"9007199254740992", "9007199254740993", "9223372036854775807"})
            QTest::addRow("74 size %s", size) << QByteArray(size) << QByteArray();
    }

    void sizeThatDiffersFromTheDownloadIsRefused()
    {
        QFETCH(const QByteArray, size);
        QFETCH(QByteArray, got);
        arrangeFor(lookup);
        if (got.isEmpty())
            got = goodSize();
        m_sites->answers[ScriptedSites::latest] = httpAnswer(200, releaseOf(size, goodAddress()));
        pressFailsWith(
            lookup,
            {QStringLiteral("The Ares download is damaged (got %1 bytes, expected %2). Please try again.")
                 .arg(QString::fromLatin1(got), QString::fromLatin1(size)),
             {}});
    }

    void oddReleaseIsUnderstood_data()
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

    void oddReleaseIsUnderstood()
    {
        QFETCH(const QByteArray, size);
        QFETCH(const QByteArray, before);
        arrangeFor(lookup);
        m_sites->answers[ScriptedSites::latest] =
            httpAnswer(200, releaseOf(size.isEmpty() ? goodSize() : size, goodAddress(), before));
        CHECKED(pressPlays());
        QCOMPARE(m_model->aresVersion(), QStringLiteral("v147"));
    }

    void replyWithoutALinkIsQuoted_data()
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

    void replyWithoutALinkIsQuoted()
    {
        QFETCH(const QByteArray, body);
        arrangeFor(form);
        m_sites->answers[ScriptedSites::form] = httpAnswer(200, body);
        pressFailsWith(form, {QStringLiteral("Gamestall did not return a download link."),
                              QString::fromUtf8(body.left(500))});
    }

    void oddTagIsShownAndStored_data()
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

    void oddTagIsShownAndStored()
    {
        QFETCH(const QByteArray, tag);
        const auto zip = m_sites->body(ScriptedSites::archive);
        saveGame();
        restart();
        m_sites->publish(zip, tag);
        CHECKED(pressPlays());
        const QString text = QString::fromUtf8(tag).trimmed().left(maxTagBytes);
        QCOMPARE(m_model->aresVersion().has_value(), !tag.isEmpty());
        QCOMPARE(m_model->aresVersion().value_or(QString()), text);
        QCOMPARE(readFile(Paths::aresVersion()), tag);

        m_sites->publish(zip, tag + "!");
        CHECKED(update());
        QCOMPARE(m_model->notice(), QStringLiteral("Ares %1 is installed. The old copy is kept until the new "
                                                   "one has started once.")
                                        .arg(QString::fromUtf8(tag + '!')));
        QCOMPARE(readFile(Paths::aresVersion()), tag + '!');
        CHECKED(isAtRestWithoutTraces());
        m_model->play();
        QVERIFY(goesThrough(AppModel::Stage::playing));
    }

    void tagIsNamedIfThereIsNoDownload_data() { addOnlyRow("75 markup in a refusal"); }

    void tagIsNamedIfThereIsNoDownload()
    {
        arrangeFor(lookup);
        m_sites->answers[ScriptedSites::latest] =
            httpAnswer(200, json("{'tag_name':'<b>\\n%1','assets':[]}"));
        pressFailsWith(lookup,
                       {QStringLiteral("The latest Ares release (<b>\n%1) has no macOS download."), {}});
    }
};

QTEST_GUILESS_MAIN(JsonTest)
#include "tst_Json.moc"
