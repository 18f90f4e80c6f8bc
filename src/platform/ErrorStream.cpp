// SPDX-License-Identifier: MIT
#include "platform/ErrorStream.h"

#include <algorithm>
#include <array>
#include <system_error>

#include <fcntl.h>
#include <poll.h>

namespace cartloom
{

ErrorStream::ErrorStream(FileDescriptor stream, qsizetype maxBytes)
    : m_stream(std::move(stream))
    , m_maxBytes(maxBytes)
{
    ::fcntl(m_stream.get(), F_SETFL, O_NONBLOCK);
    m_reader = std::thread([this] { read(); });
}

void ErrorStream::read()
{
    std::array<pollfd, 2> waits{pollfd{m_stream.get(), POLLIN, 0}, pollfd{m_stop.reading.get(), POLLIN, 0}};
    for (;;) {
        ::poll(waits.data(), waits.size(), -1);
        if (waits[1].revents != 0)
            break;
        if (waits[0].revents != 0 && readOnce() == 0U)
            waits[0].fd = -1;
    }
    while (!isFull() && readOnce().value_or(0) > 0) {
    }
}

void ErrorStream::finish()
{
    m_stop.writing.close();
    if (m_reader.joinable())
        m_reader.join();
}

QString ErrorStream::text()
{
    const std::lock_guard guard(m_mutex);
    return QString::fromUtf8(m_kept);
}

/// The number of bytes read: 0 when the stream has ended, none when it holds nothing now.
std::optional<std::size_t> ErrorStream::readOnce()
{
    std::array<char, 64 * 1024> block;
    std::size_t count = 0;
    try {
        count = m_stream.readSome(block.data(), block.size());
    } catch (const std::system_error& error) {
        return error.code() == std::errc::resource_unavailable_try_again ? std::nullopt
                                                                         : std::optional<std::size_t>(0);
    }
    const std::lock_guard guard(m_mutex);
    m_kept.append(block.data(), std::min(static_cast<qsizetype>(count), m_maxBytes - m_kept.size()));
    return count;
}

bool ErrorStream::isFull()
{
    const std::lock_guard guard(m_mutex);
    return m_kept.size() >= m_maxBytes;
}

} // namespace cartloom
