// SPDX-License-Identifier: MIT
#pragma once

#include <exception>
#include <optional>
#include <system_error>

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

/// The errno with which the operation fails; 0 when it does not.
template <typename Operation>
[[nodiscard]] int errnoOf(Operation&& operation)
{
    const auto error = failureOf<std::system_error>([&] {
        operation();
        return 0;
    });
    return error ? error->code().value() : 0;
}

} // namespace cartloom
