// SPDX-License-Identifier: MIT
#pragma once

#include "platform/Errors.h"

#include <QNetworkReply>

#include <optional>

namespace cartloom::NetworkErrors
{

/// How far securing the connection has come.
enum class Handshake { Unfinished, CertificateRefused, Finished };

/// Why the answer of a reply that has finished did not come whole; none when it did. An error that only
/// restates the answer's status is none: then the status is what to judge. Of the reply's thread.
[[nodiscard]] std::optional<PlatformError> translate(const QNetworkReply& reply, Handshake handshake);

} // namespace cartloom::NetworkErrors
