// SPDX-License-Identifier: MIT
#pragma once

#include <QtGlobal>

#include <functional>

namespace cartloom
{

/// Reports the bytes received so far and the bytes expected, below 1 if that is unknown. Called from any
/// thread.
using ProgressCallback = std::function<void(qint64 received, qint64 expected)>;

} // namespace cartloom
