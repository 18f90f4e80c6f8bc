// SPDX-License-Identifier: MIT
#pragma once

#include <QtTest>

#include <chrono>
#include <ctime>
#include <fstream>
#include <string>

#include <malloc.h>

namespace cartloom
{

/// The memory and processor time that a function used. Linux only.
struct ResourceUse
{
    /// The most memory that was resident at once, beyond that from before, in bytes.
    qint64 peakBytes = 0;
    /// Of all threads.
    std::chrono::milliseconds processorTime{};

    template <typename Function>
    [[nodiscard]] static ResourceUse of(const Function& function)
    {
        // Else what was freed before would be used again.
        ::malloc_trim(0);
        std::ofstream("/proc/self/clear_refs") << 5;
        const qint64 bytes = peak();
        const std::clock_t time = std::clock();
        function();
        return {peak() - bytes, std::chrono::milliseconds((std::clock() - time) * 1000 / CLOCKS_PER_SEC)};
    }

private:
    [[nodiscard]] static qint64 peak()
    {
        std::ifstream status("/proc/self/status");
        std::string word;
        qint64 kilobytes = 0;
        while (status >> word && word != "VmHWM:") {
        }
        status >> kilobytes;
        return kilobytes * 1024;
    }
};

} // namespace cartloom
