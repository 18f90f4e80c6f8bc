// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

#include <optional>

/// The user's preference store, under the application's and the organisation's names. Main thread. What
/// cannot be read is absent, what cannot be written is lost, neither is reported. A pipe or a device in place
/// of the store is neither read nor written.
namespace cartloom::Preferences
{

/// True for a boolean that is, a number but 0, and the words "true", "yes" and "1" in any case.
[[nodiscard]] bool boolean(const char* key);
void setBoolean(const char* key, bool value);

/// None when the key is absent or empty, or holds anything but a text. A path in the form of toText() comes
/// back byte for byte.
[[nodiscard]] std::optional<QString> text(const char* key);
void setText(const char* key, const QString& value);

void remove(const char* key);

} // namespace cartloom::Preferences
