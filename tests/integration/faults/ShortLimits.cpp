// SPDX-License-Identifier: MIT
#include "ShortLimits.h"

#include <QNetworkRequest>

#include <dlfcn.h>

namespace cartloom::ShortLimits
{

namespace
{

std::chrono::milliseconds shortLimit{0};
std::vector<std::chrono::milliseconds> askedFor;

} // namespace

void set(std::chrono::milliseconds limit)
{
    shortLimit = limit;
    askedFor.clear();
}

const std::vector<std::chrono::milliseconds>& asked()
{
    return askedFor;
}

} // namespace cartloom::ShortLimits

/// Found before the library's own, which it calls.
void QNetworkRequest::setTransferTimeout(int timeout)
{
    using Setter = void (*)(QNetworkRequest*, int);
    static const auto original =
        reinterpret_cast<Setter>(::dlsym(RTLD_NEXT, "_ZN15QNetworkRequest18setTransferTimeoutEi"));
    cartloom::ShortLimits::askedFor.emplace_back(timeout);
    original(this, static_cast<int>(cartloom::ShortLimits::shortLimit.count()));
}
