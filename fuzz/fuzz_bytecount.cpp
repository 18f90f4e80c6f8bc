// SPDX-License-Identifier: MIT
#include "Fuzzing.h"
#include "platform/ByteCount.h"

#include <QStringList>

#include <array>
#include <cmath>
#include <cstring>

using namespace cartloom;
using cartloom::Fuzzing::require;

namespace
{

constexpr std::array unitNames{"KB", "MB", "GB", "TB", "PB", "EB"};

/// The number that a text of three digits at most before the point and two at most behind it reads as.
long double figureIn(const QString& text)
{
    const QStringList parts = text.split(u'.');
    require(parts.size() <= 2, "a figure has one point at most");
    for (const QString& digits : parts) {
        require(!digits.isEmpty(), "there are digits on both sides of the point");
        for (const QChar digit : digits)
            require(digit >= u'0' && digit <= u'9', "a figure is of digits");
    }
    require(parts.first().size() <= 3, "a figure is below 1000");
    require(parts.size() == 1 || parts.last().size() <= 2, "a figure has two decimals at most");
    require(parts.size() == 1 || !parts.last().endsWith(u'0'), "a figure has no idle zeros");
    return static_cast<long double>(text.toDouble());
}

/// The number of bytes that a text stands for.
long double meaningOf(const QString& text, qint64 bytes)
{
    if (text == QLatin1String("Zero KB"))
        return 0;
    const QStringList words = text.split(u' ');
    require(words.size() == 2, "a text is a figure and a unit");
    if (words.last() == QLatin1String("byte") || words.last() == QLatin1String("bytes")) {
        require((words.last() == QLatin1String("byte")) == (bytes == 1),
                "one byte is singular, all else plural");
        require(bytes < 1'000, "bytes are told below 1 KB");
        return static_cast<long double>(words.first().toLongLong());
    }
    require(bytes > 0, "a unit stands with a positive count");
    long double unit = 1'000;
    for (const char* const name : unitNames) {
        if (words.last() == QLatin1String(name)) {
            const long double figure = figureIn(words.first());
            require(figure >= 1, "a figure is 1 or more");
            return figure * unit;
        }
        unit *= 1'000;
    }
    require(false, "a unit is one of those known");
    return 0;
}

/// Two counts of any size: a shift decides the magnitude, which random bits alone would make huge nearly
/// always.
qint64 countIn(const std::uint8_t* data)
{
    std::uint64_t bits = 0;
    std::memcpy(&bits, data, sizeof bits);
    return static_cast<qint64>(bits) >> (data[8] % 64);
}

} // namespace

/// Any count reads as a figure of that size, and a larger count never as a smaller figure.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    constexpr std::size_t countSize = 9;
    if (size < 2 * countSize)
        return -1;
    const qint64 one = countIn(data);
    const qint64 other = countIn(data + countSize);
    const long double meaning = meaningOf(ByteCount::text(one), one);
    const long double otherMeaning = meaningOf(ByteCount::text(other), other);
    const auto exact = static_cast<long double>(one);
    // Half of the last place: at worst half a kilobyte of one.
    require(std::fabs(meaning - exact) <= std::fabs(exact) / 2, "a figure is rounded, not wrong");
    require(one < 1'000'000 || std::fabs(meaning - exact) <= exact / 20,
            "beyond kilobytes it is one in twenty off");
    require(one <= other ? meaning <= otherMeaning : meaning >= otherMeaning,
            "more bytes never read as fewer");
    return 0;
}
