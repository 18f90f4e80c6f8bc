// SPDX-License-Identifier: MIT
#include "PacedFile.h"

#include <algorithm>
#include <vector>

namespace cartloom
{

namespace
{

constexpr std::size_t pieceSize = 64 * 1024;

} // namespace

void StopSignal::stop()
{
    const std::lock_guard lock(m_mutex);
    m_stopped = true;
    m_changed.notify_all();
}

bool StopSignal::stopsBefore(std::chrono::steady_clock::time_point moment)
{
    std::unique_lock lock(m_mutex);
    return m_changed.wait_until(lock, moment, [this] { return m_stopped; });
}

PacedFile::PacedFile(const std::filesystem::path& file, std::int64_t bytesPerSecond, StopSignal& stop)
    : m_file(file, std::ios::binary)
    , m_bytesPerSecond(bytesPerSecond)
    , m_stop(stop)
{
}

bool PacedFile::send(std::size_t offset, std::size_t length, httplib::DataSink& sink)
{
    if (m_stop.stopsBefore(m_due))
        return false;
    std::vector<char> piece(std::min(length, pieceSize));
    m_file.seekg(static_cast<std::streamoff>(offset));
    m_file.read(piece.data(), static_cast<std::streamsize>(piece.size()));
    if (!m_file)
        return false;
    if (m_bytesPerSecond > 0)
        m_due += std::chrono::nanoseconds(static_cast<std::int64_t>(piece.size()) * 1'000'000'000 /
                                          m_bytesPerSecond);
    return sink.write(piece.data(), piece.size());
}

} // namespace cartloom
