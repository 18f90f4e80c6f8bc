// SPDX-License-Identifier: MIT
#include "platform/NetworkErrors.h"

namespace cartloom::NetworkErrors
{

namespace
{

/// Whether this is one of the errors with which the network layer repeats an HTTP status of 400 and above.
bool restatesStatus(QNetworkReply::NetworkError error)
{
    return error == QNetworkReply::ProxyAuthenticationRequiredError ||
           error == QNetworkReply::ProtocolInvalidOperationError ||
           (error >= QNetworkReply::ContentAccessDenied && error <= QNetworkReply::UnknownContentError) ||
           (error >= QNetworkReply::InternalServerError && error <= QNetworkReply::UnknownServerError);
}

int codeOf(QNetworkReply::NetworkError error, Handshake handshake, bool secure)
{
    switch (static_cast<int>(error)) {
    case QNetworkReply::OperationCanceledError:
        // Our own abort never comes here, so this is the inactivity limit.
        return UrlError::timedOut;
    case QNetworkReply::TimeoutError:
        return UrlError::timedOut;
    case QNetworkReply::RemoteHostClosedError:
        return secure && handshake == Handshake::Unfinished ? UrlError::secureConnectionFailed
                                                            : UrlError::networkConnectionLost;
    case QNetworkReply::HostNotFoundError:
        return UrlError::cannotFindHost;
    case QNetworkReply::ConnectionRefusedError:
        return UrlError::cannotConnectToHost;
    case QNetworkReply::TemporaryNetworkFailureError:
    case QNetworkReply::NetworkSessionFailedError:
    case QNetworkReply::UnknownNetworkError:
        return UrlError::notConnectedToInternet;
    case QNetworkReply::TooManyRedirectsError:
        return UrlError::tooManyRedirects;
    case QNetworkReply::ProtocolUnknownError:
        return UrlError::unsupportedUrl;
    case QNetworkReply::InsecureRedirectError:
        return UrlError::plainHttpRefused;
    case QNetworkReply::SslHandshakeFailedError:
        return handshake == Handshake::CertificateRefused ? UrlError::serverCertificateUntrusted
                                                          : UrlError::secureConnectionFailed;
    case QNetworkReply::ProxyNotFoundError:
        return UrlError::cannotFindHost;
    case QNetworkReply::ProxyTimeoutError:
        return UrlError::timedOut;
    case QNetworkReply::ProxyConnectionRefusedError:
    case QNetworkReply::ProxyConnectionClosedError:
    case QNetworkReply::ProxyAuthenticationRequiredError:
    case QNetworkReply::UnknownProxyError:
        return UrlError::cannotConnectToHost;
    case QNetworkReply::ProtocolFailure:
    case QNetworkReply::UnknownContentError:
        return UrlError::badServerResponse;
    default:
        return UrlError::unknown;
    }
}

} // namespace

std::optional<PlatformError> translate(const QNetworkReply& reply, Handshake handshake)
{
    const auto error = reply.error();
    const bool hasStatus = reply.attribute(QNetworkRequest::HttpStatusCodeAttribute).isValid();
    if (error == QNetworkReply::NoError || (hasStatus && restatesStatus(error)))
        return std::nullopt;
    // On a connection that is used again there is no handshake to be told of.
    if (hasStatus)
        handshake = Handshake::Finished;
    return urlError(codeOf(error, handshake, reply.url().scheme() == QLatin1String("https")));
}

} // namespace cartloom::NetworkErrors
