// SPDX-License-Identifier: MIT
#pragma once

#include <curl/curl.h>

#include <memory>

/// Owners of libcurl's handles.
namespace cartloom::Curl
{

template <auto Free>
struct Deleter
{
    template <typename Handle>
    void operator()(Handle* handle) const
    {
        Free(handle);
    }
};

using Easy = std::unique_ptr<CURL, Deleter<curl_easy_cleanup>>;
using Multi = std::unique_ptr<CURLM, Deleter<curl_multi_cleanup>>;
using Share = std::unique_ptr<CURLSH, Deleter<curl_share_cleanup>>;
using Url = std::unique_ptr<CURLU, Deleter<curl_url_cleanup>>;
using List = std::unique_ptr<curl_slist, Deleter<curl_slist_free_all>>;
using Text = std::unique_ptr<char, Deleter<curl_free>>;

} // namespace cartloom::Curl
