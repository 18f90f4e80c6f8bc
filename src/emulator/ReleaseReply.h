// SPDX-License-Identifier: MIT
#pragma once

#include "emulator/AresRelease.h"

#include <QByteArray>

namespace cartloom::AresInstaller
{

/// The release that a reply of the release service describes, with its macOS download. Throws AppError when
/// the reply cannot be read or names no such download. Any thread.
[[nodiscard]] AresRelease releaseIn(const QByteArray& reply);

} // namespace cartloom::AresInstaller
