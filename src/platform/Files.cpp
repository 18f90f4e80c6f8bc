// SPDX-License-Identifier: MIT
#include "platform/Files.h"

#include "platform/FileDescriptor.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <system_error>

#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace cartloom::Files
{

namespace
{

QByteArray readFrom(const FileDescriptor& source, qint64 limit)
{
    QByteArray bytes;
    std::array<char, 16 * 1024> block;
    while (bytes.size() < limit) {
        const auto wanted = std::min<qint64>(limit - bytes.size(), block.size());
        const auto count = source.readSome(block.data(), static_cast<std::size_t>(wanted));
        if (count == 0)
            break;
        bytes.append(block.data(), static_cast<qsizetype>(count));
    }
    return bytes;
}

} // namespace

bool exists(const fs::path& path) noexcept
{
    std::error_code ignored;
    return fs::exists(path, ignored);
}

qint64 size(const fs::path& path)
{
    struct stat status = {};
    if (::stat(path.c_str(), &status) != 0)
        throw lastSystemError();
    return S_ISREG(status.st_mode) ? static_cast<qint64>(status.st_size) : 0;
}

bool isFolder(const fs::path& path) noexcept
{
    std::error_code ignored;
    return fs::is_directory(path, ignored);
}

bool isSame(const fs::path& one, const fs::path& other) noexcept
{
    std::error_code ignored;
    return fs::equivalent(one, other, ignored);
}

bool isExecutable(const fs::path& path) noexcept
{
    std::error_code ignored;
    return fs::is_regular_file(path, ignored) && ::access(path.c_str(), X_OK) == 0;
}

void createFolders(const fs::path& folder)
{
    fs::create_directories(folder);
}

void createNewFolder(const fs::path& folder)
{
    if (::mkdir(folder.c_str(), 0777) != 0)
        throw lastSystemError();
}

void move(const fs::path& from, const fs::path& to)
{
    struct stat status = {};
    if (::lstat(to.c_str(), &status) == 0)
        throw std::system_error(EEXIST, std::generic_category());
    moveOver(from, to);
}

void moveOver(const fs::path& from, const fs::path& to)
{
    if (::rename(from.c_str(), to.c_str()) != 0)
        throw lastSystemError();
}

void flush(const fs::path& path)
{
    FileDescriptor::openForReading(path).flush();
}

void tryFlush(const fs::path& path) noexcept
{
    try {
        flush(path);
    } catch (const std::system_error&) {
    }
}

QByteArray read(const fs::path& path, qint64 limit)
{
    return readFrom(FileDescriptor::openForReading(path), limit);
}

bool isVolumeFull(const fs::path& path) noexcept
{
    constexpr std::uintmax_t nextToNothing = 1024 * 1024;
    struct statvfs status = {};
    if (::statvfs(path.c_str(), &status) != 0)
        return false;
    // Volumes without a fixed number of files report 0 of 0.
    const bool isOutOfFiles = status.f_files > 0 && status.f_favail == 0;
    return isOutOfFiles || std::uintmax_t{status.f_bavail} * status.f_frsize < nextToNothing;
}

} // namespace cartloom::Files
