// SPDX-License-Identifier: MIT
#include "game/GameDownloader.h"

#include "core/Paths.h"
#include "game/AppError.h"
#include "game/FileDownloader.h"
#include "game/RomCheck.h"
#include "platform/Files.h"
#include "platform/HttpSession.h"
#include "platform/WorkFolder.h"
#include "platform/WorkThread.h"

#include <QCoroFuture>

#include <chrono>

using namespace std::chrono_literals;

namespace cartloom::GameDownloader
{

namespace
{

/// The identity of a desktop browser, with the launcher's own name at its end.
constexpr auto userAgent =
    "Mozilla/5.0 (Macintosh; Intel Mac OS X 10_15_7) AppleWebKit/605.1.15 (KHTML, like Gecko) QuilletPlayer";

/// The shorter of the two limits that hold for the page and the form: 30 seconds for every request of the
/// page's session, 60 seconds for the request itself.
constexpr auto pageTimeout = 30s;
constexpr auto fileTimeout = 60s;

QNetworkRequest requestFor(const QUrl& url, std::chrono::milliseconds timeout)
{
    QNetworkRequest request(url);
    request.setRawHeader("User-Agent", userAgent);
    request.setTransferTimeout(static_cast<int>(timeout.count()));
    return request;
}

QNetworkRequest formRequest(const QUrl& url)
{
    auto request = requestFor(url, pageTimeout);
    request.setHeader(QNetworkRequest::ContentTypeHeader,
                      QStringLiteral("application/x-www-form-urlencoded"));
    request.setRawHeader("Referer", pageURL().toEncoded());
    return request;
}

QCoro::Task<QString> loadPage(HttpSession& session, CancellationToken token)
{
    const auto request = requestFor(pageURL(), pageTimeout);
    const HttpAnswer answer = co_await session.get(request, token);
    if (!answer.isSuccess())
        throw AppError(QStringLiteral("The Gamestall page answered with error %1.").arg(*answer.status));
    co_return QString::fromUtf8(answer.body);
}

QUrl formAddress(const QString& uploadID)
{
    const QString text = QString::fromLatin1(pageURL().toEncoded()) + QStringLiteral("/file/") + uploadID +
                         QStringLiteral("?source=game_download");
    const auto address = parseUrl(text);
    if (!address)
        throw AppError(QStringLiteral("Could not build the download address."));
    return *address;
}

/// Presses the download button of the page: from the page to the link that its form answers with.
QCoro::Task<QUrl> askForLink(CancellationToken token)
{
    HttpSession session;
    const QString page = co_await loadPage(session, token);
    const auto securityToken = parseCSRF(page);
    if (!securityToken)
        throw AppError(QStringLiteral("The Gamestall page has changed: the security token was not found."));
    const auto uploadID = parseUploadID(page);
    if (!uploadID)
        throw AppError(
            QStringLiteral("The Gamestall page has changed: the file Quillet64.z64 was not found."));

    const auto request = formRequest(formAddress(*uploadID));
    const QByteArray form = "csrf_token=" + QUrl::toPercentEncoding(*securityToken);
    const HttpAnswer answer = co_await session.post(request, form, token);
    if (!answer.isSuccess())
        throw AppError(
            QStringLiteral("Gamestall refused the download request (error %1).").arg(*answer.status));
    co_return linkIn(answer.body);
}

} // namespace

QCoro::Task<std::filesystem::path> download(ProgressCallback progress, CancellationToken token)
{
    const QUrl link = co_await askForLink(token);

    co_await onWorkThread(Paths::removeLeftovers);
    const WorkFolder workFolder(Paths::newWorkDir("download-game"));
    const auto request = requestFor(link, fileTimeout);
    FileDownloader downloader(workFolder.path() / Paths::gameFile().filename(), std::move(progress));
    const auto file = co_await downloader.download(request, token);
    RomCheck::validate(file, true);
    install(file, false);
    co_return Paths::gameFile();
}

void install(const std::filesystem::path& file, bool keepOriginal)
{
    Paths::ensureSupport();
    const auto target = Paths::gameFile();
    // The installed game itself is chosen as easily as any other copy.
    if (keepOriginal && Files::isSame(file, target))
        return;
    Files::clear(target);
    if (keepOriginal)
        Files::copy(file, target);
    else
        Files::move(file, target);
}

} // namespace cartloom::GameDownloader
