// SPDX-License-Identifier: MIT
#include "network/CookieJar.h"

namespace cartloom
{

CookieJar::CookieJar()
    : m_share(curl_share_init())
{
    curl_share_setopt(m_share.get(), CURLSHOPT_SHARE, CURL_LOCK_DATA_COOKIE);
}

void CookieJar::attachTo(CURL* easy) const
{
    curl_easy_setopt(easy, CURLOPT_SHARE, m_share.get());
    // An empty name enables cookies without a file.
    curl_easy_setopt(easy, CURLOPT_COOKIEFILE, "");
}

} // namespace cartloom
