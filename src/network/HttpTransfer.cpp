// SPDX-License-Identifier: MIT
#include "network/HttpTransfer.h"

#include "errors/PlatformError.h"
#include "network/CookieJar.h"
#include "network/CurlErrors.h"
#include "network/Origins.h"
#include "network/Proxy.h"

#include <QString>

#include <algorithm>
#include <array>
#include <new>
#include <utility>

namespace cartloom
{

namespace
{

using namespace std::chrono_literals;

constexpr long bufferBytes = 256 * 1024;
constexpr auto reportInterval = 100ms;

/// Loads libcurl's own libraries. Not at the start of the program, where it costs 5 ms.
void initialise()
{
    static const CURLcode result = curl_global_init(CURL_GLOBAL_DEFAULT);
    if (result != CURLE_OK)
        throw urlError(UrlError::unknown);
}

std::string schemeOf(const std::string& url)
{
    return QString::fromStdString(url).section(u':', 0, 0).toLower().toStdString();
}

bool isRedirect(std::optional<int> status)
{
    constexpr std::array redirects{301, 302, 303, 307, 308};
    return status && std::ranges::find(redirects, *status) != redirects.end();
}

} // namespace

HttpTransfer::HttpTransfer(HttpRequest request, CancellationToken token, CookieJar* cookies)
    : m_request(std::move(request))
    , m_token(std::move(token))
    , m_cookies(cookies)
{
    initialise();
    m_easy.reset(curl_easy_init());
    m_multi.reset(curl_multi_init());
    if (!m_easy || !m_multi)
        throw std::bad_alloc();
}

HttpResponse HttpTransfer::perform(const Sink& sink, const ProgressCallback& progress)
{
    m_sink = sink;
    m_progress = progress;
    for (int redirects = 0;; ++redirects) {
        requireAllowedScheme();
        prepare();
        runToEnd();
        const auto target = redirectTarget();
        if (!target)
            return {status()};
        if (redirects == m_request.limits.maxRedirects)
            throw urlError(UrlError::tooManyRedirects);
        follow(*target);
    }
}

void HttpTransfer::requireAllowedScheme()
{
    const std::string scheme = schemeOf(m_request.url);
    const bool isFile = m_request.schemes == AllowedSchemes::file;
    if (scheme == "http" && !isFile && (m_wasSecure || m_request.schemes == AllowedSchemes::https))
        throw urlError(UrlError::plainHttpRefused);
    if (scheme != (isFile ? "file" : "https") && (isFile || scheme != "http"))
        throw urlError(UrlError::unsupportedUrl);
    m_wasSecure = m_wasSecure || scheme == "https";
}

void HttpTransfer::prepare()
{
    CURL* const easy = m_easy.get();
    const auto set = [easy](CURLoption option, auto value) { curl_easy_setopt(easy, option, value); };
    set(CURLOPT_URL, m_request.url.c_str());
    set(CURLOPT_PATH_AS_IS, 1L);
    if (m_request.method == "POST") {
        set(CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(m_request.body.size()));
        set(CURLOPT_POSTFIELDS, m_request.body.c_str());
    } else {
        set(CURLOPT_HTTPGET, 1L);
    }
    m_headers.reset();
    for (const auto& line : m_request.headers)
        m_headers.reset(curl_slist_append(m_headers.release(), line.c_str()));
    m_headers.reset(curl_slist_append(m_headers.release(), "Accept-Encoding: identity"));
    set(CURLOPT_HTTPHEADER, m_headers.get());
    // ContentDecoder does it.
    set(CURLOPT_HTTP_CONTENT_DECODING, 0L);

    const std::string proxy = proxyFor(m_request.url);
    set(CURLOPT_PROXY, proxy.c_str());
    set(CURLOPT_NOPROXY, "");
    if (const auto authorities = Origins::certificateAuthorities(); !authorities.empty())
        set(CURLOPT_CAINFO, authorities.c_str());
    if (m_cookies)
        m_cookies->attachTo(easy);

    set(CURLOPT_CONNECTTIMEOUT_MS, static_cast<long>(m_request.limits.connectTimeout.count()));
    set(CURLOPT_NOSIGNAL, 1L);
    // A cancellation does not wait for the name lookup, which cannot be interrupted.
    set(CURLOPT_QUICK_EXIT, 1L);
    set(CURLOPT_BUFFERSIZE, bufferBytes);
    set(CURLOPT_HEADERFUNCTION, &callback<&HttpTransfer::takeHeader>);
    set(CURLOPT_HEADERDATA, this);
    set(CURLOPT_WRITEFUNCTION, &callback<&HttpTransfer::takeBody>);
    set(CURLOPT_WRITEDATA, this);
    set(CURLOPT_DEBUGFUNCTION, &HttpTransfer::trace);
    set(CURLOPT_DEBUGDATA, this);
    set(CURLOPT_VERBOSE, 1L);
    m_head = {};
    m_inBody = false;
    m_bodyRefused = false;
}

/// Libcurl's own low-speed limit counts in seconds and averages; the idle timeout must not.
void HttpTransfer::runToEnd()
{
    CURLM* const multi = m_multi.get();
    const CancellationCallback onCancel(m_token, [multi] { curl_multi_wakeup(multi); });
    curl_multi_add_handle(multi, m_easy.get());
    auto lastByte = Clock::now();
    int running = 1;
    while (true) {
        if (m_token.isCancelled())
            throw urlError(UrlError::cancelled);
        curl_multi_perform(multi, &running);
        if (running == 0)
            break;
        if (m_head.isFramingEndless())
            throw urlError(UrlError::badServerResponse);
        const auto idle = std::chrono::ceil<std::chrono::milliseconds>(Clock::now() - lastByte);
        const auto left = m_request.limits.idleTimeout - idle;
        if (left <= 0ms)
            throw urlError(UrlError::timedOut);
        int ready = 0;
        curl_multi_poll(multi, nullptr, 0, static_cast<int>(left.count()), &ready);
        if (ready > 0)
            lastByte = Clock::now();
    }
    int remaining = 0;
    const CURLMsg* const message = curl_multi_info_read(multi, &remaining);
    const CURLcode result = message ? message->data.result : CURLE_FAILED_INIT;
    curl_multi_remove_handle(multi, m_easy.get());

    if (m_failure)
        std::rethrow_exception(m_failure);
    // A refusal counts as such, however its body ends.
    const bool isRefusal = !HttpResponse{status()}.isSuccess();
    if (result != CURLE_OK && !isRefusal)
        throw CurlErrors::translate(result, m_easy.get());
    // libcurl accepts a head that is cut short.
    if (status() && !m_head.isComplete() && !isRefusal)
        throw urlError(UrlError::networkConnectionLost);
    if (m_inBody && m_decoder)
        m_decoder->finish();
    if (m_inBody && m_reported != m_received)
        report();
}

std::optional<int> HttpTransfer::status() const
{
    long status = 0;
    curl_easy_getinfo(m_easy.get(), CURLINFO_RESPONSE_CODE, &status);
    return status > 0 ? std::optional(static_cast<int>(status)) : std::nullopt;
}

std::string HttpTransfer::header(const char* name) const
{
    curl_header* found = nullptr;
    curl_easy_header(m_easy.get(), name, 0, CURLH_HEADER, -1, &found);
    return found ? found->value : std::string();
}

std::optional<std::string> HttpTransfer::redirectTarget() const
{
    const std::string location = isRedirect(status()) ? header("Location") : std::string();
    if (location.empty())
        return std::nullopt;
    constexpr unsigned flags = CURLU_PATH_AS_IS | CURLU_NON_SUPPORT_SCHEME;
    const Curl::Url url(curl_url());
    char* target = nullptr;
    if (curl_url_set(url.get(), CURLUPART_URL, m_request.url.c_str(), flags) != CURLUE_OK ||
        curl_url_set(url.get(), CURLUPART_URL, location.c_str(), flags | CURLU_URLENCODE) != CURLUE_OK ||
        curl_url_get(url.get(), CURLUPART_URL, &target, 0) != CURLUE_OK)
        throw urlError(UrlError::unsupportedUrl);
    return std::string(Curl::Text(target).get());
}

void HttpTransfer::follow(const std::string& target)
{
    // Only these two repeat the body.
    if (status() != 307 && status() != 308) {
        m_request.method = "GET";
        m_request.body.clear();
    }
    m_request.url = target;
}

template <auto Take>
std::size_t HttpTransfer::callback(char* data, std::size_t size, std::size_t count, void* transfer)
{
    auto* const self = static_cast<HttpTransfer*>(transfer);
    try {
        (self->*Take)(data, size * count);
    } catch (...) {
        self->m_failure = std::current_exception();
    }
    // Any other number makes libcurl end the transfer.
    return self->m_failure || self->m_bodyRefused ? size * count + 1 : size * count;
}

/// The one callback that sees the extensions of chunks. libcurl drops them, whatever their length.
int HttpTransfer::trace(CURL*, curl_infotype type, char*, std::size_t length, void* transfer)
{
    if (type == CURLINFO_DATA_IN)
        static_cast<HttpTransfer*>(transfer)->m_head.takeFramed(length);
    return 0;
}

void HttpTransfer::takeHeader(const char* line, std::size_t length)
{
    m_head.takeLine({line, length});
    long proxyStatus = 0;
    curl_easy_getinfo(m_easy.get(), CURLINFO_HTTP_CONNECTCODE, &proxyStatus);
    // libcurl 7.88 would read the body of a refused tunnel to its end, byte by byte.
    if (m_head.isComplete() && proxyStatus >= 300)
        throw urlError(UrlError::networkConnectionLost);
}

void HttpTransfer::takeBody(const char* data, std::size_t length)
{
    m_head.takeBody();
    if (!m_inBody)
        startBody();
    if (m_bodyRefused)
        return;
    if (m_decoder)
        m_decoder->write(data, length);
    else
        takeDecoded(data, length);
}

void HttpTransfer::startBody()
{
    // The body of a refusal or a redirect is useless and may be endless.
    m_bodyRefused = !HttpResponse{status()}.isSuccess();
    if (m_bodyRefused)
        return;
    m_inBody = true;
    const QString encoding = QString::fromStdString(header("Content-Encoding")).toLower();
    if (encoding == u"gzip" || encoding == u"x-gzip" || encoding == u"deflate")
        m_decoder =
            std::make_unique<ContentDecoder>([this](const char* d, std::size_t n) { takeDecoded(d, n); });
    else if (!encoding.isEmpty() && encoding != u"identity")
        throw urlError(UrlError::cannotDecodeRawData);
    curl_off_t announced = -1;
    curl_easy_getinfo(m_easy.get(), CURLINFO_CONTENT_LENGTH_DOWNLOAD_T, &announced);
    m_expected = m_decoder ? -1 : static_cast<qint64>(announced);
}

void HttpTransfer::takeDecoded(const char* data, std::size_t length)
{
    const auto taken =
        std::min<qint64>(static_cast<qint64>(length), m_request.limits.maxBodyBytes - m_received);
    m_sink(data, static_cast<std::size_t>(taken));
    m_received += taken;
    if (std::cmp_less(taken, length))
        throw urlError(UrlError::dataLengthExceedsMaximum);
    if (Clock::now() - m_lastReport >= reportInterval)
        report();
}

void HttpTransfer::report()
{
    m_lastReport = Clock::now();
    m_reported = m_received;
    if (m_progress)
        m_progress(m_received, m_expected);
}

} // namespace cartloom
