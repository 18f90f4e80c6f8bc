// SPDX-License-Identifier: MIT
#pragma once

#include "network/HttpRequest.h"

#include <chrono>

namespace cartloom
{

/// Idle and connect timeouts of the requests that a first press makes.
struct Timeouts
{
    std::chrono::milliseconds releaseLookup = std::chrono::seconds(30);
    std::chrono::milliseconds emulator = std::chrono::seconds(60);
    /// The store's page and its form: the session's timeout, which is shorter than that of the requests.
    std::chrono::milliseconds store = std::chrono::seconds(30);
    std::chrono::milliseconds game = std::chrono::seconds(60);
};

/// Limits with this timeout for both the connection and the silence of the server.
[[nodiscard]] inline Limits limitsFor(std::chrono::milliseconds timeout)
{
    return {.idleTimeout = timeout, .connectTimeout = timeout};
}

} // namespace cartloom
