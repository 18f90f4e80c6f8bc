// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

#include <filesystem>
#include <optional>

namespace cartloom::PropertyList
{

/// The text under a key of a property list's top dictionary, XML or binary. None when the file cannot be
/// read, is longer than 1 MiB, is no property list, or has no text there. Never throws. Any thread.
[[nodiscard]] std::optional<QString> text(const std::filesystem::path& file, const char* key);

} // namespace cartloom::PropertyList
