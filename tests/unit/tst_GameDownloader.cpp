// SPDX-License-Identifier: MIT
#include "core/Paths.h"
#include "game/AppError.h"
#include "game/FriendlyError.h"
#include "game/GameDownloader.h"
#include "platform/Errors.h"
#include "support/Failures.h"
#include "support/RawServer.h"
#include "support/ResultOf.h"
#include "support/Sandbox.h"
#include "support/TestOrigins.h"

#include <QtTest>

#include <map>
#include <system_error>

namespace fs = std::filesystem;
using namespace cartloom;

namespace
{

const auto userAgent = QByteArrayLiteral(
    "Mozilla/5.0 (Macintosh; Intel Mac OS X 10_15_7) AppleWebKit/605.1.15 (KHTML, like Gecko) QuilletPlayer");
const auto pagePath = QByteArrayLiteral("/quillet64");
const auto formPath = QByteArrayLiteral("/quillet64/file/22?source=game_download");
const auto filePath = QByteArrayLiteral("/files/game?signature=a%2Fb");
const auto gameFile = QStringLiteral("Quillet64.z64");

const QByteArray& rom()
{
    static const QByteArray bytes = bigEndianHeader + QByteArray(9'999'996, 'r');
    return bytes;
}

QByteArray pageWith(const QByteArray& token)
{
    return "<form><input name=\"csrf_token\" value=\"" + token +
           "\"></form><b>Manual.pdf</b><a data-upload_id=\"11\"></a>"
           "<b>Quillet64.z64</b><a data-upload_id=\"22\"></a>";
}

/// The store with its page, its form and its file, each of which a test may change. An empty answer is none:
/// the store then keeps silent.
struct Store
{
    Store() { TestOrigins::setStore(server.url(QString())); }

    fs::path download(CancellationToken token = {})
    {
        return resultOf(GameDownloader::download([this](qint64, qint64) { ++progressed; }, std::move(token)));
    }

    Sandbox sandbox;
    std::map<QByteArray, QByteArray> answers;
    std::function<void(const QByteArray& path)> onRequest;
    std::atomic<int> progressed = 0;
    RawServer server{[this](RawConnection& connection, const RawRequest& request) {
        if (onRequest)
            onRequest(request.path);
        const QByteArray& answer = answers[request.path];
        if (answer.isEmpty())
            return;
        connection.send(answer);
        connection.close();
    }};

    void setUp(const QByteArray& token = "token")
    {
        answers[pagePath] = httpAnswer(200, pageWith(token), {"Set-Cookie: session=s1; Path=/"});
        answers[formPath] =
            httpAnswer(200, "{\"url\":\"" + server.url(QString()).toEncoded() + filePath + "\"}");
        answers[filePath] = httpAnswer(200, rom());
    }
};

} // namespace

class GameDownloaderTest : public QObject
{
    Q_OBJECT

private:
    /// Checks that the download fails with this, and that nothing but the installed game is there.
    void verifyRefusal(Store& store, const QString& message, const QString& details = {})
    {
        writeFile(Paths::gameFile(), "installed");
        const auto error = failureOf<AppError>([&] { return store.download(); });
        QVERIFY(error);
        QCOMPARE(error->message, message);
        QCOMPARE(error->details, details);
        verifyUntouched();
    }

    void verifyUntouched()
    {
        QCOMPARE(Sandbox::storage(), QStringList{gameFile});
        QCOMPARE(readFile(Paths::gameFile()), QByteArray("installed"));
    }

private Q_SLOTS:
    void theGameIsFetchedAndInstalled()
    {
        Store store;
        store.setUp();
        QCOMPARE(store.download(), Paths::gameFile());
        QCOMPARE(Sandbox::storage(), QStringList{gameFile});
        QCOMPARE(readFile(Paths::gameFile()), rom());
        QVERIFY(store.progressed > 0);
    }

    void theThreeRequestsAreThoseOfABrowser()
    {
        Store store;
        store.setUp();
        static_cast<void>(store.download());
        const auto& requests = store.server.requests();
        QCOMPARE(requests.size(), std::size_t(3));
        for (const auto& request : requests)
            QCOMPARE(request.header("User-Agent"), userAgent);

        QCOMPARE(requests[0].verb, QByteArray("GET"));
        QCOMPARE(requests[0].path, pagePath);
        QVERIFY(requests[0].header("Cookie").isNull());

        QCOMPARE(requests[1].verb, QByteArray("POST"));
        QCOMPARE(requests[1].path, formPath);
        QCOMPARE(requests[1].header("Content-Type"), QByteArray("application/x-www-form-urlencoded"));
        QCOMPARE(requests[1].header("Referer"), GameDownloader::pageURL().toEncoded());
        QCOMPARE(requests[1].header("Cookie"), QByteArray("session=s1"));
        QCOMPARE(requests[1].body, QByteArray("csrf_token=token"));

        QCOMPARE(requests[2].verb, QByteArray("GET"));
        QCOMPARE(requests[2].path, filePath);
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
        Store store;
        store.setUp(token);
        store.answers[formPath] = httpAnswer(403);
        QVERIFY(failureOf<AppError>([&] { return store.download(); }));
        QCOMPARE(store.server.requests().at(1).body, "csrf_token=" + sent);
    }

    void aPageThatIsRefused_data()
    {
        QTest::addColumn<int>("status");
        for (const int status : {199, 300, 304, 401, 403, 404, 429, 500, 503})
            QTest::addRow("%d", status) << status;
    }

    void aPageThatIsRefused()
    {
        QFETCH(int, status);
        Store store;
        store.setUp();
        store.answers[pagePath] = httpAnswer(status, pageWith("token"));
        verifyRefusal(store, QStringLiteral("The Gamestall page answered with error %1.").arg(status));
        QCOMPARE(store.server.requests().size(), std::size_t(1));
    }

    void aFormThatIsRefused_data() { aPageThatIsRefused_data(); }

    void aFormThatIsRefused()
    {
        QFETCH(int, status);
        Store store;
        store.setUp();
        store.answers[formPath] = httpAnswer(status, "{}");
        verifyRefusal(store,
                      QStringLiteral("Gamestall refused the download request (error %1).").arg(status));
        QCOMPARE(store.server.requests().size(), std::size_t(2));
    }

    void aFileThatIsRefused()
    {
        Store store;
        store.setUp();
        store.answers[filePath] = httpAnswer(404);
        verifyRefusal(store, QStringLiteral("The server answered with error 404."),
                      QString::fromLatin1(store.server.url(QString()).toEncoded() + filePath));
    }

    void aPageWithoutAToken()
    {
        Store store;
        store.setUp("");
        verifyRefusal(store,
                      QStringLiteral("The Gamestall page has changed: the security token was not found."));
    }

    void aPageWithoutTheFile()
    {
        Store store;
        store.setUp();
        store.answers[pagePath] = httpAnswer(200, pageWith("token").replace("Quillet64.z64", "Other.z64"));
        verifyRefusal(
            store, QStringLiteral("The Gamestall page has changed: the file Quillet64.z64 was not found."));
    }

    void anEmptyPage()
    {
        Store store;
        store.setUp();
        store.answers[pagePath] = httpAnswer(204);
        verifyRefusal(store,
                      QStringLiteral("The Gamestall page has changed: the security token was not found."));
    }

    void aPageThatIsNotUtf8IsReadAllTheSame()
    {
        Store store;
        store.setUp();
        store.answers[pagePath] = httpAnswer(200, "\xff\xfe\xc3" + pageWith("token") + "\xe2\x82");
        QCOMPARE(store.download(), Paths::gameFile());
    }

    void anAnswerWithoutALink_data()
    {
        QTest::addColumn<QByteArray>("answer");
        QTest::newRow("number") << QByteArray("{\"url\":5}");
        QTest::newRow("null") << QByteArray("{\"url\":null}");
        QTest::newRow("list") << QByteArray("{\"url\":[\"https://x.example\"]}");
        QTest::newRow("another key") << QByteArray("{\"URL\":\"https://x.example\"}");
        QTest::newRow("inside something else") << QByteArray("{\"data\":{\"url\":\"https://x.example\"}}");
        QTest::newRow("not an object") << QByteArray("[\"https://x.example\"]");
        QTest::newRow("not JSON") << QByteArray("<html>Please log in</html>");
        QTest::newRow("nothing") << QByteArray();
        QTest::newRow("no address") << QByteArray("{\"url\":\"https://[\"}");
        QTest::newRow("empty address") << QByteArray("{\"url\":\"\"}");
    }

    void anAnswerWithoutALink()
    {
        QFETCH(QByteArray, answer);
        Store store;
        store.setUp();
        store.answers[formPath] = httpAnswer(200, answer);
        verifyRefusal(store, QStringLiteral("Gamestall did not return a download link."),
                      QString::fromUtf8(answer));
    }

    void anAnswerWithoutALinkIsQuotedUpToFiveHundredBytes()
    {
        Store store;
        store.setUp();
        store.answers[formPath] = httpAnswer(200, QByteArray(499, 'x') + "é and more");
        verifyRefusal(store, QStringLiteral("Gamestall did not return a download link."),
                      QString(499, u'x') + QChar(QChar::ReplacementCharacter));
    }

    void aLinkToSomewhereThatMustNotBeAsked_data()
    {
        QTest::addColumn<QByteArray>("link");
        QTest::addColumn<int>("code");
        QTest::newRow("plain http") << QByteArray("http://192.0.2.1/rom") << -1022;
        QTest::newRow("ftp") << QByteArray("ftp://127.0.0.1/rom") << -1002;
        QTest::newRow("data") << QByteArray("data:text/plain,rom") << -1002;
        QTest::newRow("relative") << QByteArray("/files/game") << -1002;
    }

    void aLinkToSomewhereThatMustNotBeAsked()
    {
        QFETCH(QByteArray, link);
        QFETCH(int, code);
        Store store;
        store.setUp();
        store.answers[formPath] = httpAnswer(200, "{\"url\":\"" + link + "\"}");
        writeFile(Paths::gameFile(), "installed");
        const auto error = failureOf<PlatformError>([&] { return store.download(); });
        QVERIFY(error);
        QCOMPARE(error->code, code);
        verifyUntouched();
    }

    void aFileThatIsNotTheGame_data()
    {
        QTest::addColumn<QByteArray>("file");
        QTest::addColumn<QString>("message");
        const auto header =
            QStringLiteral("The file does not look like a .z64 Nintendo 64 game (wrong header).");
        QTest::newRow("byte-swapped") << "\x37\x80\x40\x12" + rom().mid(4) << header;
        QTest::newRow("little-endian") << "\x40\x12\x37\x80" + rom().mid(4) << header;
        QTest::newRow("too short")
            << rom().chopped(1)
            << QStringLiteral("That file is not the right size for a Nintendo 64 game (9999 KB).");
        QTest::newRow("a page") << QByteArray("<html>Log in to the network</html>")
                                << QStringLiteral(
                                       "That file is not the right size for a Nintendo 64 game (0 KB).");
    }

    void aFileThatIsNotTheGame()
    {
        QFETCH(QByteArray, file);
        QFETCH(QString, message);
        Store store;
        store.setUp();
        store.answers[filePath] = httpAnswer(200, file);
        verifyRefusal(store, message);
    }

    void aConnectionLostAtEachOfTheThreeWaits_data()
    {
        QTest::addColumn<QByteArray>("path");
        QTest::newRow("page") << pagePath;
        QTest::newRow("form") << formPath;
        QTest::newRow("file") << filePath;
    }

    void aConnectionLostAtEachOfTheThreeWaits()
    {
        QFETCH(QByteArray, path);
        Store store;
        store.setUp();
        store.answers[path] = "HTTP/1.1 200 OK\r\nContent-Length: 1000\r\n\r\nhalf";
        writeFile(Paths::gameFile(), "installed");
        const auto error = failureOf<PlatformError>([&] { return store.download(); });
        QVERIFY(error);
        QCOMPARE(error->code, -1005);
        verifyUntouched();

        // The next attempt is as good as a first one.
        store.setUp();
        QCOMPARE(store.download(), Paths::gameFile());
        QCOMPARE(readFile(Paths::gameFile()).size(), rom().size());
    }

    void aCancellationAtEachOfTheThreeWaits_data() { aConnectionLostAtEachOfTheThreeWaits_data(); }

    void aCancellationAtEachOfTheThreeWaits()
    {
        QFETCH(QByteArray, path);
        Store store;
        store.setUp();
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
        verifyUntouched();
    }

    void aCancellationBeforehandAsksNothing()
    {
        Store store;
        store.setUp();
        const CancellationSource source;
        source.cancel();
        QVERIFY(failureOf<PlatformError>([&] { return store.download(source.token()); }));
        QCOMPARE(store.server.requests().size(), std::size_t(0));
        QCOMPARE(Sandbox::storage(), QStringList());
    }

    void aStorageFolderThatCannotBeMadeIsTheSystemsOwnError()
    {
        Store store;
        store.setUp();
        writeFile(Paths::support(), "in the way");
        const auto error = failureOf<std::system_error>([&] { return store.download(); });
        QVERIFY(error);
        QCOMPARE(error->code().value(), ENOTDIR);
    }

    void installingMovesTheFile()
    {
        const Sandbox sandbox;
        const auto file = sandbox.home() / "own.v64";
        fs::create_directories(Paths::support());
        writeFile(file, "new");
        writeFile(Paths::gameFile(), "old");
        GameDownloader::install(file, false);
        QVERIFY(!fs::exists(file));
        QCOMPARE(readFile(Paths::gameFile()), QByteArray("new"));
        QCOMPARE(Sandbox::storage(), QStringList{gameFile});
    }

    void installingKeepsTheOriginal()
    {
        const Sandbox sandbox;
        const auto file = sandbox.home() / "own.v64";
        writeFile(file, "new");
        GameDownloader::install(file, true);
        QCOMPARE(readFile(file), QByteArray("new"));
        QCOMPARE(readFile(Paths::gameFile()), QByteArray("new"));
        QCOMPARE(Sandbox::storage(), QStringList{gameFile});
    }

    void installingReplacesALinkOrAFolderAtThePlace()
    {
        const Sandbox sandbox;
        const auto file = sandbox.home() / "own.z64";
        writeFile(file, "new");
        Paths::ensureSupport();
        fs::create_symlink("nowhere", Paths::gameFile());
        GameDownloader::install(file, true);
        QCOMPARE(readFile(Paths::gameFile()), QByteArray("new"));
        fs::remove(Paths::gameFile());
        writeFile(Paths::gameFile() / "inside", "old");
        GameDownloader::install(file, true);
        QCOMPARE(readFile(Paths::gameFile()), QByteArray("new"));
    }

    void installingAMissingFileIsTheSystemsOwnError_data()
    {
        QTest::addColumn<bool>("keep");
        QTest::newRow("copied") << true;
        QTest::newRow("moved") << false;
    }

    void installingAMissingFileIsTheSystemsOwnError()
    {
        QFETCH(bool, keep);
        const Sandbox sandbox;
        const auto error = failureOf<std::system_error>([&] {
            GameDownloader::install(sandbox.home() / "vanished", keep);
            return 0;
        });
        QVERIFY(error);
        QCOMPARE(error->code().value(), ENOENT);
        QCOMPARE(Sandbox::storage(), QStringList());
    }
};

QTEST_GUILESS_MAIN(GameDownloaderTest)
#include "tst_GameDownloader.moc"
