// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <QUrl>

/// The two web sites that are ever asked, and the one that is only linked to. Which ones is decided by what
/// is linked: the program links the addresses it was configured with, tests and the demo link their own.
namespace cartloom::Origins
{

/// Scheme, host and port of the service that knows the emulator's releases; no path.
[[nodiscard]] QUrl releaseApi();

/// Scheme, host and port of the store that offers the game; no path.
[[nodiscard]] QUrl store();

/// The domain name of the emulator's web site.
[[nodiscard]] QString emulatorSite();

} // namespace cartloom::Origins
