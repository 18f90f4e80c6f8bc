// SPDX-License-Identifier: MIT
#pragma once

#include "async/Cancellation.h"
#include "network/ContentDecoder.h"
#include "network/CurlHandles.h"
#include "network/HttpRequest.h"
#include "network/HttpResponse.h"
#include "network/ProgressCallback.h"
#include "network/ResponseHead.h"

#include <chrono>
#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace cartloom
{

class CookieJar;

/// One request with its redirects, on the thread that calls perform().
class HttpTransfer
{
public:
    using Sink = std::function<void(const char* data, std::size_t length)>;

    /// The cookies, if any, must outlive the transfer.
    HttpTransfer(HttpRequest request, CancellationToken token, CookieJar* cookies = nullptr);

    /// Blocks until the response is complete. The sink receives the decoded body of a 2xx response, and what
    /// it throws ends the transfer. Progress is reported at most every 100 ms and at the end. Throws
    /// PlatformError for network failures and for a cancellation. To be called once.
    [[nodiscard]] HttpResponse perform(const Sink& sink, const ProgressCallback& progress = {});

private:
    using Clock = std::chrono::steady_clock;

    void requireAllowedScheme();
    void prepare();
    void runToEnd();
    [[nodiscard]] std::optional<std::string> redirectTarget() const;
    void follow(const std::string& target);

    void takeHeader(const char* line, std::size_t length);
    void takeBody(const char* data, std::size_t length);
    void takeDecoded(const char* data, std::size_t length);
    void startBody();
    void report();
    [[nodiscard]] std::optional<int> status() const;
    [[nodiscard]] std::string header(const char* name) const;

    template <auto Take>
    static std::size_t callback(char* data, std::size_t size, std::size_t count, void* transfer);
    static int trace(CURL* easy, curl_infotype type, char* data, std::size_t length, void* transfer);

    HttpRequest m_request;
    const CancellationToken m_token;
    CookieJar* const m_cookies;
    Sink m_sink;
    ProgressCallback m_progress;

    // In this order: the easy handle points to the headers, the multi handle to the easy handle.
    Curl::List m_headers;
    Curl::Easy m_easy;
    Curl::Multi m_multi;

    bool m_wasSecure = false;
    ResponseHead m_head;
    bool m_inBody = false;
    bool m_bodyRefused = false;
    std::unique_ptr<ContentDecoder> m_decoder;
    qint64 m_received = 0;
    qint64 m_expected = -1;
    qint64 m_reported = -1;
    Clock::time_point m_lastReport;
    /// Thrown inside a callback, where no exception may pass through libcurl.
    std::exception_ptr m_failure;
};

} // namespace cartloom
