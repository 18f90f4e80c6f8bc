// SPDX-License-Identifier: MIT
#include "errors/FriendlyError.h"

#include "errors/PlatformError.h"

#include <new>
#include <optional>
#include <system_error>

namespace cartloom::FriendlyError
{

namespace
{

constexpr int fileWriteOutOfSpace = 640;
constexpr int noSpaceLeftOnDevice = 28;
constexpr int dnsLookupFailed = -1006;

/// Any error that is not an AppError, in the terms that the sentences are chosen by.
PlatformError asPlatformError(const std::exception& error)
{
    if (const auto* platform = dynamic_cast<const PlatformError*>(&error))
        return *platform;
    if (const auto* system = dynamic_cast<const std::system_error*>(&error))
        return {ErrorDomain::posix, system->code().value(), QString::fromStdString(system->code().message())};
    if (dynamic_cast<const std::bad_alloc*>(&error))
        return asPlatformError(std::system_error(std::make_error_code(std::errc::not_enough_memory)));
    return {"CartloomErrorDomain", 1, QString::fromUtf8(error.what())};
}

std::optional<QString> networkSentence(const PlatformError& error)
{
    if (error.domain != QLatin1String(ErrorDomain::url))
        return std::nullopt;
    switch (error.code) {
    case UrlError::timedOut:
        return QStringLiteral("The server took too long to answer. Try again in a moment.");
    case UrlError::cannotFindHost:
    case UrlError::cannotConnectToHost:
    case UrlError::networkConnectionLost:
    case dnsLookupFailed:
    case UrlError::notConnectedToInternet:
        return QStringLiteral("No internet connection. Check your network and try again.");
    default:
        return std::nullopt;
    }
}

bool isDiskFull(const PlatformError& error)
{
    return (error.domain == QLatin1String(ErrorDomain::cocoa) && error.code == fileWriteOutOfSpace) ||
           (error.domain == QLatin1String(ErrorDomain::posix) && error.code == noSpaceLeftOnDevice);
}

} // namespace

AppError make(const std::exception& error, const QString& context)
{
    if (const auto* finished = dynamic_cast<const AppError*>(&error))
        return *finished;

    const PlatformError platform = asPlatformError(error);
    const QString details = context + u'\n' + platform.domain + u' ' + QString::number(platform.code) +
                            u'\n' + platform.description;
    if (isDiskFull(platform))
        return diskFull(details);
    const QString fallback = context + QStringLiteral(" failed: ") + platform.description;
    return AppError(networkSentence(platform).value_or(fallback), details);
}

AppError diskFull(const QString& details)
{
    return AppError(QStringLiteral("Your disk is full. Free some space and try again."), details);
}

bool isCancel(const std::exception& error)
{
    if (dynamic_cast<const CancellationError*>(&error))
        return true;
    const auto* platform = dynamic_cast<const PlatformError*>(&error);
    return platform && platform->domain == QLatin1String(ErrorDomain::url) &&
           platform->code == UrlError::cancelled;
}

QString localizedDescription(const std::exception& error)
{
    if (const auto* finished = dynamic_cast<const AppError*>(&error))
        return finished->errorDescription();
    return asPlatformError(error).description;
}

} // namespace cartloom::FriendlyError
