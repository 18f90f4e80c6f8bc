// SPDX-License-Identifier: MIT
#pragma once

#include <QCoroTask>
#include <QEventLoop>

#include <chrono>
#include <future>

namespace cartloom
{

/// Part of resultOf.
template <typename T>
QCoro::Task<void> settle(QCoro::Task<T> task, std::promise<T>& end, QEventLoop& loop)
{
    try {
        if constexpr (std::is_void_v<T>) {
            co_await task;
            end.set_value();
        } else {
            T value = co_await task;
            end.set_value(std::move(value));
        }
    } catch (...) {
        end.set_exception(std::current_exception());
    }
    loop.quit();
}

/// Runs the event loop until the task has ended; gives what it returned or throws what it threw.
/// (QCoro::waitFor never comes back from a task that throws.)
template <typename T>
T resultOf(QCoro::Task<T> task)
{
    std::promise<T> end;
    auto future = end.get_future();
    QEventLoop loop;
    const auto settled = settle(std::move(task), end, loop);
    if (future.wait_for(std::chrono::seconds(0)) != std::future_status::ready)
        loop.exec();
    return future.get();
}

} // namespace cartloom
