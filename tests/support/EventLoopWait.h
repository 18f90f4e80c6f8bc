// SPDX-License-Identifier: MIT
#pragma once

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QTimer>

#include <chrono>

namespace cartloom
{

/// Runs the event loop until the condition holds; false when it does not in half a minute. Unlike the test
/// library's own wait this never sleeps while there is an event, which a server on the same thread needs.
template <typename Condition>
[[nodiscard]] bool comesTrue(const Condition& condition)
{
    using namespace std::chrono_literals;
    const QDeadlineTimer end(30s);
    // For a condition that no event of ours announces.
    QTimer tick;
    tick.start(10ms);
    while (!condition() && !end.hasExpired())
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    return condition();
}

} // namespace cartloom
