// SPDX-License-Identifier: MIT
#include "game/AppError.h"
#include "platform/Errors.h"
#include "support/Failures.h"
#include "support/InterimStatus.h"
#include "support/ReleaseJson.h"

#include <QtTest>

using namespace cartloom;

class ReleaseLookupTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theRequestIsWhatTheServiceExpects()
    {
        const RawServer server(httpAnswer(200, release(asset("ares-macos.zip"))));
        TestOrigins::setReleaseApi(server.url(QString()));
        static_cast<void>(fetch());
        QCOMPARE(server.requests().size(), std::size_t(1));
        const auto& request = server.requests().front();
        QCOMPARE(request.verb, QByteArray("GET"));
        QCOMPARE(request.path, QByteArray("/repos/ares-emulator/ares/releases/latest"));
        QCOMPARE(request.header("User-Agent"), QByteArray("QuilletPlayer"));
        QCOMPARE(request.header("Accept"), QByteArray("application/vnd.github+json"));
        QVERIFY(request.header("Cookie").isNull());
    }

    void theReleaseIsHandedOnAsItIs()
    {
        const auto found =
            lookUp(release(asset("ares-macos-v148.zip", "80123456", "https://x.example/a%20b?c=d")));
        QCOMPARE(found.tagName, QStringLiteral("v148"));
        QCOMPARE(found.assetName, QStringLiteral("ares-macos-v148.zip"));
        QCOMPARE(found.downloadURL.toEncoded(), QByteArray("https://x.example/a%20b?c=d"));
        QCOMPARE(found.size, 80'123'456);
    }

    void statusesOutsideTwoHundredFail_data()
    {
        QTest::addColumn<int>("status");
        for (const int status : finalStatuses({199, 300, 304, 401, 403, 404, 429, 500, 503}))
            QTest::addRow("%d", status) << status;
    }

    void statusesOutsideTwoHundredFail()
    {
        QFETCH(int, status);
        const RawServer server(httpAnswer(status, release(asset("ares-macos.zip"))));
        TestOrigins::setReleaseApi(server.url(QString()));
        const auto error = failureOf<AppError>([] { return fetch(); });
        QVERIFY(error);
        QCOMPARE(
            error->message,
            QStringLiteral("GitHub answered with error %1 when asking for the latest Ares.").arg(status));
        QCOMPARE(error->details, QString());
    }

    void statusesOfTwoHundredPass_data()
    {
        QTest::addColumn<int>("status");
        QTest::newRow("200") << 200;
        QTest::newRow("299") << 299;
    }

    void statusesOfTwoHundredPass()
    {
        QFETCH(int, status);
        const RawServer server(httpAnswer(status, release(asset("ares-macos.zip"))));
        TestOrigins::setReleaseApi(server.url(QString()));
        QCOMPARE(fetch().tagName, QStringLiteral("v148"));
    }

    void theDebugSymbolsAreNotTheDownload()
    {
        QCOMPARE(lookUp(release(asset("ares-macos-dSYMs.zip") + "," + asset("ares-macos.zip"))).assetName,
                 QStringLiteral("ares-macos.zip"));
    }

    void theFirstThatFitsIsTheDownload()
    {
        const auto found = lookUp(release(asset("ares-windows.zip") + "," + asset("ares-macos-a.zip", "1") +
                                          "," + asset("ares-macos-b.zip", "2")));
        QCOMPARE(found.assetName, QStringLiteral("ares-macos-a.zip"));
        QCOMPARE(found.size, 1);
    }

    void namesThatDoNotFit_data()
    {
        QTest::addColumn<QByteArray>("name");
        for (const char* const name :
             {"Ares-macos.zip", "ares-MacOS.zip", "ares-macos.ZIP", "ares-macos.zip.sig", "x-ares-macos.zip",
              "ares-macos", "ares-macos-dSYMs.zip", "ares-macosdSYMs.zip", "ares-windows.zip", ""})
            QTest::newRow(name) << QByteArray(name);
    }

    void namesThatDoNotFit()
    {
        QFETCH(QByteArray, name);
        const auto error = failureOf<AppError>([&] { return lookUp(release(asset(name))); });
        QVERIFY(error);
        QCOMPARE(error->message, QStringLiteral("The latest Ares release (v148) has no macOS download."));
        QCOMPARE(error->details, QString::fromLatin1(name));
    }

    void namesThatBarelyFit_data()
    {
        QTest::addColumn<QByteArray>("name");
        for (const char* const name :
             {"ares-macos.zip", "ares-macos-dsyms.zip", "ares-macosx.zip", "ares-macos .zip"})
            QTest::newRow(name) << QByteArray(name);
    }

    void namesThatBarelyFit()
    {
        QFETCH(QByteArray, name);
        QCOMPARE(lookUp(release(asset(name))).assetName, QString::fromLatin1(name));
    }

    void aReleaseWithoutADownloadNamesWhatItHas()
    {
        const auto error = failureOf<AppError>(
            [] { return lookUp(release(asset("ares-windows.zip") + "," + asset("ares-source.tar.gz"))); });
        QVERIFY(error);
        QCOMPARE(error->message, QStringLiteral("The latest Ares release (v148) has no macOS download."));
        QCOMPARE(error->details, QStringLiteral("ares-windows.zip\nares-source.tar.gz"));
    }

    void aReleaseWithoutAnyAssetHasNoDetails()
    {
        const auto error = failureOf<AppError>([] { return lookUp(release("", "%1 <b>\\n")); });
        QVERIFY(error);
        QCOMPARE(error->message, QStringLiteral("The latest Ares release (%1 <b>\n) has no macOS download."));
        QCOMPARE(error->details, QString());
    }

    void anAddressThatIsNoneIsNoDownload_data()
    {
        QTest::addColumn<QByteArray>("address");
        for (const char* const address :
             {"", "https://[", "https://x.example/a b", "https://x.example:port/"})
            QTest::newRow(address) << QByteArray(address);
    }

    void anAddressThatIsNoneIsNoDownload()
    {
        QFETCH(QByteArray, address);
        // The second would do, but the first that fits by its name is the one.
        const auto error = failureOf<AppError>([&] {
            return lookUp(release(asset("ares-macos.zip", "1", address) + "," + asset("ares-macos-2.zip")));
        });
        QVERIFY(error);
        QCOMPARE(error->message, QStringLiteral("The latest Ares release (v148) has no macOS download."));
        QCOMPARE(error->details, QStringLiteral("ares-macos.zip\nares-macos-2.zip"));
    }

    void aTransportErrorIsHandedOn()
    {
        const RawServer server(QByteArray("HTTP/1.1 200 OK\r\nContent-Length: 1000\r\n\r\n{"));
        TestOrigins::setReleaseApi(server.url(QString()));
        const auto error = failureOf<PlatformError>([] { return fetch(); });
        QVERIFY(error);
        QCOMPARE(error->code, -1005);
    }

    void aCancellationEndsTheWait()
    {
        const CancellationSource source;
        const RawServer server([&](RawConnection&, const RawRequest&) { source.cancel(); });
        TestOrigins::setReleaseApi(server.url(QString()));
        const auto error =
            failureOf<PlatformError>([&] { return resultOf(AresInstaller::fetchLatest(source.token())); });
        QVERIFY(error);
        QCOMPARE(error->code, -999);
    }

    void anEndlessListIsCutOff()
    {
        const RawServer server([](RawConnection& connection, const RawRequest&) {
            connection.send("HTTP/1.1 200 OK\r\n\r\n[");
            connection.sendEndlessly(QByteArray(64 * 1024, ' '), 64 * 1024 * 1024);
        });
        TestOrigins::setReleaseApi(server.url(QString()));
        const auto error = failureOf<PlatformError>([] { return fetch(); });
        QVERIFY(error);
        QCOMPARE(error->code, -1103);
    }

    void aFailedLookupIsForgotten()
    {
        QVERIFY(failureOf<AppError>([] { return lookUp("{}"); }));
        QCOMPARE(lookUp(release(asset("ares-macos.zip"))).tagName, QStringLiteral("v148"));
    }
};

QTEST_GUILESS_MAIN(ReleaseLookupTest)
#include "tst_ReleaseLookup.moc"
