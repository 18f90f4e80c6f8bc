// SPDX-License-Identifier: MIT
#include "core/Paths.h"
#include "game/AppError.h"
#include "game/FriendlyError.h"
#include "platform/Errors.h"
#include "support/Failures.h"
#include "support/InterimStatus.h"
#include "support/ScriptedStore.h"

#include <QtTest>

#include <system_error>

using namespace cartloom;

namespace
{

const auto gameFile = QStringLiteral("Quillet64.z64");

} // namespace

class StoreRefusalsTest : public QObject
{
    Q_OBJECT

private:
    /// Checks that the download fails with this, and that nothing but the installed game is there.
    void verifyRefusal(ScriptedStore& store, const QString& message, const QString& details = {})
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
    void aPageThatIsRefused_data()
    {
        QTest::addColumn<int>("status");
        for (const int status : finalStatuses({199, 300, 304, 401, 403, 404, 429, 500, 503}))
            QTest::addRow("%d", status) << status;
    }

    void aPageThatIsRefused()
    {
        QFETCH(int, status);
        const Sandbox sandbox;
        ScriptedStore store;
        store.answers[ScriptedStore::pagePath] = httpAnswer(status, ScriptedStore::page("token"));
        verifyRefusal(store, QStringLiteral("The Gamestall page answered with error %1.").arg(status));
        QCOMPARE(store.server.requests().size(), std::size_t(1));
    }

    void aFormThatIsRefused_data() { aPageThatIsRefused_data(); }

    void aFormThatIsRefused()
    {
        QFETCH(int, status);
        const Sandbox sandbox;
        ScriptedStore store;
        store.answers[ScriptedStore::formPath] = httpAnswer(status, "{}");
        verifyRefusal(store,
                      QStringLiteral("Gamestall refused the download request (error %1).").arg(status));
        QCOMPARE(store.server.requests().size(), std::size_t(2));
    }

    void aFileThatIsRefused()
    {
        const Sandbox sandbox;
        ScriptedStore store;
        store.answers[ScriptedStore::filePath] = httpAnswer(404);
        verifyRefusal(store, QStringLiteral("The server answered with error 404."),
                      QString::fromLatin1(store.server.url(QString()).toEncoded() + ScriptedStore::filePath));
    }

    void aPageWithoutAToken()
    {
        const Sandbox sandbox;
        ScriptedStore store("");
        verifyRefusal(store,
                      QStringLiteral("The Gamestall page has changed: the security token was not found."));
    }

    void aPageWithoutTheFile()
    {
        const Sandbox sandbox;
        ScriptedStore store;
        store.answers[ScriptedStore::pagePath] =
            httpAnswer(200, ScriptedStore::page("token").replace("Quillet64.z64", "Other.z64"));
        verifyRefusal(
            store, QStringLiteral("The Gamestall page has changed: the file Quillet64.z64 was not found."));
    }

    void anEmptyPage()
    {
        const Sandbox sandbox;
        ScriptedStore store;
        store.answers[ScriptedStore::pagePath] = httpAnswer(204);
        verifyRefusal(store,
                      QStringLiteral("The Gamestall page has changed: the security token was not found."));
    }

    void aPageThatIsNotUtf8IsReadAllTheSame()
    {
        const Sandbox sandbox;
        ScriptedStore store;
        store.answers[ScriptedStore::pagePath] =
            httpAnswer(200, "\xff\xfe\xc3" + ScriptedStore::page("token") + "\xe2\x82");
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
        const Sandbox sandbox;
        ScriptedStore store;
        store.answers[ScriptedStore::formPath] = httpAnswer(200, answer);
        verifyRefusal(store, QStringLiteral("Gamestall did not return a download link."),
                      QString::fromUtf8(answer));
    }

    void anAnswerWithoutALinkIsQuotedUpToFiveHundredBytes()
    {
        const Sandbox sandbox;
        ScriptedStore store;
        store.answers[ScriptedStore::formPath] = httpAnswer(200, QByteArray(499, 'x') + "é and more");
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
        const Sandbox sandbox;
        ScriptedStore store;
        store.answers[ScriptedStore::formPath] = httpAnswer(200, "{\"url\":\"" + link + "\"}");
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
        QTest::newRow("byte-swapped") << "\x37\x80\x40\x12" + ScriptedStore::rom().mid(4) << header;
        QTest::newRow("little-endian") << "\x40\x12\x37\x80" + ScriptedStore::rom().mid(4) << header;
        QTest::newRow("too short")
            << ScriptedStore::rom().chopped(1)
            << QStringLiteral("That file is not the right size for a Nintendo 64 game (9999 KB).");
        QTest::newRow("a page") << QByteArray("<html>Log in to the network</html>")
                                << QStringLiteral(
                                       "That file is not the right size for a Nintendo 64 game (0 KB).");
    }

    void aFileThatIsNotTheGame()
    {
        QFETCH(QByteArray, file);
        QFETCH(QString, message);
        const Sandbox sandbox;
        ScriptedStore store;
        store.answers[ScriptedStore::filePath] = httpAnswer(200, file);
        verifyRefusal(store, message);
    }

    void aConnectionLostAtEachOfTheThreeWaits_data()
    {
        QTest::addColumn<QByteArray>("path");
        QTest::newRow("page") << ScriptedStore::pagePath;
        QTest::newRow("form") << ScriptedStore::formPath;
        QTest::newRow("file") << ScriptedStore::filePath;
    }

    void aConnectionLostAtEachOfTheThreeWaits()
    {
        QFETCH(QByteArray, path);
        const Sandbox sandbox;
        ScriptedStore store;
        store.answers[path] = "HTTP/1.1 200 OK\r\nContent-Length: 1000\r\n\r\nhalf";
        writeFile(Paths::gameFile(), "installed");
        const auto error = failureOf<PlatformError>([&] { return store.download(); });
        QVERIFY(error);
        QCOMPARE(error->code, -1005);
        verifyUntouched();

        // The next attempt is as good as a first one.
        store.setUp();
        QCOMPARE(store.download(), Paths::gameFile());
        QCOMPARE(readFile(Paths::gameFile()).size(), ScriptedStore::rom().size());
    }

    void aCancellationAtEachOfTheThreeWaits_data() { aConnectionLostAtEachOfTheThreeWaits_data(); }

    void aCancellationAtEachOfTheThreeWaits()
    {
        QFETCH(QByteArray, path);
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
        verifyUntouched();
    }

    void aCancellationBeforehandAsksNothing()
    {
        const Sandbox sandbox;
        ScriptedStore store;
        const CancellationSource source;
        source.cancel();
        QVERIFY(failureOf<PlatformError>([&] { return store.download(source.token()); }));
        QCOMPARE(store.server.requests().size(), std::size_t(0));
        QCOMPARE(Sandbox::storage(), QStringList());
    }

    void aStorageFolderThatCannotBeMadeIsTheSystemsOwnError()
    {
        const Sandbox sandbox;
        ScriptedStore store;
        writeFile(Paths::support(), "in the way");
        const auto error = failureOf<std::system_error>([&] { return store.download(); });
        QVERIFY(error);
        QCOMPARE(error->code().value(), ENOTDIR);
    }
};

QTEST_GUILESS_MAIN(StoreRefusalsTest)
#include "tst_StoreRefusals.moc"
