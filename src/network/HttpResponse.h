// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>

#include <optional>

namespace cartloom
{

/// A complete response.
struct HttpResponse
{
    /// None for a local file.
    std::optional<int> status;
    /// Empty if the body went elsewhere, and for a status outside 200 to 299.
    QByteArray body = {};

    /// False for a status outside 200 to 299.
    [[nodiscard]] bool isSuccess() const { return !status || (*status >= 200 && *status <= 299); }
};

} // namespace cartloom
