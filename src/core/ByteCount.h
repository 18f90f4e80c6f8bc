// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

namespace cartloom::ByteCount
{

/// A number of bytes as a player reads it: decimal units, English figures, such as "12.3 MB". Any thread.
[[nodiscard]] QString text(qint64 bytes);

} // namespace cartloom::ByteCount
