// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

#include <exception>

namespace cartloom
{

namespace ErrorDomain
{
/// Failures of the network; the codes are those of the URL loading system.
inline constexpr auto url = "NSURLErrorDomain";
/// Failures of files and processes; the code is an errno.
inline constexpr auto posix = "NSPOSIXErrorDomain";
/// Failures that a framework words itself.
inline constexpr auto cocoa = "NSCocoaErrorDomain";
} // namespace ErrorDomain

namespace UrlError
{
inline constexpr int unknown = -1;
inline constexpr int cancelled = -999;
inline constexpr int timedOut = -1001;
inline constexpr int unsupportedUrl = -1002;
inline constexpr int cannotFindHost = -1003;
inline constexpr int cannotConnectToHost = -1004;
inline constexpr int networkConnectionLost = -1005;
inline constexpr int tooManyRedirects = -1007;
inline constexpr int notConnectedToInternet = -1009;
inline constexpr int badServerResponse = -1011;
inline constexpr int cannotDecodeRawData = -1015;
inline constexpr int plainHttpRefused = -1022;
inline constexpr int dataLengthExceedsMaximum = -1103;
inline constexpr int secureConnectionFailed = -1200;
inline constexpr int serverCertificateUntrusted = -1202;
} // namespace UrlError

/// A failure as the network or a framework reports it, before FriendlyError words it for the player.
struct PlatformError : std::exception
{
    PlatformError(const char* errorDomain, int errorCode, const QString& errorDescription);

    /// The description in UTF-8.
    [[nodiscard]] const char* what() const noexcept override { return m_what.constData(); }

    QString domain;
    int code;
    QString description;

private:
    QByteArray m_what;
};

/// A network failure with the description of its code, which never contains an address.
[[nodiscard]] PlatformError urlError(int code);

/// Thrown where a task finds its token fired between two waits.
struct CancellationError : std::exception
{
    [[nodiscard]] const char* what() const noexcept override { return "The operation was cancelled."; }
};

} // namespace cartloom
