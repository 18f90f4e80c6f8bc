// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

#include <filesystem>
#include <optional>

namespace cartloom::PropertyList
{

/// The text under a key of a property list's top dictionary, XML in UTF-8 or binary. None if the file cannot
/// be read, is no property list, has no text there, or is longer or more complex than a bundle's list ever
/// is: time and memory stay bounded. Never throws. Any thread.
[[nodiscard]] std::optional<QString> text(const std::filesystem::path& file, const char* key);

} // namespace cartloom::PropertyList
