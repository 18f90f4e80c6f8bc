// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <vector>

/// Stands between the program and the network layer where a request is told how long a silence it puts up
/// with: a program that is linked with this has every such limit replaced by a short one. Main thread.
namespace cartloom::ShortLimits
{

/// What every limit is from now on. Forgets what was asked for.
void set(std::chrono::milliseconds limit);

/// The limits that requests were really given, in order.
[[nodiscard]] const std::vector<std::chrono::milliseconds>& asked();

} // namespace cartloom::ShortLimits
