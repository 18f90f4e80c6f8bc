// SPDX-License-Identifier: MIT
#include "StandInSites.h"
#include "support/Sandbox.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QtTest>

#include <httplib.h>

#include <chrono>
#include <future>
#include <optional>
#include <thread>

using namespace cartloom;
using namespace std::chrono_literals;

namespace
{

const std::string apiAgent = "QuilletPlayer";
const std::string browserAgent =
    "Mozilla/5.0 (Macintosh; Intel Mac OS X 10_15_7) AppleWebKit/605.1.15 (KHTML, like Gecko) QuilletPlayer";
const std::string latest = "/repos/ares-emulator/ares/releases/latest";
const std::string archive = "/ares-emulator/ares/releases/download/v200/ares-macos-universal.zip";
const std::string page = "/quillet64";
const std::string game = "/uploads/2203118/Quillet64.z64";
const std::string form = "/quillet64/file/2203118?source=game_download";

/// The sites with small files, and a plain client of them.
struct Visit
{
    explicit Visit(qint64 bytesPerSecond = 0)
    {
        writeFile(sandbox.scratch() / "ares.zip", QByteArray(300'000, 'a'));
        writeFile(sandbox.scratch() / "game.z64", QByteArray(100'000, 'g'));
        sites.emplace(StandInSites::Content{sandbox.scratch() / "ares.zip", sandbox.scratch() / "game.z64",
                                            QStringLiteral("v200"), bytesPerSecond});
        client.emplace(sites->origin().toString().toStdString());
    }

    [[nodiscard]] httplib::Result get(const std::string& path, const std::string& agent,
                                      httplib::Headers headers = {})
    {
        headers.emplace("User-Agent", agent);
        return client->Get(path.c_str(), headers);
    }

    const Sandbox sandbox;
    std::optional<StandInSites> sites;
    std::optional<httplib::Client> client;
};

/// The store's form as a browser fills it in; a test spoils one thing of it.
struct Form
{
    explicit Form(Visit& visit)
        : headers{{"User-Agent", browserAgent},
                  {"Referer", visit.sites->origin().toString().toStdString() + page}}
    {
        const auto answer = visit.get(page, browserAgent);
        const auto cookie = answer->get_header_value("Set-Cookie");
        headers.emplace("Cookie", cookie.substr(0, cookie.find(';')));
        static const QRegularExpression hidden(QStringLiteral("name=\"csrf_token\" value=\"([^\"]+)\""));
        token = hidden.match(QString::fromStdString(answer->body)).captured(1).toStdString();
    }

    [[nodiscard]] httplib::Result post(Visit& visit, const std::string& path = form) const
    {
        return visit.client->Post(path.c_str(), headers, httplib::Params{{"csrf_token", token}});
    }

    void replace(const std::string& header, const std::string& value)
    {
        headers.erase(header);
        headers.emplace(header, value);
    }

    httplib::Headers headers;
    std::string token;
};

} // namespace

class StandInSitesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theLatestReleaseListsTheDebugSymbolsBeforeTheDownload()
    {
        Visit visit;
        const auto answer = visit.get(latest, apiAgent);
        QCOMPARE(answer->status, 200);
        const auto release = QJsonDocument::fromJson(QByteArray::fromStdString(answer->body)).object();
        QCOMPARE(release[QLatin1String("tag_name")].toString(), QStringLiteral("v200"));
        const auto assets = release[QLatin1String("assets")].toArray();
        QStringList names;
        for (const auto& asset : assets)
            names.append(asset.toObject()[QLatin1String("name")].toString());
        QCOMPARE(names, (QStringList{QStringLiteral("ares-macos-dSYMs.zip"),
                                     QStringLiteral("ares-macos-universal.zip"),
                                     QStringLiteral("ares-windows-x64.zip")}));
        const auto download = assets[1].toObject();
        QCOMPARE(download[QLatin1String("size")].toInteger(), 300'000);
        QCOMPARE(download[QLatin1String("browser_download_url")].toString().toStdString(),
                 visit.sites->origin().toString().toStdString() + archive);
    }

    void theDownloadIsTheArchiveWithItsLengthAnnounced()
    {
        Visit visit;
        const auto answer = visit.get(archive, apiAgent);
        QCOMPARE(answer->status, 200);
        QCOMPARE(answer->get_header_value("Content-Length"), std::string("300000"));
        QCOMPARE(answer->body, std::string(300'000, 'a'));
    }

    void thePageListsTheManualBeforeTheGame()
    {
        Visit visit;
        const auto text = QString::fromStdString(visit.get(page, browserAgent)->body);
        static const QRegularExpression upload(
            QStringLiteral("title=\"([^\"]+)\".*?data-upload_id=\"(\\d+)\""),
            QRegularExpression::DotMatchesEverythingOption);
        QStringList names;
        QStringList ids;
        for (auto matches = upload.globalMatch(text); matches.hasNext();) {
            const auto match = matches.next();
            names.append(match.captured(1));
            ids.append(match.captured(2));
        }
        QCOMPARE(names,
                 (QStringList{QStringLiteral("Quillet64-manual.pdf"), QStringLiteral("Quillet64.z64")}));
        QCOMPARE(ids, (QStringList{QStringLiteral("2203117"), QStringLiteral("2203118")}));
    }

    void theGameIsReachedThroughPageAndForm()
    {
        Visit visit;
        const Form filledIn(visit);
        const auto answer = filledIn.post(visit);
        QCOMPARE(answer->status, 200);
        const auto link = QJsonDocument::fromJson(QByteArray::fromStdString(answer->body)).object();
        QCOMPARE(link[QLatin1String("url")].toString().toStdString(),
                 visit.sites->origin().toString().toStdString() + game);
        const auto file = visit.get(game, browserAgent);
        QCOMPARE(file->status, 200);
        QCOMPARE(file->body, std::string(100'000, 'g'));
    }

    void aTokenHasCharactersThatAFormMustEncode()
    {
        Visit visit;
        const Form filledIn(visit);
        for (const char character : {'+', '/', '='})
            QVERIFY(filledIn.token.find(character) != std::string::npos);
        const auto unencoded =
            visit.client->Post(form.c_str(), filledIn.headers, "csrf_token=" + filledIn.token,
                               "application/x-www-form-urlencoded");
        QCOMPARE(unencoded->status, 403);
    }

    void aVisitorOfTheWrongKindIsRefused_data()
    {
        QTest::addColumn<std::string>("path");
        QTest::addColumn<std::string>("agent");
        QTest::newRow("a browser at the release list") << latest << browserAgent;
        QTest::newRow("a browser at the archive") << archive << browserAgent;
        QTest::newRow("no browser at the page") << page << apiAgent;
        QTest::newRow("no browser at the game") << game << apiAgent;
    }
    void aVisitorOfTheWrongKindIsRefused()
    {
        QFETCH(std::string, path);
        QFETCH(std::string, agent);
        Visit visit;
        QCOMPARE(visit.get(path, agent)->status, 403);
    }

    void aFormWithOneThingWrongIsRefused_data()
    {
        QTest::addColumn<std::function<void(Form&)>>("spoil");
        using Spoil = std::function<void(Form&)>;
        QTest::newRow("another token") << Spoil([](Form& sent) { sent.token += 'x'; });
        QTest::newRow("no token") << Spoil([](Form& sent) { sent.token.clear(); });
        QTest::newRow("no cookie") << Spoil([](Form& sent) { sent.headers.erase("Cookie"); });
        QTest::newRow("another cookie")
            << Spoil([](Form& sent) { sent.replace("Cookie", "store_session=1"); });
        QTest::newRow("no referer") << Spoil([](Form& sent) { sent.headers.erase("Referer"); });
        QTest::newRow("another referer")
            << Spoil([](Form& sent) { sent.replace("Referer", "http://127.0.0.1/"); });
        QTest::newRow("no browser") << Spoil([](Form& sent) { sent.replace("User-Agent", apiAgent); });
    }
    void aFormWithOneThingWrongIsRefused()
    {
        QFETCH(std::function<void(Form&)>, spoil);
        Visit visit;
        Form sent(visit);
        spoil(sent);
        QCOMPARE(sent.post(visit)->status, 403);
    }

    void aFormWithTheTokenOfAnotherVisitIsRefused()
    {
        Visit visit;
        Form sent(visit);
        sent.token = Form(visit).token;
        QCOMPARE(sent.post(visit)->status, 403);
    }

    void aFormWithoutItsSourceIsRefused()
    {
        Visit visit;
        QCOMPARE(Form(visit).post(visit, "/quillet64/file/2203118")->status, 403);
    }

    void aStoreCookieOnTheGameIsRefused()
    {
        Visit visit;
        QCOMPARE(visit.get(game, browserAgent, {{"Cookie", "store_session=1"}})->status, 403);
    }

    void whatIsNotOfferedIsNotFound_data()
    {
        QTest::addColumn<std::string>("path");
        QTest::newRow("root") << std::string("/");
        QTest::newRow("debug symbols")
            << std::string("/ares-emulator/ares/releases/download/v200/ares-macos-dSYMs.zip");
        QTest::newRow("archive of another release")
            << std::string("/ares-emulator/ares/releases/download/v199/ares-macos-universal.zip");
        QTest::newRow("another game") << std::string("/quillet65");
    }
    void whatIsNotOfferedIsNotFound()
    {
        QFETCH(std::string, path);
        Visit visit;
        QCOMPARE(visit.get(path, apiAgent)->status, 404);
    }

    void everyRequestIsCountedWhateverItsAnswer()
    {
        Visit visit;
        QCOMPARE(visit.sites->requests(), 0);
        QCOMPARE(visit.get(latest, apiAgent)->status, 200);
        QCOMPARE(visit.get(latest, browserAgent)->status, 403);
        QCOMPARE(visit.get("/", apiAgent)->status, 404);
        QCOMPARE(visit.sites->requests(), 3);
    }

    void aTransferIsNoFasterThanItsRate()
    {
        Visit visit(1'000'000);
        QElapsedTimer time;
        time.start();
        QCOMPARE(visit.get(archive, apiAgent)->body.size(), std::size_t(300'000));
        // All but the last piece of 64 KiB is waited for.
        QVERIFY2(time.elapsed() >= 200, qPrintable(QString::number(time.elapsed())));
    }

    void theSitesCloseInTheMiddleOfATransfer()
    {
        Visit visit(1000);
        std::promise<void> begun;
        std::optional<bool> complete;
        std::thread reader([&] {
            const auto note = [&, first = true](const char*, std::size_t) mutable {
                if (std::exchange(first, false))
                    begun.set_value();
                return true;
            };
            const httplib::Headers headers{{"User-Agent", apiAgent}};
            complete = static_cast<bool>(visit.client->Get(archive.c_str(), headers, note));
        });
        const bool hasBegun = begun.get_future().wait_for(10s) == std::future_status::ready;
        visit.sites.reset();
        reader.join();
        QVERIFY(hasBegun);
        QCOMPARE(complete, std::optional(false));
    }

    void aMissingFileIsKnownAtOnce()
    {
        const Sandbox sandbox;
        writeFile(sandbox.scratch() / "there", "x");
        const auto there = sandbox.scratch() / "there";
        const auto missing = sandbox.scratch() / "missing";
        QVERIFY_THROWS_EXCEPTION(std::system_error, StandInSites({missing, there}));
        QVERIFY_THROWS_EXCEPTION(std::system_error, StandInSites({there, missing}));
    }
};

QTEST_GUILESS_MAIN(StandInSitesTest)
#include "tst_StandInSites.moc"
