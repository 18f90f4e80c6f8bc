// SPDX-License-Identifier: MIT
#pragma once

#include "platform/HttpSession.h"
#include "support/Failures.h"
#include "support/ResultOf.h"

#include <QtTest>

namespace cartloom
{

/// How a request for a page fails; none when it does not.
[[nodiscard]] inline std::optional<PlatformError> failureOfRequest(const QNetworkRequest& request)
{
    HttpSession session;
    return failureOf<PlatformError>([&] { return resultOf(session.get(request, {})); });
}

/// Checks the whole of a network error, and that it tells no address.
inline void verifyUrlError(const std::optional<PlatformError>& error, int code, const QString& description)
{
    QVERIFY(error);
    QCOMPARE(error->domain, QStringLiteral("NSURLErrorDomain"));
    QCOMPARE(error->code, code);
    QCOMPARE(error->description, description);
    QVERIFY(!error->description.contains(QStringLiteral("127.0.0.1")));
    QVERIFY(!error->description.contains(QStringLiteral("http")));
}

} // namespace cartloom
