// SPDX-License-Identifier: MIT
#pragma once

#include "platform/MainThreadPromise.h"

#include <QFuture>

#include <exception>
#include <system_error>
#include <thread>
#include <utility>

namespace cartloom
{

/// Does work that takes longer than a frame on a thread of its own, which nobody waits for when the program
/// ends. What the work throws, the await of its end throws; and std::system_error where the system has no
/// thread left. Main thread.
template <typename Work>
[[nodiscard]] QFuture<void> onWorkThread(Work work)
{
    const MainThreadPromise<void> end;
    try {
        std::thread([end, work = std::move(work)] {
            try {
                work();
                end.resolve();
            } catch (const std::exception&) {
                end.reject(std::current_exception());
            }
        }).detach();
    } catch (const std::system_error&) {
        end.reject(std::current_exception());
    }
    return end.future();
}

} // namespace cartloom
