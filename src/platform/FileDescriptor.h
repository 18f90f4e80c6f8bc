// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <system_error>
#include <utility>

namespace cartloom
{

/// Owns one descriptor. Moves, does not copy. Children do not inherit it. Operations throw std::system_error.
class FileDescriptor
{
public:
    FileDescriptor() = default;
    explicit FileDescriptor(int descriptor)
        : m_descriptor(descriptor)
    {
    }
    FileDescriptor(FileDescriptor&& other) noexcept
        : m_descriptor(std::exchange(other.m_descriptor, -1))
    {
    }
    FileDescriptor& operator=(FileDescriptor&& other) noexcept
    {
        std::swap(m_descriptor, other.m_descriptor);
        return *this;
    }
    /// Closes the descriptor and ignores a failure; after writing, call close().
    ~FileDescriptor();

    [[nodiscard]] static FileDescriptor openForReading(const std::filesystem::path& path);

    /// Creates a file for writing. Fails with EEXIST if the name is taken.
    [[nodiscard]] static FileDescriptor createNew(const std::filesystem::path& path);

    [[nodiscard]] bool isOpen() const { return m_descriptor >= 0; }
    [[nodiscard]] int get() const { return m_descriptor; }

    /// Closes the descriptor if it is open. Some file systems report a failed write only here.
    void close();

    /// Reads once, up to length bytes. 0 at the end.
    [[nodiscard]] std::size_t readSome(char* data, std::size_t length) const;

    /// Reads length bytes from a position on, whatever was read before. Fewer only at the end of the file.
    [[nodiscard]] std::size_t readAt(std::int64_t position, char* data, std::size_t length) const;

    /// Blocks until a read would not block. False if that took longer than the timeout.
    [[nodiscard]] bool waitUntilReadable(std::chrono::milliseconds timeout) const;

    /// Writes all bytes; repeats the call after a short write.
    void writeAll(const char* data, std::size_t length) const;

    /// Blocks until what was written, or a folder's names, are on the disk.
    void flush() const;

private:
    int m_descriptor = -1;
};

/// The error that errno holds.
[[nodiscard]] std::system_error lastSystemError();

} // namespace cartloom
