// SPDX-License-Identifier: MIT
#pragma once

#include <QNetworkRequest>

#include <chrono>

namespace cartloom
{

/// A request for an address, with an inactivity limit that is longer than any answer from this machine takes.
[[nodiscard]] inline QNetworkRequest requestFor(const QUrl& url,
                                                std::chrono::milliseconds limit = std::chrono::seconds(20))
{
    QNetworkRequest request(url);
    request.setTransferTimeout(static_cast<int>(limit.count()));
    return request;
}

/// The same for a form that is sent as plain text.
[[nodiscard]] inline QNetworkRequest formFor(const QUrl& url)
{
    auto request = requestFor(url);
    request.setRawHeader("Content-Type", "text/plain");
    return request;
}

} // namespace cartloom
