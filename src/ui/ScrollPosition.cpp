// SPDX-License-Identifier: MIT
#include "ui/ScrollPosition.h"

#include <algorithm>

namespace cartloom
{

qreal ScrollPosition::showing(const QRectF& area, qreal margin, qreal present, qreal viewHeight,
                              qreal contentHeight)
{
    if (area.height() <= 0)
        return present;
    const qreal last = std::max(contentHeight - viewHeight, 0.0);
    const qreal highest = std::clamp(area.top() - margin, 0.0, last);
    const qreal lowest = std::clamp(area.bottom() + margin - viewHeight, 0.0, last);
    // Of an area that is taller than the view, the end is shown.
    return std::max(std::min(present, highest), lowest);
}

} // namespace cartloom
