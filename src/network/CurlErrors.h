// SPDX-License-Identifier: MIT
#pragma once

#include "errors/PlatformError.h"

#include <curl/curl.h>

namespace cartloom::CurlErrors
{

/// The failure with which libcurl ended a transfer of this handle.
[[nodiscard]] PlatformError translate(CURLcode code, CURL* easy);

} // namespace cartloom::CurlErrors
