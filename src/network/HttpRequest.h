// SPDX-License-Identifier: MIT
#pragma once

#include <QtGlobal>

#include <chrono>
#include <limits>
#include <string>
#include <vector>

namespace cartloom
{

/// Bounds of one request, redirects included.
struct Limits
{
    /// Longest time without a byte from the server. Restarts with every byte received, headers included.
    std::chrono::milliseconds idleTimeout = std::chrono::seconds(60);
    /// Longest time for name lookup, connection and TLS handshake, per redirect.
    std::chrono::milliseconds connectTimeout = std::chrono::seconds(60);
    /// Largest decoded body.
    qint64 maxBodyBytes = std::numeric_limits<qint64>::max();
    int maxRedirects = 20;
};

/// Schemes that a request may use. Redirects never lead to a file, nor from https to http.
enum class AllowedSchemes { https, httpOrHttps, file };

/// A request as it is sent.
struct HttpRequest
{
    /// Sent byte for byte.
    std::string url;
    std::string method = "GET";
    /// Lines of the form "Name: value".
    std::vector<std::string> headers = {};
    std::string body = {};
    Limits limits = {};
    AllowedSchemes schemes = AllowedSchemes::https;
};

} // namespace cartloom
