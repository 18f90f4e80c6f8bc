// SPDX-License-Identifier: MIT
#pragma once

#include <httplib.h>

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <memory>
#include <mutex>

namespace cartloom
{

/// Tells all transfers of a server to stop. Any thread.
class StopSignal
{
public:
    void stop();
    /// Waits for the moment; true at once, or as soon as it is told, when the transfers are to stop.
    [[nodiscard]] bool stopsBefore(std::chrono::steady_clock::time_point moment);

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_stopped = false;
};

/// One transfer of a file's bytes, no faster than it is told. Used by one thread at a time.
class PacedFile
{
public:
    /// bytesPerSecond 0: as fast as it goes. The signal must outlive the transfer.
    PacedFile(const std::filesystem::path& file, std::int64_t bytesPerSecond, StopSignal& stop);

    /// Sends some of the bytes from the offset on, at most length of them; false ends the transfer.
    [[nodiscard]] bool send(std::size_t offset, std::size_t length, httplib::DataSink& sink);

private:
    std::ifstream m_file;
    const std::int64_t m_bytesPerSecond;
    StopSignal& m_stop;
    std::chrono::steady_clock::time_point m_due = std::chrono::steady_clock::now();
};

} // namespace cartloom
