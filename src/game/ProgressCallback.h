// SPDX-License-Identifier: MIT
#pragma once

#include <QtGlobal>

#include <functional>

namespace cartloom
{

/// Told how a download gets on: bytes received so far, and bytes expected in all, below 1 when that is
/// unknown. Called from any thread.
using ProgressCallback = std::function<void(qint64 received, qint64 expected)>;

} // namespace cartloom
