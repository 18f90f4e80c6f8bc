// SPDX-License-Identifier: MIT
#include "emulator/AresInstaller.h"

#include "async/RunOnWorker.h"
#include "emulator/ReleaseReply.h"
#include "errors/AppError.h"
#include "network/HttpSession.h"
#include "network/Origins.h"

namespace cartloom::AresInstaller
{

namespace
{

QUrl latestURL()
{
    QUrl latest = Origins::releaseApi();
    latest.setPath(QStringLiteral("/repos/ares-emulator/ares/releases/latest"));
    return latest;
}

HttpRequest requestFor(std::chrono::milliseconds timeout)
{
    return {.url = latestURL().toEncoded().toStdString(),
            .headers = {"User-Agent: QuilletPlayer", "Accept: application/vnd.github+json"},
            .limits = limitsFor(timeout),
            .schemes = Origins::schemesFor(Origins::releaseApi())};
}

} // namespace

QCoro::Task<AresRelease> fetchLatest(CancellationToken token, Timeouts timeouts)
{
    HttpSession session;
    const HttpRequest request = requestFor(timeouts.releaseLookup);
    const HttpResponse response = co_await session.fetch(request, token);
    if (!response.isSuccess())
        throw AppError(QStringLiteral("GitHub answered with error %1 when asking for the latest Ares.")
                           .arg(*response.status));
    co_return co_await runOnWorker([&response] { return releaseIn(response.body); });
}

} // namespace cartloom::AresInstaller
