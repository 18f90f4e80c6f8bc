// SPDX-License-Identifier: MIT
#include "game/GameDownloader.h"

#include "async/RunOnWorker.h"
#include "errors/AppError.h"
#include "game/RomCheck.h"
#include "network/FileDownloader.h"
#include "network/HttpSession.h"
#include "network/Link.h"
#include "network/Origins.h"
#include "platform/Files.h"
#include "storage/Paths.h"
#include "storage/Removal.h"
#include "storage/WholeFiles.h"
#include "storage/WorkFolder.h"

#include <chrono>

namespace cartloom::GameDownloader
{

namespace
{

/// A desktop browser's identity with the launcher's own token at its end.
constexpr auto userAgent =
    "Mozilla/5.0 (Macintosh; Intel Mac OS X 10_15_7) AppleWebKit/605.1.15 (KHTML, like Gecko) QuilletPlayer";

HttpRequest requestFor(std::string url, std::chrono::milliseconds timeout)
{
    return {.url = std::move(url),
            .headers = {std::string("User-Agent: ") + userAgent},
            .limits = limitsFor(timeout),
            .schemes = Origins::schemesFor(Origins::store())};
}

HttpRequest formRequest(std::string url, const QString& securityToken, std::chrono::milliseconds timeout)
{
    auto request = requestFor(std::move(url), timeout);
    request.method = "POST";
    request.headers.emplace_back("Content-Type: application/x-www-form-urlencoded");
    request.headers.push_back("Referer: " + pageURL().toEncoded().toStdString());
    request.body = "csrf_token=" + QUrl::toPercentEncoding(securityToken).toStdString();
    return request;
}

QCoro::Task<QString> loadPage(HttpSession& session, CancellationToken token,
                              std::chrono::milliseconds timeout)
{
    const auto request = requestFor(pageURL().toEncoded().toStdString(), timeout);
    const auto response = co_await session.fetch(request, token);
    if (!response.isSuccess())
        throw AppError(QStringLiteral("The Gamestall page answered with error %1.").arg(*response.status));
    co_return QString::fromUtf8(response.body);
}

std::string formAddress(const QString& uploadID)
{
    const QString text = QString::fromLatin1(pageURL().toEncoded()) + QStringLiteral("/file/") + uploadID +
                         QStringLiteral("?source=game_download");
    const auto address = parseLink(text);
    if (!address)
        throw AppError(QStringLiteral("Could not build the download address."));
    return *address;
}

/// Presses the download button of the page: from the page to the link in the reply to its form.
QCoro::Task<std::string> askForLink(CancellationToken token, std::chrono::milliseconds timeout)
{
    HttpSession session;
    const QString page = co_await loadPage(session, token, timeout);
    const auto securityToken = parseCSRF(page);
    if (!securityToken)
        throw AppError(QStringLiteral("The Gamestall page has changed: the security token was not found."));
    const auto uploadID = parseUploadID(page);
    if (!uploadID)
        throw AppError(
            QStringLiteral("The Gamestall page has changed: the file Quillet64.z64 was not found."));

    const auto request = formRequest(formAddress(*uploadID), *securityToken, timeout);
    const auto response = co_await session.fetch(request, token);
    if (!response.isSuccess())
        throw AppError(
            QStringLiteral("Gamestall refused the download request (error %1).").arg(*response.status));
    co_return linkIn(response.body);
}

} // namespace

QCoro::Task<std::filesystem::path> download(ProgressCallback progress, CancellationToken token,
                                            Timeouts timeouts)
{
    const std::string link = co_await askForLink(token, timeouts.store);

    co_await runOnWorker(Paths::removeLeftovers);
    const WorkFolder workFolder(Paths::newWorkDir("download-game"));
    FileDownloader downloader(workFolder.path() / Paths::gameFile().filename(), std::move(progress));
    auto request = requestFor(link, timeouts.game);
    // One byte more shows that there is too much.
    request.limits.maxBodyBytes = RomCheck::maxGameBytes + 1;
    const auto file = co_await downloader.download(request, token);
    co_await runOnWorker([&file] {
        RomCheck::validate(file, true);
        install(file, false);
    });
    co_return Paths::gameFile();
}

void install(const std::filesystem::path& file, bool keepOriginal)
{
    Paths::ensureSupport();
    const auto target = Paths::gameFile();
    // The installed game itself is chosen as easily as any other copy.
    if (keepOriginal && Files::isSame(file, target))
        return;
    if (!keepOriginal)
        Files::flush(file);
    Removal::remove(target);
    if (keepOriginal) {
        WholeFiles::copy(file, target);
    } else {
        Files::move(file, target);
        Files::tryFlush(Paths::support());
    }
}

} // namespace cartloom::GameDownloader
