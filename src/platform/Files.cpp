// SPDX-License-Identifier: MIT
#include "platform/Files.h"

#include "platform/FileDescriptor.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <memory>
#include <system_error>

#include <sys/stat.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace cartloom::Files
{

namespace
{

/// Whether the name itself is taken, even by a link that leads nowhere.
bool isTaken(const fs::path& path)
{
    struct stat status = {};
    return ::lstat(path.c_str(), &status) == 0;
}

void requireFree(const fs::path& path)
{
    if (isTaken(path))
        throw std::system_error(EEXIST, std::generic_category());
}

qint64 sizeOf(const FileDescriptor& file)
{
    struct stat status = {};
    if (::fstat(file.get(), &status) != 0)
        throw lastSystemError();
    return static_cast<qint64>(status.st_size);
}

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

/// Lets the owner change what is in the folder and in all below it, links not followed. Ignores every
/// failure.
void openFolders(const fs::path& folder) noexcept
{
    std::error_code ignored;
    if (!fs::is_directory(fs::symlink_status(folder, ignored)))
        return;
    fs::permissions(folder, fs::perms::owner_all, fs::perm_options::add, ignored);
    for (fs::directory_iterator it(folder, ignored), end; !ignored && it != end; it.increment(ignored))
        openFolders(it->path());
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
    requireFree(to);
    if (::rename(from.c_str(), to.c_str()) != 0)
        throw lastSystemError();
}

void copy(const fs::path& from, const fs::path& to)
{
    requireFree(to);
    constexpr std::size_t blockSize = 256 * 1024;
    const auto source = FileDescriptor::openForReading(from);
    const qint64 expected = sizeOf(source);
    TemporaryFile temporary(to);
    const auto block = std::make_unique<char[]>(blockSize);
    qint64 copied = 0;
    while (const auto count = source.readSome(block.get(), blockSize)) {
        temporary.descriptor().writeAll(block.get(), count);
        copied += static_cast<qint64>(count);
        if (copied > expected)
            break;
    }
    if (copied != expected)
        throw std::system_error(EBUSY, std::generic_category());
    move(temporary.path(), to);
    temporary.release();
}

void clear(const fs::path& path)
{
    fs::remove_all(path);
}

void tryRemove(const fs::path& path) noexcept
{
    std::error_code failure;
    fs::remove_all(path, failure);
    if (!failure)
        return;
    // A folder that an archive has made may not let even its owner take anything out of it.
    openFolders(path);
    fs::remove_all(path, failure);
}

QByteArray read(const fs::path& path, qint64 limit)
{
    return readFrom(FileDescriptor::openForReading(path), limit);
}

QByteArray readEnd(const fs::path& path, qint64 limit)
{
    const auto source = FileDescriptor::openForReading(path);
    const off_t start = std::max<qint64>(sizeOf(source) - limit, 0);
    if (::lseek(source.get(), start, SEEK_SET) != start)
        throw lastSystemError();
    return readFrom(source, limit);
}

void writeAtomically(const fs::path& path, const QByteArray& bytes)
{
    TemporaryFile temporary(path);
    temporary.descriptor().writeAll(bytes.constData(), static_cast<std::size_t>(bytes.size()));
    if (::rename(temporary.path().c_str(), path.c_str()) != 0)
        throw lastSystemError();
    temporary.release();
}

} // namespace cartloom::Files
