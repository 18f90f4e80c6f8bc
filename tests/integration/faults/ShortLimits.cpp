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

// The one function of its name that the library has; since Qt 6.8, what takes a number calls it.
#if QT_VERSION >= QT_VERSION_CHECK(6, 8, 0)
using Limit = std::chrono::milliseconds;
constexpr auto symbol =
    "_ZN15QNetworkRequest18setTransferTimeoutENSt6chrono8durationIlSt5ratioILl1ELl1000EEEE";
#else
using Limit = int;
constexpr auto symbol = "_ZN15QNetworkRequest18setTransferTimeoutEi";
#endif

/// Found before the library's own, which it calls.
void QNetworkRequest::setTransferTimeout(Limit timeout)
{
    using Setter = void (*)(QNetworkRequest*, Limit);
    static const auto original = reinterpret_cast<Setter>(::dlsym(RTLD_NEXT, symbol));
    cartloom::ShortLimits::askedFor.emplace_back(timeout);
    original(this, static_cast<Limit>(static_cast<int>(cartloom::ShortLimits::shortLimit.count())));
}
