// SPDX-License-Identifier: MIT
#include "network/CurlErrors.h"

#include <system_error>

namespace cartloom::CurlErrors
{

namespace
{

/// CURLE_TOO_LARGE, which the headers of libcurl 7.88 do not declare.
constexpr int tooLarge = 100;

bool isUnreachable(CURL* easy)
{
    long number = 0;
    curl_easy_getinfo(easy, CURLINFO_OS_ERRNO, &number);
    const std::error_code error(static_cast<int>(number), std::generic_category());
    return error == std::errc::network_unreachable || error == std::errc::host_unreachable;
}

bool hasConnected(CURL* easy)
{
    long connections = 0;
    curl_easy_getinfo(easy, CURLINFO_NUM_CONNECTS, &connections);
    return connections > 0;
}

int codeOf(CURLcode code, CURL* easy)
{
    // libcurl has a hundred codes; those not named here are of one kind for the player.
    switch (static_cast<int>(code)) {
    case CURLE_ABORTED_BY_CALLBACK:
        return UrlError::cancelled;
    case CURLE_OPERATION_TIMEDOUT:
        return UrlError::timedOut;
    case CURLE_COULDNT_RESOLVE_HOST:
    case CURLE_COULDNT_RESOLVE_PROXY:
        return UrlError::cannotFindHost;
    case CURLE_COULDNT_CONNECT:
        return isUnreachable(easy) ? UrlError::notConnectedToInternet : UrlError::cannotConnectToHost;
    case CURLE_PARTIAL_FILE:
    case CURLE_RECV_ERROR:
    case CURLE_SEND_ERROR:
    case CURLE_GOT_NOTHING:
        return UrlError::networkConnectionLost;
    case CURLE_TOO_MANY_REDIRECTS:
        return UrlError::tooManyRedirects;
    case CURLE_UNSUPPORTED_PROTOCOL:
        // On a connection, libcurl reports an answer that is not HTTP in this way.
        return hasConnected(easy) ? UrlError::badServerResponse : UrlError::unsupportedUrl;
    case CURLE_URL_MALFORMAT:
        return UrlError::unsupportedUrl;
    case CURLE_WEIRD_SERVER_REPLY:
    // A header line over 100 KB: the former in libcurl 7.88, the latter in newer versions.
    case CURLE_OUT_OF_MEMORY:
    case tooLarge:
        return UrlError::badServerResponse;
    case CURLE_BAD_CONTENT_ENCODING:
        return UrlError::cannotDecodeRawData;
    case CURLE_SSL_CONNECT_ERROR:
        return UrlError::secureConnectionFailed;
    case CURLE_PEER_FAILED_VERIFICATION:
        return UrlError::serverCertificateUntrusted;
    default:
        return UrlError::unknown;
    }
}

} // namespace

PlatformError translate(CURLcode code, CURL* easy)
{
    return urlError(codeOf(code, easy));
}

} // namespace cartloom::CurlErrors
