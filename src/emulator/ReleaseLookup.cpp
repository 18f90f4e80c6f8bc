// SPDX-License-Identifier: MIT
#include "emulator/AresInstaller.h"

#include "emulator/ReleaseReply.h"
#include "game/AppError.h"
#include "game/Origins.h"
#include "platform/HttpSession.h"

#include <chrono>

using namespace std::chrono_literals;

namespace cartloom::AresInstaller
{

namespace
{

constexpr auto lookupTimeout = 30s;

QUrl latestURL()
{
    QUrl latest = Origins::releaseApi();
    latest.setPath(QStringLiteral("/repos/ares-emulator/ares/releases/latest"));
    return latest;
}

} // namespace

QCoro::Task<AresRelease> fetchLatest(CancellationToken token)
{
    QNetworkRequest request(latestURL());
    request.setRawHeader("User-Agent", "QuilletPlayer");
    request.setRawHeader("Accept", "application/vnd.github+json");
    request.setTransferTimeout(static_cast<int>(std::chrono::milliseconds(lookupTimeout).count()));

    HttpSession session;
    const HttpAnswer answer = co_await session.get(request, token);
    if (!answer.isSuccess())
        throw AppError(QStringLiteral("GitHub answered with error %1 when asking for the latest Ares.")
                           .arg(*answer.status));
    co_return releaseIn(answer.body);
}

} // namespace cartloom::AresInstaller
