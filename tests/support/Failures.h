// SPDX-License-Identifier: MIT
#pragma once

#include <exception>
#include <optional>

namespace cartloom
{

/// The error of this type that the operation throws; none when it throws nothing. Any other error is thrown
/// on.
template <typename Error, typename Operation>
[[nodiscard]] std::optional<Error> failureOf(Operation&& operation)
{
    try {
        static_cast<void>(operation());
    } catch (const Error& error) {
        return error;
    }
    return std::nullopt;
}

} // namespace cartloom
