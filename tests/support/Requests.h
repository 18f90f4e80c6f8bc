// SPDX-License-Identifier: MIT
#pragma once

#include "network/HttpRequest.h"

#include <QUrl>

#include <chrono>

namespace cartloom
{

/// A request whose timeout is longer than any answer from this machine takes.
[[nodiscard]] inline HttpRequest requestFor(const std::string& url,
                                            std::chrono::milliseconds timeout = std::chrono::seconds(20))
{
    return {.url = url,
            .limits = {.idleTimeout = timeout, .connectTimeout = timeout},
            .schemes = url.starts_with("file:") ? AllowedSchemes::file : AllowedSchemes::httpOrHttps};
}

[[nodiscard]] inline HttpRequest requestFor(const QUrl& url,
                                            std::chrono::milliseconds timeout = std::chrono::seconds(20))
{
    return requestFor(url.toEncoded().toStdString(), timeout);
}

/// A form that is sent as plain text.
[[nodiscard]] inline HttpRequest formFor(const QUrl& url, const std::string& body)
{
    auto request = requestFor(url);
    request.method = "POST";
    request.headers = {"Content-Type: text/plain"};
    request.body = body;
    return request;
}

} // namespace cartloom
