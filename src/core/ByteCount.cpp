// SPDX-License-Identifier: MIT
#include "core/ByteCount.h"

#include <QLocale>

#include <array>
#include <cmath>

namespace cartloom::ByteCount
{

namespace
{

struct Unit
{
    qint64 bytes;
    int decimals;
    const char* name;
};

constexpr std::array units{
    Unit{1'000, 0, "KB"},
    Unit{1'000'000, 1, "MB"},
    Unit{1'000'000'000, 2, "GB"},
    Unit{1'000'000'000'000, 2, "TB"},
    Unit{1'000'000'000'000'000, 2, "PB"},
    Unit{1'000'000'000'000'000'000, 2, "EB"},
};

/// The count in a unit, rounded to its decimals, counted in its last decimal place.
qint64 roundedSteps(qint64 bytes, const Unit& unit)
{
    const auto stepsPerUnit = static_cast<qint64>(std::pow(10, unit.decimals));
    const qint64 step = unit.bytes / stepsPerUnit;
    return bytes / step + (bytes % step * 2 >= step ? 1 : 0);
}

QString withoutTrailingZeros(QString figure)
{
    if (!figure.contains(u'.'))
        return figure;
    while (figure.endsWith(u'0'))
        figure.chop(1);
    if (figure.endsWith(u'.'))
        figure.chop(1);
    return figure;
}

} // namespace

QString text(qint64 bytes)
{
    if (bytes == 0)
        return QStringLiteral("Zero KB");
    if (bytes == 1)
        return QStringLiteral("1 byte");
    if (bytes < 1'000)
        return QStringLiteral("%1 bytes").arg(bytes);

    // A figure that rounding would carry to 1000 reads better in the next unit.
    std::size_t chosen = 0;
    while (chosen + 1 < units.size() && roundedSteps(bytes, units[chosen]) >=
                                            static_cast<qint64>(1'000 * std::pow(10, units[chosen].decimals)))
        ++chosen;
    const Unit& unit = units[chosen];
    const double figure = static_cast<double>(roundedSteps(bytes, unit)) / std::pow(10, unit.decimals);
    return withoutTrailingZeros(QLocale::c().toString(figure, 'f', unit.decimals)) + u' ' +
           QString::fromLatin1(unit.name);
}

} // namespace cartloom::ByteCount
