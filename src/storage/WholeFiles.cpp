// SPDX-License-Identifier: MIT
#include "storage/WholeFiles.h"

#include "platform/Files.h"
#include "platform/TemporaryFile.h"

#include <memory>
#include <system_error>

namespace cartloom::WholeFiles
{

void copy(const std::filesystem::path& from, const std::filesystem::path& to)
{
    constexpr std::size_t blockSize = 256 * 1024;
    const auto source = FileDescriptor::openForReading(from);
    const qint64 expected = Files::size(from);
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
        throw std::system_error(std::make_error_code(std::errc::device_or_resource_busy));
    temporary.descriptor().flush();
    temporary.descriptor().close();
    Files::move(temporary.path(), to);
    temporary.release();
    Files::tryFlush(to.parent_path());
}

void write(const std::filesystem::path& path, const QByteArray& bytes)
{
    TemporaryFile temporary(path);
    temporary.descriptor().writeAll(bytes.constData(), static_cast<std::size_t>(bytes.size()));
    temporary.descriptor().flush();
    temporary.descriptor().close();
    Files::moveOver(temporary.path(), path);
    temporary.release();
    Files::tryFlush(path.parent_path());
}

} // namespace cartloom::WholeFiles
