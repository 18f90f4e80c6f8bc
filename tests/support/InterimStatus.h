// SPDX-License-Identifier: MIT
#pragma once

#include <QtGlobal>

#include <vector>

namespace cartloom
{

/// Whether an answer with a status of 1xx is passed over, because another one follows it. Older versions of
/// Qt do so only for the status 100.
inline constexpr bool interimAnswersArePassedOver = QT_VERSION >= QT_VERSION_CHECK(6, 8, 0);

/// Those of the statuses that end a request.
[[nodiscard]] inline std::vector<int> finalStatuses(std::vector<int> statuses)
{
    if (interimAnswersArePassedOver)
        std::erase_if(statuses, [](int status) { return status < 200; });
    return statuses;
}

} // namespace cartloom
