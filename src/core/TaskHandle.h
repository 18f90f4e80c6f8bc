// SPDX-License-Identifier: MIT
#pragma once

#include "platform/Cancellation.h"

#include <QCoroTask>
#include <QObject>

#include <functional>
#include <memory>

namespace cartloom
{

/// A coroutine that was started on the main thread. Dropping the handle cancels nothing. Main thread.
class TaskHandle
{
public:
    using Body = std::function<QCoro::Task<void>(CancellationToken)>;

    /// Starts the body from the event loop, after this call has returned; not at all if the owner is gone by
    /// then. The body must not throw.
    static TaskHandle start(QObject* owner, Body body)
    {
        TaskHandle handle;
        QMetaObject::invokeMethod(
            owner,
            [begun = handle.m_begun, token = handle.m_source.token(), body = std::move(body)] {
                *begun = true;
                body(token);
            },
            Qt::QueuedConnection);
        return handle;
    }

    /// Whether the body has been entered.
    [[nodiscard]] bool hasBegun() const { return *m_begun; }

    /// Asks the body to stop at its next wait, or at the one it is in.
    void cancel() const { m_source.cancel(); }

private:
    TaskHandle() = default;

    CancellationSource m_source;
    std::shared_ptr<bool> m_begun = std::make_shared<bool>(false);
};

} // namespace cartloom
