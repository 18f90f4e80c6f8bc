// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>
#include <system_error>
#include <utility>

namespace cartloom
{

/// Owns one descriptor and closes it. Moves, does not copy. Not closed across an exec. What fails throws
/// std::system_error.
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
    ~FileDescriptor() { close(); }

    [[nodiscard]] static FileDescriptor openForReading(const std::filesystem::path& path);

    [[nodiscard]] bool isOpen() const { return m_descriptor >= 0; }
    [[nodiscard]] int get() const { return m_descriptor; }
    void close() noexcept;

    /// Reads once, up to length bytes; 0 at the end.
    [[nodiscard]] std::size_t readSome(char* data, std::size_t length) const;

    /// Writes all of it, however many calls that takes.
    void writeAll(const char* data, std::size_t length) const;

private:
    int m_descriptor = -1;
};

/// A new, empty file of a unique name beside a target that it may later become. Removed unless it was moved
/// away.
class TemporaryFile
{
public:
    /// Named after the target, hidden.
    explicit TemporaryFile(const std::filesystem::path& target);
    ~TemporaryFile();
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    [[nodiscard]] const std::filesystem::path& path() const { return m_path; }
    [[nodiscard]] FileDescriptor& descriptor() { return m_descriptor; }

    /// Leaves the file where it is from now on.
    void release() noexcept { m_path.clear(); }

private:
    std::filesystem::path m_path;
    FileDescriptor m_descriptor;
};

/// The failure that errno holds now.
[[nodiscard]] std::system_error lastSystemError();

} // namespace cartloom
