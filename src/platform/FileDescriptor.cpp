// SPDX-License-Identifier: MIT
#include "platform/FileDescriptor.h"

#include <algorithm>
#include <cerrno>

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

namespace cartloom
{

std::system_error lastSystemError()
{
    return {errno, std::generic_category()};
}

FileDescriptor FileDescriptor::openForReading(const std::filesystem::path& path)
{
    const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (descriptor < 0)
        throw lastSystemError();
    return FileDescriptor(descriptor);
}

FileDescriptor FileDescriptor::createNew(const std::filesystem::path& path)
{
    const int descriptor = ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (descriptor < 0)
        throw lastSystemError();
    return FileDescriptor(descriptor);
}

FileDescriptor::~FileDescriptor()
{
    if (isOpen())
        ::close(m_descriptor);
}

void FileDescriptor::close()
{
    // EINTR leaves the descriptor closed on Linux and macOS.
    if (isOpen() && ::close(std::exchange(m_descriptor, -1)) != 0 && errno != EINTR)
        throw lastSystemError();
}

void FileDescriptor::flush() const
{
#ifdef F_FULLFSYNC
    // Not every volume knows it.
    if (::fcntl(m_descriptor, F_FULLFSYNC) == 0)
        return;
#endif
    // EINVAL: the file system has nothing to flush here.
    if (::fsync(m_descriptor) != 0 && errno != EINVAL)
        throw lastSystemError();
}

std::size_t FileDescriptor::readSome(char* data, std::size_t length) const
{
    for (;;) {
        const auto count = ::read(m_descriptor, data, length);
        if (count >= 0)
            return static_cast<std::size_t>(count);
        if (errno != EINTR)
            throw lastSystemError();
    }
}

std::size_t FileDescriptor::readAt(std::int64_t position, char* data, std::size_t length) const
{
    std::size_t done = 0;
    while (done < length) {
        const auto count =
            ::pread(m_descriptor, data + done, length - done, position + static_cast<off_t>(done));
        if (count < 0 && errno != EINTR)
            throw lastSystemError();
        if (count == 0)
            break;
        done += static_cast<std::size_t>(std::max<ssize_t>(count, 0));
    }
    return done;
}

bool FileDescriptor::waitUntilReadable(std::chrono::milliseconds timeout) const
{
    pollfd wait{m_descriptor, POLLIN, 0};
    return ::poll(&wait, 1, static_cast<int>(timeout.count())) > 0;
}

void FileDescriptor::writeAll(const char* data, std::size_t length) const
{
    while (length > 0) {
        const auto count = ::write(m_descriptor, data, length);
        if (count >= 0) {
            data += count;
            length -= static_cast<std::size_t>(count);
        } else if (errno != EINTR) {
            throw lastSystemError();
        }
    }
}

} // namespace cartloom
