// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <QUrl>

#include <optional>
#include <string>

namespace cartloom
{

/// The bytes of an address that a server gave; none if the text is no valid URL. QUrl only checks: it would
/// rewrite escapes such as %7E, which breaks signed links.
[[nodiscard]] inline std::optional<std::string> parseLink(const QString& text)
{
    const QUrl url(text, QUrl::StrictMode);
    return url.isValid() && !url.isEmpty() ? std::optional(text.toStdString()) : std::nullopt;
}

} // namespace cartloom
