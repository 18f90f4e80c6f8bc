// SPDX-License-Identifier: MIT
#include "errors/PlatformError.h"

#include <string_view>

namespace cartloom
{

PlatformError::PlatformError(const char* errorDomain, int errorCode, const QString& errorDescription)
    : domain(QString::fromLatin1(errorDomain))
    , code(errorCode)
    , description(errorDescription)
    , m_what(errorDescription.toUtf8())
{
}

namespace
{

std::string_view urlErrorDescription(int code)
{
    switch (code) {
    case UrlError::cancelled:
        return "The request was cancelled.";
    case UrlError::timedOut:
        return "The request timed out.";
    case UrlError::unsupportedUrl:
        return "This kind of address is not supported.";
    case UrlError::cannotFindHost:
        return "The server could not be found.";
    case UrlError::cannotConnectToHost:
        return "The connection to the server could not be made.";
    case UrlError::networkConnectionLost:
        return "The network connection was lost.";
    case UrlError::tooManyRedirects:
        return "Too many redirects.";
    case UrlError::notConnectedToInternet:
        return "There is no network connection.";
    case UrlError::badServerResponse:
        return "The server's answer could not be understood.";
    case UrlError::cannotDecodeRawData:
        return "The server's answer is damaged.";
    case UrlError::plainHttpRefused:
        return "The address is not a secure one.";
    case UrlError::dataLengthExceedsMaximum:
        return "The server's answer is too long.";
    case UrlError::secureConnectionFailed:
        return "A secure connection to the server could not be made.";
    case UrlError::serverCertificateUntrusted:
        return "The server's certificate is not trusted.";
    default:
        return "The request failed.";
    }
}

} // namespace

PlatformError urlError(int code)
{
    const auto description = urlErrorDescription(code);
    return {ErrorDomain::url, code,
            QString::fromLatin1(description.data(), static_cast<qsizetype>(description.size()))};
}

} // namespace cartloom
