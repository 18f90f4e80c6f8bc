// SPDX-License-Identifier: MIT
#include "StandInSites.h"

#include "PacedFile.h"
#include "StorePages.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <atomic>
#include <string>
#include <system_error>
#include <thread>

namespace cartloom
{

namespace
{

constexpr auto host = "127.0.0.1";
constexpr auto latestPath = "/repos/ares-emulator/ares/releases/latest";
constexpr auto apiAgent = "QuilletPlayer";
constexpr auto browserAgent =
    "Mozilla/5.0 (Macintosh; Intel Mac OS X 10_15_7) AppleWebKit/605.1.15 (KHTML, like Gecko) QuilletPlayer";
constexpr auto archiveName = "ares-macos-universal.zip";

bool cameFrom(const httplib::Request& request, const std::string& agent)
{
    return request.get_header_value("User-Agent") == agent;
}

void refuse(httplib::Response& response)
{
    response.status = 403;
    response.set_content("Refused.", "text/plain");
}

QJsonObject asset(const QString& name, qint64 size, const QString& folder)
{
    return {{QStringLiteral("name"), name},
            {QStringLiteral("size"), size},
            {QStringLiteral("browser_download_url"), folder + name}};
}

/// The port that the server is bound to now; -1 when that failed.
int bound(httplib::Server& server, int port)
{
    if (port == 0)
        return server.bind_to_any_port(host);
    return server.bind_to_port(host, port) ? port : -1;
}

} // namespace

class StandInSites::Server
{
public:
    explicit Server(Content content);
    ~Server();

    [[nodiscard]] std::string origin() const
    {
        return "http://" + std::string(host) + ":" + std::to_string(m_port);
    }
    [[nodiscard]] int requests() const { return m_requests; }

private:
    void answerReleases();
    void answerStore();
    [[nodiscard]] std::string releasePath() const;
    [[nodiscard]] std::string latestRelease() const;
    void sendFile(const std::filesystem::path& file, const char* type, httplib::Response& response);

    const Content m_content;
    const std::uintmax_t m_archiveSize;
    StorePages m_pages;
    StopSignal m_stop;
    std::atomic<int> m_requests = 0;
    httplib::Server m_http;
    int m_port;
    std::thread m_thread;
};

StandInSites::Server::Server(Content content)
    : m_content(std::move(content))
    , m_archiveSize(std::filesystem::file_size(m_content.emulatorArchive))
    // Bound already here, so that connections are taken from the moment on at which the object exists.
    , m_port(bound(m_http, m_content.port))
{
    // A missing game is to be known now, not when it is asked for.
    static_cast<void>(std::filesystem::file_size(m_content.game));
    if (m_port < 0)
        throw std::system_error(std::make_error_code(std::errc::address_not_available), "the port");
    // A connection that is kept open would keep its thread, and so the end of the server, waiting.
    m_http.set_keep_alive_max_count(1);
    m_http.set_pre_routing_handler([this](const httplib::Request&, httplib::Response&) {
        ++m_requests;
        return httplib::Server::HandlerResponse::Unhandled;
    });
    answerReleases();
    answerStore();
    m_thread = std::thread([this] { m_http.listen_after_bind(); });
}

StandInSites::Server::~Server()
{
    m_stop.stop();
    // To stop a server that has not begun to listen yet has no effect.
    while (!m_http.is_running())
        std::this_thread::yield();
    m_http.stop();
    m_thread.join();
}

std::string StandInSites::Server::releasePath() const
{
    return "/ares-emulator/ares/releases/download/" + m_content.tag.toStdString() + "/";
}

std::string StandInSites::Server::latestRelease() const
{
    const QString folder = QString::fromStdString(origin() + releasePath());
    // The debug symbols come first, and their name differs from the download's in one word only.
    const QJsonArray assets{
        asset(QStringLiteral("ares-macos-dSYMs.zip"), 43'118'204, folder),
        asset(QString::fromLatin1(archiveName), static_cast<qint64>(m_archiveSize), folder),
        asset(QStringLiteral("ares-windows-x64.zip"), 29'905'671, folder),
    };
    const QJsonObject release{{QStringLiteral("tag_name"), m_content.tag},
                              {QStringLiteral("name"), QStringLiteral("ares ") + m_content.tag},
                              {QStringLiteral("prerelease"), false},
                              {QStringLiteral("assets"), assets}};
    return QJsonDocument(release).toJson().toStdString();
}

void StandInSites::Server::sendFile(const std::filesystem::path& file, const char* type,
                                    httplib::Response& response)
{
    const auto transfer = std::make_shared<PacedFile>(file, m_content.bytesPerSecond, m_stop);
    response.set_content_provider(
        std::filesystem::file_size(file), type,
        [transfer](std::size_t offset, std::size_t length, httplib::DataSink& sink) {
            return transfer->send(offset, length, sink);
        });
}

void StandInSites::Server::answerReleases()
{
    m_http.Get(latestPath, [this](const httplib::Request& request, httplib::Response& response) {
        if (!cameFrom(request, apiAgent))
            return refuse(response);
        response.set_content(latestRelease(), "application/json; charset=utf-8");
    });
    m_http.Get(releasePath() + archiveName,
               [this](const httplib::Request& request, httplib::Response& response) {
                   if (!cameFrom(request, apiAgent))
                       return refuse(response);
                   sendFile(m_content.emulatorArchive, "application/octet-stream", response);
               });
}

void StandInSites::Server::answerStore()
{
    m_http.Get(StorePages::path, [this](const httplib::Request& request, httplib::Response& response) {
        if (!cameFrom(request, browserAgent))
            return refuse(response);
        const auto visit = m_pages.visit();
        response.set_header("Set-Cookie", visit.cookie + "; Path=/; HttpOnly");
        response.set_content(visit.page, "text/html; charset=utf-8");
    });
    m_http.Post(StorePages::formPath(), [this](const httplib::Request& request, httplib::Response& response) {
        const bool fromPage = cameFrom(request, browserAgent) &&
                              request.get_header_value("Referer") == origin() + StorePages::path &&
                              request.get_param_value("source") == "game_download";
        if (!fromPage ||
            !m_pages.accepts(request.get_header_value("Cookie"), request.get_param_value("csrf_token")))
            return refuse(response);
        const QJsonObject link{
            {QStringLiteral("url"), QString::fromStdString(origin() + StorePages::gamePath())}};
        response.set_content(QJsonDocument(link).toJson().toStdString(), "application/json");
    });
    m_http.Get(StorePages::gamePath(), [this](const httplib::Request& request, httplib::Response& response) {
        // The file lies with another service, which a store cookie has no business with.
        if (!cameFrom(request, browserAgent) || request.has_header("Cookie"))
            return refuse(response);
        sendFile(m_content.game, "application/octet-stream", response);
    });
}

StandInSites::StandInSites(Content content)
    : m_server(std::make_unique<Server>(std::move(content)))
{
}

StandInSites::~StandInSites() = default;

QUrl StandInSites::origin() const
{
    return QUrl(QString::fromStdString(m_server->origin()));
}

int StandInSites::requests() const
{
    return m_server->requests();
}

} // namespace cartloom
