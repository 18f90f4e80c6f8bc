// SPDX-License-Identifier: MIT
#include "emulator/AresInstaller.h"
#include "emulator/ReleaseReply.h"
#include "errors/AppError.h"
#include "errors/PlatformError.h"
#include "support/Failures.h"
#include "support/RawServer.h"
#include "support/ReleaseJson.h"
#include "support/ResultOf.h"
#include "support/TestOrigins.h"

#include <QtTest>

#include <limits>

using namespace cartloom;
using AresInstaller::releaseIn;

namespace
{

AresRelease fetchFrom(const RawServer& server, const CancellationToken& token = {})
{
    TestOrigins::setReleaseApi(server.url(QString()));
    return resultOf(AresInstaller::fetchLatest(token));
}

} // namespace

class ReleaseLookupTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void requestIsWhatTheServiceExpects()
    {
        const RawServer server(httpAnswer(200, release(asset("ares-macos.zip"))));
        static_cast<void>(fetchFrom(server));
        QCOMPARE(server.requests().size(), std::size_t(1));
        const auto& request = server.requests().front();
        QCOMPARE(request.verb, QByteArray("GET"));
        QCOMPARE(request.path, QByteArray("/repos/ares-emulator/ares/releases/latest"));
        QCOMPARE(request.header("User-Agent"), QByteArray("QuilletPlayer"));
        QCOMPARE(request.header("Accept"), QByteArray("application/vnd.github+json"));
        QVERIFY(request.header("Cookie").isNull());
    }

    void releaseIsReturnedAsItIs()
    {
        const auto found =
            releaseIn(release(asset("ares-macos-v148.zip", "80123456", "https://x.example/a%20b?c=d")));
        QCOMPARE(found.tagName, QStringLiteral("v148"));
        QCOMPARE(found.assetName, QStringLiteral("ares-macos-v148.zip"));
        QCOMPARE(found.downloadURL, std::string("https://x.example/a%20b?c=d"));
        QCOMPARE(found.size, 80'123'456);
    }

    void statusOutside2xxIsReported_data()
    {
        QTest::addColumn<int>("status");
        for (const int status : {300, 304, 401, 403, 404, 429, 500, 503})
            QTest::addRow("%d", status) << status;
    }

    void statusOutside2xxIsReported()
    {
        QFETCH(int, status);
        const RawServer server(httpAnswer(status, release(asset("ares-macos.zip"))));
        const auto error = failureOf<AppError>([&] { return fetchFrom(server); });
        QVERIFY(error);
        QCOMPARE(
            error->message,
            QStringLiteral("GitHub answered with error %1 when asking for the latest Ares.").arg(status));
        QCOMPARE(error->details, QString());
    }

    void status2xxIsAccepted_data()
    {
        QTest::addColumn<int>("status");
        QTest::newRow("200") << 200;
        QTest::newRow("299") << 299;
    }

    void status2xxIsAccepted()
    {
        QFETCH(int, status);
        const RawServer server(httpAnswer(status, release(asset("ares-macos.zip"))));
        QCOMPARE(fetchFrom(server).tagName, QStringLiteral("v148"));
    }

    void debugSymbolsAreNotTheDownload()
    {
        QCOMPARE(releaseIn(release(asset("ares-macos-dSYMs.zip") + "," + asset("ares-macos.zip"))).assetName,
                 QStringLiteral("ares-macos.zip"));
    }

    void firstMatchingAssetIsTheDownload()
    {
        const auto found =
            releaseIn(release(asset("ares-windows.zip") + "," + asset("ares-macos-a.zip", "1") + "," +
                              asset("ares-macos-b.zip", "2")));
        QCOMPARE(found.assetName, QStringLiteral("ares-macos-a.zip"));
        QCOMPARE(found.size, 1);
    }

    void otherNameIsNoDownload_data()
    {
        QTest::addColumn<QByteArray>("name");
        for (const char* const name :
             {"Ares-macos.zip", "ares-MacOS.zip", "ares-macos.ZIP", "ares-macos.zip.sig", "x-ares-macos.zip",
              "ares-macos", "ares-macos-dSYMs.zip", "ares-macosdSYMs.zip", "ares-windows.zip", ""})
            QTest::newRow(name) << QByteArray(name);
    }

    void otherNameIsNoDownload()
    {
        QFETCH(QByteArray, name);
        const auto error = failureOf<AppError>([&] { return releaseIn(release(asset(name))); });
        QVERIFY(error);
        QCOMPARE(error->message, QStringLiteral("The latest Ares release (v148) has no macOS download."));
        QCOMPARE(error->details, QString::fromLatin1(name));
    }

    void unusualNameIsADownload_data()
    {
        QTest::addColumn<QByteArray>("name");
        for (const char* const name :
             {"ares-macos.zip", "ares-macos-dsyms.zip", "ares-macosx.zip", "ares-macos .zip"})
            QTest::newRow(name) << QByteArray(name);
    }

    void unusualNameIsADownload()
    {
        QFETCH(QByteArray, name);
        QCOMPARE(releaseIn(release(asset(name))).assetName, QString::fromLatin1(name));
    }

    void releaseWithoutDownloadNamesItsAssets()
    {
        const auto error = failureOf<AppError>(
            [] { return releaseIn(release(asset("ares-windows.zip") + "," + asset("ares-source.tar.gz"))); });
        QVERIFY(error);
        QCOMPARE(error->message, QStringLiteral("The latest Ares release (v148) has no macOS download."));
        QCOMPARE(error->details, QStringLiteral("ares-windows.zip\nares-source.tar.gz"));
    }

    void hostileNamesAreCutInTheDetails_data()
    {
        QTest::addColumn<QByteArray>("assets");
        QTest::addColumn<QString>("details");
        const auto row = [](const char* name, const QString& assetName, const QString& shown) {
            QTest::newRow(name) << asset(assetName.toUtf8()) << shown;
        };
        const QString mark(u'?');
        row("88 name of 8 million characters", QString(8'000'000, u'x'),
            QString(100, u'x') + QStringLiteral("..."));
        row("88 name of 101 characters", QString(101, u'x'), QString(100, u'x') + QStringLiteral("..."));
        row("88 name of 100 characters", QString(100, u'x'), QString(100, u'x'));
        row("88 printable ASCII", QStringLiteral(" ~<b>%1"), QStringLiteral(" ~<b>%1"));
        row("88 combining characters", QString(200, QChar(0x0301)),
            QString(100, u'?') + QStringLiteral("..."));
        row("88 right to left", QString(QChar(0x202e)) + QChar(0x05d0) + u'x', mark + mark + u'x');
        row("88 line breaks and control characters", QStringLiteral("a\\nb\\u2028c\\u0007d"),
            QStringLiteral("a?b?c?d"));
        row("88 outside the BMP", QString::fromUcs4(U"\U0001F600"), mark + mark);
        const QByteArray others = "," + asset("x");
        const QString lines = QStringLiteral("x") + QStringLiteral("\nx").repeated(29);
        QTest::newRow("88 30 names") << others.repeated(30).mid(1) << lines;
        QTest::newRow("88 80,000 names") << others.repeated(80'000).mid(1) << lines + QStringLiteral("\n...");
    }

    void hostileNamesAreCutInTheDetails()
    {
        QFETCH(const QByteArray, assets);
        const auto error = failureOf<AppError>([&] { return releaseIn(release(assets)); });
        QVERIFY(error);
        QTEST(error->details, "details");
    }

    void releaseWithoutAssetsHasNoDetails()
    {
        const auto error = failureOf<AppError>([] { return releaseIn(release("", "%1 <b>\\n")); });
        QVERIFY(error);
        QCOMPARE(error->message, QStringLiteral("The latest Ares release (%1 <b>\n) has no macOS download."));
        QCOMPARE(error->details, QString());
    }

    void invalidAddressIsNoDownload_data()
    {
        QTest::addColumn<QByteArray>("address");
        for (const char* const address :
             {"", "https://[", "https://x.example/a b", "https://x.example:port/"})
            QTest::newRow(address) << QByteArray(address);
    }

    void invalidAddressIsNoDownload()
    {
        QFETCH(QByteArray, address);
        // The second asset is valid, but the name alone selects.
        const auto error = failureOf<AppError>([&] {
            return releaseIn(
                release(asset("ares-macos.zip", "1", address) + "," + asset("ares-macos-2.zip")));
        });
        QVERIFY(error);
        QCOMPARE(error->message, QStringLiteral("The latest Ares release (v148) has no macOS download."));
        QCOMPARE(error->details, QStringLiteral("ares-macos.zip\nares-macos-2.zip"));
    }

    void replyThatIsNoReleaseIsRefused_data()
    {
        QTest::addColumn<QByteArray>("body");
        const auto good = release(asset("ares-macos.zip"));
        QTest::newRow("nothing") << QByteArray();
        QTest::newRow("words") << QByteArray("not JSON");
        QTest::newRow("cut off") << good.chopped(5);
        QTest::newRow("two values") << good + "{}";
        QTest::newRow("not UTF-8") << release(asset("ares-macos-\xff.zip"));
        QTest::newRow("deep") << QByteArray(100'000, '[') + QByteArray(100'000, ']');
        QTest::newRow("deep objects") << QByteArray("{\"a\":").repeated(100'000);
        QTest::newRow("deep in an asset") << release(QByteArray(100'000, '[') + QByteArray(100'000, ']'));
        QTest::newRow("a million numbers") << '[' + QByteArray("1,").repeated(1'000'000) + "1]";
        QTest::newRow("list of releases") << "[" + good + "]";
        QTest::newRow("text") << QByteArray("\"release\"");
        QTest::newRow("null") << QByteArray("null");
        QTest::newRow("empty object") << QByteArray("{}");
        QTest::newRow("no tag") << json("{'assets':[]}");
        QTest::newRow("tag is null") << json("{'tag_name':null,'assets':[]}");
        QTest::newRow("tag is a list") << json("{'tag_name':['v147'],'assets':[]}");
        QTest::newRow("tag in upper case") << json("{'TAG_NAME':'v1','assets':[]}");
        QTest::newRow("last of two tags is a number") << json("{'tag_name':'v1','tag_name':5,'assets':[]}");
        QTest::newRow("no assets") << json("{'tag_name':'v1'}");
        QTest::newRow("assets are null") << json("{'tag_name':'v1','assets':null}");
        QTest::newRow("assets are an object") << json("{'tag_name':'v1','assets':{}}");
        QTest::newRow("asset is a text") << release("\"ares-macos.zip\"");
        QTest::newRow("asset is null") << release("null");
        QTest::newRow("asset without a name")
            << release("{'size':1,'browser_download_url':'https://x.example'}");
        QTest::newRow("asset without a size")
            << release("{'name':'ares-macos.zip','browser_download_url':'https://x.example'}");
        QTest::newRow("asset without an address") << release("{'name':'ares-macos.zip','size':1}");
        QTest::newRow("address is a number")
            << release("{'name':'ares-macos.zip','size':1,'browser_download_url':1}");
        QTest::newRow("another asset is broken") << release(asset("ares-macos.zip") + ",{}");
        for (const char* const size :
             {"1.5", "'1'", "null", "true", "[]", "{}", "1e400", "9223372036854775808",
              "-9223372036854775809", "-9223372036854776832", "-9223372036854777856", "1e30"})
            QTest::addRow("size %s", size) << release(asset("ares-macos.zip", size));
    }

    void replyThatIsNoReleaseIsRefused()
    {
        QFETCH(const QByteArray, body);
        const auto error = failureOf<AppError>([&] { return releaseIn(body); });
        QVERIFY(error);
        QCOMPARE(error->message, QStringLiteral("Could not read the Ares release list."));
        QVERIFY(!error->details.isEmpty());
        QVERIFY(error->details.size() < 200);
    }

    void wholeNumberIsASize_data()
    {
        QTest::addColumn<qint64>("size");
        const auto row = [](const char* text, qint64 size) { QTest::newRow(text) << size; };
        row("0", 0);
        row("-5", -5);
        row("9007199254740993", 9007199254740993);
        row("9223372036854775807", std::numeric_limits<qint64>::max());
        row("-9223372036854775808", std::numeric_limits<qint64>::min());
        row("1e3", 1000);
        row("80123456.0", 80'123'456);
        row("8012345.6e1", 80'123'456);
    }

    void wholeNumberIsASize()
    {
        QFETCH(const qint64, size);
        QCOMPARE(releaseIn(release(asset("ares-macos.zip", QTest::currentDataTag()))).size, size);
    }

    void cancelEndsTheLookup()
    {
        const CancellationSource source;
        const RawServer server([&](RawConnection&, const RawRequest&) { source.cancel(); });
        const auto error = failureOf<PlatformError>([&] { return fetchFrom(server, source.token()); });
        QVERIFY(error);
        QCOMPARE(error->code, -999);
    }
};

QTEST_GUILESS_MAIN(ReleaseLookupTest)
#include "tst_ReleaseLookup.moc"
