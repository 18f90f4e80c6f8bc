// SPDX-License-Identifier: MIT
#include "game/RomCheck.h"

#include "errors/AppError.h"
#include "platform/Files.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace cartloom::RomCheck
{

namespace
{

constexpr std::string_view bigEndian = "\x80\x37\x12\x40";
constexpr std::string_view byteSwapped = "\x37\x80\x40\x12";
constexpr std::string_view littleEndian = "\x40\x12\x37\x80";
constexpr std::array anyByteOrder{bigEndian, byteSwapped, littleEndian};

/// Both ends allowed, in bytes.
struct SizeRange
{
    qint64 smallest;
    qint64 largest;
};

constexpr SizeRange strictRange{10'000'000, maxGameBytes};
constexpr SizeRange lenientRange{1'000'000, 128'000'000};

} // namespace

void validate(const std::filesystem::path& file, bool strict)
{
    const qint64 size = Files::size(file);
    const SizeRange range = strict ? strictRange : lenientRange;
    if (size < range.smallest || size > range.largest)
        throw AppError(QStringLiteral("That file is not the right size for a Nintendo 64 game (%1 KB).")
                           .arg(size / 1000));

    const QByteArray head = Files::read(file, 4);
    const std::string_view header(head.constData(), static_cast<std::size_t>(head.size()));
    if (strict && header != bigEndian)
        throw AppError(QStringLiteral("The file does not look like a .z64 Nintendo 64 game (wrong header)."));
    if (!strict && std::ranges::find(anyByteOrder, header) == anyByteOrder.end())
        throw AppError(
            QStringLiteral("That file does not look like a Nintendo 64 ROM (.z64 / .v64 / .n64)."));
}

} // namespace cartloom::RomCheck
