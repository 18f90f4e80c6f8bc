// SPDX-License-Identifier: MIT
#pragma once

#include "platform/MainThreadPromise.h"

#include <QFuture>

#include <exception>
#include <thread>
#include <utility>

namespace cartloom
{

/// Does work that takes longer than a frame on a thread of its own, which nobody waits for when the program
/// ends. What the work throws, the await of its end throws. Main thread.
template <typename Work>
[[nodiscard]] QFuture<void> onWorkThread(Work work)
{
    const MainThreadPromise<void> end;
    std::thread([end, work = std::move(work)] {
        try {
            work();
            end.resolve();
        } catch (const std::exception&) {
            end.reject(std::current_exception());
        }
    }).detach();
    return end.future();
}

} // namespace cartloom
