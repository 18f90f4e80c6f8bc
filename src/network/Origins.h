// SPDX-License-Identifier: MIT
#pragma once

#include "network/HttpRequest.h"

#include <QString>
#include <QUrl>

#include <string>

/// The two sites that are asked, and the one that is only linked to. The product, the tests and the demo each
/// link their own definitions.
namespace cartloom::Origins
{

/// Scheme, host and port of the release service, without a path.
[[nodiscard]] QUrl releaseApi();

/// Scheme, host and port of the store that offers the game, without a path.
[[nodiscard]] QUrl store();

/// The domain name of the emulator's web site.
[[nodiscard]] QString emulatorSite();

/// The file of certificate authorities that the sites are verified against. Empty for the system's own.
[[nodiscard]] std::string certificateAuthorities();

/// The schemes for requests to a site and to the addresses that it names: http only if the site itself is
/// http.
[[nodiscard]] inline AllowedSchemes schemesFor(const QUrl& origin)
{
    return origin.scheme() == QLatin1String("http") ? AllowedSchemes::httpOrHttps : AllowedSchemes::https;
}

} // namespace cartloom::Origins
