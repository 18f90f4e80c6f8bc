// SPDX-License-Identifier: MIT
#pragma once

#include "errors/AppError.h"

/// Puts any failure into the player's words, once, where an operation that the player asked for ends. Never
/// throws for want of words. Any thread.
namespace cartloom::FriendlyError
{

/// The error for the player. An AppError comes back as it is; for anything else the context, a short phrase
/// that names the step which failed, begins the details and, where no plainer sentence is known, the message.
[[nodiscard]] AppError make(const std::exception& error, const QString& context);

/// The error for the player when the disk is full, by whatever that was told.
[[nodiscard]] AppError diskFull(const QString& details);

/// Whether the failure is really the player's own cancellation, which is never shown as an error.
[[nodiscard]] bool isCancel(const std::exception& error);

/// The sentence with which the error describes itself.
[[nodiscard]] QString localizedDescription(const std::exception& error);

} // namespace cartloom::FriendlyError
