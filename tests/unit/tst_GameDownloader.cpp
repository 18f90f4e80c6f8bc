// SPDX-License-Identifier: MIT
#include "core/Paths.h"
#include "game/AppError.h"
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

private Q_SLOTS:
    void theGameIsFetchedAndInstalled()
    {
        const Sandbox sandbox;
        ScriptedStore store;
        QCOMPARE(store.download(), Paths::gameFile());
        QCOMPARE(Sandbox::storage(), QStringList{gameFile});
        QCOMPARE(readFile(Paths::gameFile()), ScriptedStore::rom());
        QVERIFY(store.progressed > 0);
    }

    void theThreeRequestsAreThoseOfABrowser()
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

    void theTokenIsSentPercentEncoded_data()
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

    void theTokenIsSentPercentEncoded()
    {
        QFETCH(QByteArray, token);
        QFETCH(QByteArray, sent);
        const Sandbox sandbox;
        ScriptedStore store(token);
        store.answers[ScriptedStore::formPath] = httpAnswer(403);
        QVERIFY(failureOf<AppError>([&] { return store.download(); }));
        QCOMPARE(store.server.requests().at(1).body, "csrf_token=" + sent);
    }
};

QTEST_GUILESS_MAIN(GameDownloaderTest)
#include "tst_GameDownloader.moc"
