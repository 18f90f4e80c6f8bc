// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace cartloom
{

/// The address of the proxy that the system's settings name for a request, with its scheme. Empty for none.
/// May block while the system evaluates a configuration script. Any thread.
[[nodiscard]] std::string proxyFor(const std::string& url);

} // namespace cartloom
