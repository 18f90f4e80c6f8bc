// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QByteArrayList>
#include <QtEndian>

namespace cartloom::BinaryList
{

[[nodiscard]] inline QByteArray bigEndian(quint64 value, qsizetype width = 8)
{
    char bytes[8];
    qToBigEndian(value, bytes);
    return {bytes + 8 - width, width};
}

/// The start of an object. A count follows it in four bytes.
[[nodiscard]] inline QByteArray marker(int kind, quint64 count)
{
    return QByteArray(1, static_cast<char>(kind << 4 | 0xf)) + '\x12' + bigEndian(count, 4);
}

[[nodiscard]] inline QByteArray text(const QByteArray& ascii)
{
    return marker(0x5, static_cast<quint64>(ascii.size())) + ascii;
}

[[nodiscard]] inline QByteArray utf16(const QString& characters)
{
    QByteArray bytes;
    for (const QChar character : characters)
        bytes += bigEndian(character.unicode(), 2);
    return marker(0x6, static_cast<quint64>(characters.size())) + bytes;
}

/// References to other objects, by their places in the list.
[[nodiscard]] inline QByteArray references(const QList<int>& objects)
{
    QByteArray bytes;
    for (const int object : objects)
        bytes += bigEndian(static_cast<quint64>(object), 4);
    return bytes;
}

[[nodiscard]] inline QByteArray array(const QList<int>& objects)
{
    return marker(0xa, static_cast<quint64>(objects.size())) + references(objects);
}

/// All keys, and then all values.
[[nodiscard]] inline QByteArray dictionary(const QList<int>& keysAndValues)
{
    return marker(0xd, static_cast<quint64>(keysAndValues.size()) / 2) + references(keysAndValues);
}

struct Trailer
{
    quint64 offsetBytes = 4;
    quint64 referenceBytes = 4;
    quint64 top = 0;
};

/// A binary property list of these objects. The first one is at the top.
[[nodiscard]] inline QByteArray of(const QByteArrayList& objects, const Trailer& trailer = {})
{
    QByteArray list("bplist00");
    QByteArray offsets;
    for (const auto& object : objects) {
        offsets += bigEndian(static_cast<quint64>(list.size()), 4);
        list += object;
    }
    const auto table = static_cast<quint64>(list.size());
    return list + offsets + QByteArray(6, '\0') + bigEndian(trailer.offsetBytes, 1) +
           bigEndian(trailer.referenceBytes, 1) + bigEndian(static_cast<quint64>(objects.size())) +
           bigEndian(trailer.top) + bigEndian(table);
}

/// A list whose value beside the name of the program has 2^levels strings: each array refers to the next one
/// twice.
[[nodiscard]] inline QByteArray bomb(int levels, const QByteArray& program)
{
    QByteArrayList objects{dictionary({1, 2, 4, 3}), text("Bomb"), text("CFBundleExecutable"), text(program)};
    for (int level = 0; level < levels; ++level) {
        const int next = static_cast<int>(objects.size()) + 1;
        objects.append(array({next, next}));
    }
    objects.append(text("x"));
    return of(objects);
}

} // namespace cartloom::BinaryList
