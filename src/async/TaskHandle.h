// SPDX-License-Identifier: MIT
#pragma once

#include "async/Cancellation.h"
#include "async/Post.h"

#include <QCoroTask>

#include <functional>
#include <memory>
#include <utility>

namespace cartloom
{

/// A coroutine that was started on the main thread. Dropping the handle cancels nothing. Main thread.
class TaskHandle
{
public:
    using Body = std::function<QCoro::Task<void>(CancellationToken)>;

    /// Starts the body from the event loop, after this call has returned. The body must not throw; it lives
    /// until its coroutine has ended, and so does everything that it captures.
    static TaskHandle start(Body body)
    {
        TaskHandle handle;
        post([state = handle.m_state, body = std::move(body)] { run(state, body); });
        return handle;
    }

    /// As start(), but runs the body up to its first wait before this call returns.
    static TaskHandle startNow(const Body& body)
    {
        TaskHandle handle;
        run(handle.m_state, body);
        return handle;
    }

    /// True from the moment at which the body is entered.
    [[nodiscard]] bool hasBegun() const { return m_state->hasBegun; }

    /// True until the body's coroutine has ended.
    [[nodiscard]] bool isRunning() const { return m_state->isRunning; }

    /// Fires the body's token.
    void cancel() const { m_state->source.cancel(); }

private:
    struct State
    {
        CancellationSource source;
        bool hasBegun = false;
        bool isRunning = true;
    };

    TaskHandle() = default;

    static QCoro::Task<void> run(std::shared_ptr<State> state, Body body)
    {
        state->hasBegun = true;
        co_await body(state->source.token());
        state->isRunning = false;
    }

    std::shared_ptr<State> m_state = std::make_shared<State>();
};

} // namespace cartloom
