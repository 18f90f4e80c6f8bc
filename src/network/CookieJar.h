// SPDX-License-Identifier: MIT
#pragma once

#include "network/CurlHandles.h"

namespace cartloom
{

/// Cookies in memory that several transfers share, one after the other. Not thread-safe.
class CookieJar
{
public:
    CookieJar();

    /// Makes a transfer send and receive these cookies.
    void attachTo(CURL* easy) const;

private:
    Curl::Share m_share;
};

} // namespace cartloom
