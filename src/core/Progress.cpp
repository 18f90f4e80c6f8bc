// SPDX-License-Identifier: MIT
#include "core/AppModel.h"

#include "core/ByteCount.h"

#include <algorithm>

using namespace std::chrono_literals;

namespace cartloom
{

namespace
{

/// Often enough to be current, seldom enough to be read.
constexpr auto speedInterval = 500ms;

} // namespace

void AppModel::beginProgress()
{
    endProgress();
    m_lastTick = m_clock();
    m_lastBytes = 0;
    m_speedText.clear();
}

ProgressCallback AppModel::progressCallback()
{
    return [model = weak_from_this()](qint64 received, qint64 expected) {
        postTo(model, [received, expected](AppModel& present) { present.progress(received, expected); });
    };
}

void AppModel::progress(qint64 received, qint64 expected)
{
    const TimePoint now = m_clock();
    const std::chrono::duration<double> elapsed = now - m_lastTick;
    if (elapsed >= speedInterval) {
        const double rate = std::max(0.0, static_cast<double>(received - m_lastBytes) / elapsed.count());
        m_speedText =
            QStringLiteral(" · ") + ByteCount::text(static_cast<qint64>(rate)) + QStringLiteral("/s");
        m_lastTick = now;
        m_lastBytes = received;
    }

    if (expected < 1) {
        fraction = std::nullopt;
        detailLine = ByteCount::text(received) + m_speedText;
    } else {
        fraction = std::min(1.0, static_cast<double>(received) / static_cast<double>(expected));
        detailLine =
            ByteCount::text(received) + QStringLiteral(" of ") + ByteCount::text(expected) + m_speedText;
    }
}

} // namespace cartloom
