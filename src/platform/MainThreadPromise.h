// SPDX-License-Identifier: MIT
#pragma once

#include "platform/MainThread.h"

#include <QFuture>
#include <QPromise>

#include <exception>
#include <memory>

namespace cartloom
{

/// The result of work on another thread, which a coroutine on the main thread awaits. Made on the main
/// thread; copies are the same promise. It is kept by a call that is posted to the main thread, so that all
/// which the other thread has done before is done for the coroutine as well.
template <typename T>
class MainThreadPromise
{
public:
    MainThreadPromise()
    {
        MainThread::adopt();
        m_promise->start();
    }

    /// Main thread.
    [[nodiscard]] QFuture<T> future() const { return m_promise->future(); }

    /// Any thread; this or reject, once.
    template <typename... Value>
    void resolve(const Value&... value) const
    {
        MainThread::post([promise = m_promise, value...] {
            if constexpr (sizeof...(Value) > 0)
                promise->addResult(value...);
            promise->finish();
        });
    }

    /// Makes the await throw. Any thread; this or resolve, once.
    void reject(const std::exception_ptr& error) const
    {
        MainThread::post([promise = m_promise, error] {
            promise->setException(error);
            promise->finish();
        });
    }

private:
    std::shared_ptr<QPromise<T>> m_promise = std::make_shared<QPromise<T>>();
};

} // namespace cartloom
