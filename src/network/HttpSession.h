// SPDX-License-Identifier: MIT
#pragma once

#include "async/Cancellation.h"
#include "network/CookieJar.h"
#include "network/HttpRequest.h"
#include "network/HttpResponse.h"

#include <QCoroTask>

namespace cartloom
{

/// Fetches texts into memory. Cookies of one response are sent with the next request. Main thread.
class HttpSession
{
public:
    /// One request at a time; the session must outlive it. Throws PlatformError for network failures, for a
    /// cancellation and for a body over 8 MiB.
    [[nodiscard]] QCoro::Task<HttpResponse> fetch(HttpRequest request, CancellationToken token);

private:
    CookieJar m_cookies;
};

} // namespace cartloom
