// SPDX-License-Identifier: MIT
#pragma once

#include "errors/PlatformError.h"
#include "network/HttpSession.h"
#include "support/Failures.h"
#include "support/Requests.h"
#include "support/ResultOf.h"

#include <QtTest>

namespace cartloom
{

/// The response to a request for a text.
[[nodiscard]] inline HttpResponse fetchText(const HttpRequest& request, const CancellationToken& token = {})
{
    HttpSession session;
    return resultOf(session.fetch(request, token));
}

/// The network error of a request for a text; none if it succeeds.
[[nodiscard]] inline std::optional<PlatformError> failureOfRequest(const HttpRequest& request,
                                                                   const CancellationToken& token = {})
{
    return failureOf<PlatformError>([&] { return fetchText(request, token); });
}

/// Checks domain, code and description of a network error. No description contains an address.
inline void verifyUrlError(const std::optional<PlatformError>& error, int code, const QString& description)
{
    QVERIFY(error);
    QCOMPARE(error->domain, QStringLiteral("NSURLErrorDomain"));
    QCOMPARE(error->code, code);
    QCOMPARE(error->description, description);
}

} // namespace cartloom
