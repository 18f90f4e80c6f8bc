// SPDX-License-Identifier: MIT
#pragma once

#include "async/Post.h"

#include <coroutine>
#include <exception>
#include <optional>
#include <thread>
#include <type_traits>
#include <utility>

namespace cartloom
{

/// Awaits work that runs on its own thread. Part of runOnWorker.
template <typename Work>
class WorkerAwaiter
{
public:
    using Result = std::invoke_result_t<Work>;

    explicit WorkerAwaiter(Work work)
        : m_work(std::move(work))
    {
    }

    [[nodiscard]] bool await_ready() const { return false; }

    void await_suspend(std::coroutine_handle<> waiting)
    {
        enablePosting();
        m_thread = std::thread([this, waiting] {
            try {
                run();
            } catch (...) {
                m_error = std::current_exception();
            }
            post([this, waiting] {
                // The join makes the worker's writes visible to the coroutine.
                m_thread.join();
                waiting.resume();
            });
        });
    }

    Result await_resume()
    {
        if (m_error)
            std::rethrow_exception(std::exchange(m_error, nullptr));
        if constexpr (!std::is_void_v<Result>)
            return std::move(*m_result);
    }

private:
    void run()
    {
        if constexpr (std::is_void_v<Result>)
            m_work();
        else
            m_result.emplace(m_work());
    }

    using Stored = std::conditional_t<std::is_void_v<Result>, bool, Result>;

    Work m_work;
    std::optional<Stored> m_result;
    std::exception_ptr m_error;
    std::thread m_thread;
};

/// Runs work that ends by itself on a worker thread and resumes the awaiting coroutine on the main thread.
/// Returns and throws what the work does; throws std::system_error if the system has no thread left. To be
/// awaited at once, on the main thread.
template <typename Work>
[[nodiscard]] WorkerAwaiter<Work> runOnWorker(Work work)
{
    // GCC 12 copies a temporary in a co_await expression byte by byte. Captures by reference survive that.
    static_assert(std::is_trivially_copyable_v<Work>);
    return WorkerAwaiter<Work>(std::move(work));
}

} // namespace cartloom
