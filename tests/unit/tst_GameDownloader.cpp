// SPDX-License-Identifier: MIT
#include "errors/AppError.h"
#include "errors/FriendlyError.h"
#include "errors/PlatformError.h"
#include "storage/Paths.h"
#include "support/Failures.h"
#include "support/ScriptedStore.h"

#include <QtTest>

using namespace cartloom;

namespace
{

const auto userAgent = QByteArrayLiteral(
    "Mozilla/5.0 (Macintosh; Intel Mac OS X 10_15_7) AppleWebKit/605.1.15 (KHTML, like Gecko) QuilletPlayer");
const auto gameFile = QStringLiteral("Quillet64.z64");

} // namespace

class GameDownloaderTest : public QObject
{
    Q_OBJECT

    static void onlyTheInstalledGameIsThere()
    {
        QCOMPARE(Sandbox::storage(), QStringList{gameFile});
        QCOMPARE(readFile(Paths::gameFile()), QByteArray("installed"));
    }

    static void failsWith(ScriptedStore& store, const QString& message, const QString& details = {})
    {
        writeFile(Paths::gameFile(), "installed");
        const auto error = failureOf<AppError>([&] { return store.download(); });
        QVERIFY(error);
        QCOMPARE(error->message, message);
        QCOMPARE(error->details, details);
        onlyTheInstalledGameIsThere();
    }

private Q_SLOTS:
    void gameIsFetchedAndInstalled()
    {
        const Sandbox sandbox;
        ScriptedStore store;
        QCOMPARE(store.download(), Paths::gameFile());
        QCOMPARE(Sandbox::storage(), QStringList{gameFile});
        QCOMPARE(readFile(Paths::gameFile()), ScriptedStore::rom());
        QVERIFY(store.progressed > 0);
    }

    void requestsAreThoseOfABrowser()
    {
        const Sandbox sandbox;
        ScriptedStore store;
        static_cast<void>(store.download());
        const auto& requests = store.server.requests();
        QCOMPARE(requests.size(), std::size_t(3));
        for (const auto& request : requests)
            QCOMPARE(request.header("User-Agent"), userAgent);

        QCOMPARE(requests[0].verb, QByteArray("GET"));
        QCOMPARE(requests[0].path, ScriptedStore::pagePath);
        QVERIFY(requests[0].header("Cookie").isNull());

        QCOMPARE(requests[1].verb, QByteArray("POST"));
        QCOMPARE(requests[1].path, ScriptedStore::formPath);
        QCOMPARE(requests[1].header("Content-Type"), QByteArray("application/x-www-form-urlencoded"));
        QCOMPARE(requests[1].header("Referer"), GameDownloader::pageURL().toEncoded());
        QCOMPARE(requests[1].header("Cookie"), QByteArray("session=s1"));
        QCOMPARE(requests[1].body, QByteArray("csrf_token=token"));

        QCOMPARE(requests[2].verb, QByteArray("GET"));
        QCOMPARE(requests[2].path, ScriptedStore::filePath);
        QVERIFY(requests[2].header("Cookie").isNull());
        QVERIFY(requests[2].header("Referer").isNull());
    }

    void tokenIsSentPercentEncoded_data()
    {
        QTest::addColumn<QByteArray>("token");
        QTest::addColumn<QByteArray>("sent");
        QTest::newRow("signs") << QByteArray("a+b/c=d") << QByteArray("a%2Bb%2Fc%3Dd");
        QTest::newRow("unreserved") << QByteArray("AZaz09-._~") << QByteArray("AZaz09-._~");
        QTest::newRow("blank and letters") << QByteArray("d é日") << QByteArray("d%20%C3%A9%E6%97%A5");
        QTest::newRow("others") << QByteArray("!*'();:@&,$?#[]%")
                                << QByteArray("%21%2A%27%28%29%3B%3A%40%26%2C%24%3F%23%5B%5D%25");
        QTest::newRow("beyond the basic plane")
            << QByteArray("\xf0\x9f\x8e\xae") << QByteArray("%F0%9F%8E%AE");
        QTest::newRow("not UTF-8") << QByteArray("a\xff") << QByteArray("a%EF%BF%BD");
    }

    void tokenIsSentPercentEncoded()
    {
        QFETCH(QByteArray, token);
        QFETCH(QByteArray, sent);
        const Sandbox sandbox;
        ScriptedStore store(token);
        store.answers[ScriptedStore::formPath] = httpAnswer(403);
        QVERIFY(failureOf<AppError>([&] { return store.download(); }));
        QCOMPARE(store.server.requests().at(1).body, "csrf_token=" + sent);
    }

    void pageWithoutTheTokenIsRefused()
    {
        const Sandbox sandbox;
        ScriptedStore store("");
        failsWith(store, QStringLiteral("The Gamestall page has changed: the security token was not found."));
    }

    void pageWithoutTheFileIsRefused()
    {
        const Sandbox sandbox;
        ScriptedStore store;
        store.answers[ScriptedStore::pagePath] =
            httpAnswer(200, ScriptedStore::page("token").replace("Quillet64.z64", "Other.z64"));
        failsWith(store,
                  QStringLiteral("The Gamestall page has changed: the file Quillet64.z64 was not found."));
    }

    void pageThatIsNotUtf8IsRead()
    {
        const Sandbox sandbox;
        ScriptedStore store;
        store.answers[ScriptedStore::pagePath] =
            httpAnswer(200, "\xff\xfe\xc3" + ScriptedStore::page("token") + "\xe2\x82");
        QCOMPARE(store.download(), Paths::gameFile());
    }

    void replyWithoutALinkIsQuoted_data()
    {
        QTest::addColumn<QByteArray>("reply");
        QTest::newRow("another key") << QByteArray("{\"URL\":\"https://x.example\"}");
        QTest::newRow("inside another object") << QByteArray("{\"data\":{\"url\":\"https://x.example\"}}");
        QTest::newRow("list") << QByteArray("[\"https://x.example\"]");
        QTest::newRow("not JSON") << QByteArray("<html>Please log in</html>");
        QTest::newRow("no address") << QByteArray("{\"url\":\"https://[\"}");
        QTest::newRow("empty address") << QByteArray("{\"url\":\"\"}");
    }

    void replyWithoutALinkIsQuoted()
    {
        QFETCH(const QByteArray, reply);
        const auto error = failureOf<AppError>([&] { return GameDownloader::linkIn(reply); });
        QVERIFY(error);
        QCOMPARE(error->message, QStringLiteral("Gamestall did not return a download link."));
        QCOMPARE(error->details, QString::fromUtf8(reply));
    }

    void replyIsQuotedUpTo500Bytes()
    {
        const auto error =
            failureOf<AppError>([] { return GameDownloader::linkIn(QByteArray(499, 'x') + "é and more"); });
        QVERIFY(error);
        QCOMPARE(error->details, QString(499, u'x') + QChar(QChar::ReplacementCharacter));
    }

    void fileThatIsNotTheGameIsRefused_data()
    {
        QTest::addColumn<QByteArray>("file");
        QTest::addColumn<QString>("message");
        const auto header =
            QStringLiteral("The file does not look like a .z64 Nintendo 64 game (wrong header).");
        QTest::newRow("byte-swapped") << "\x37\x80\x40\x12" + ScriptedStore::rom().mid(4) << header;
        QTest::newRow("too short")
            << ScriptedStore::rom().chopped(1)
            << QStringLiteral("That file is not the right size for a Nintendo 64 game (9999 KB).");
        QTest::newRow("cut off past the largest size")
            << bigEndianHeader + QByteArray(60'000'000, 'r')
            << QStringLiteral("That file is not the right size for a Nintendo 64 game (40000 KB).");
    }

    void fileThatIsNotTheGameIsRefused()
    {
        QFETCH(const QByteArray, file);
        QFETCH(const QString, message);
        const Sandbox sandbox;
        ScriptedStore store;
        store.answers[ScriptedStore::filePath] = httpAnswer(200, file);
        failsWith(store, message);
    }

    void cancelEndsEachWait_data()
    {
        QTest::addColumn<QByteArray>("path");
        QTest::newRow("page") << ScriptedStore::pagePath;
        QTest::newRow("form") << ScriptedStore::formPath;
        QTest::newRow("file") << ScriptedStore::filePath;
    }

    void cancelEndsEachWait()
    {
        QFETCH(const QByteArray, path);
        const Sandbox sandbox;
        ScriptedStore store;
        store.answers[path].clear();
        const CancellationSource source;
        store.onRequest = [&](const QByteArray& asked) {
            if (asked == path)
                source.cancel();
        };
        writeFile(Paths::gameFile(), "installed");
        const auto error = failureOf<PlatformError>([&] { return store.download(source.token()); });
        QVERIFY(error);
        QVERIFY(FriendlyError::isCancel(*error));
        QCOMPARE(store.server.requests().back().path, path);
        onlyTheInstalledGameIsThere();
    }

    void cancelledTokenSendsNothing()
    {
        const Sandbox sandbox;
        ScriptedStore store;
        const CancellationSource source;
        source.cancel();
        QVERIFY(failureOf<PlatformError>([&] { return store.download(source.token()); }));
        QCOMPARE(store.server.requests().size(), std::size_t(0));
        QCOMPARE(Sandbox::storage(), QStringList());
    }
};

QTEST_GUILESS_MAIN(GameDownloaderTest)
#include "tst_GameDownloader.moc"
