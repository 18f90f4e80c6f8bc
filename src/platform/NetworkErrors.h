// SPDX-License-Identifier: MIT
#pragma once

#include "platform/Errors.h"

#include <QNetworkReply>

#include <optional>

namespace cartloom::NetworkErrors
{

/// What a network error means to everything above. None for an error that only restates the status of a whole
/// answer: then the status is what to judge. Any thread.
[[nodiscard]] std::optional<PlatformError> translate(QNetworkReply::NetworkError error, bool hasStatus,
                                                     bool certificateRefused);

} // namespace cartloom::NetworkErrors
