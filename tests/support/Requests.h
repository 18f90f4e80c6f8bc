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

} // namespace cartloom
