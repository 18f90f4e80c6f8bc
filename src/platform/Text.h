// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <QUrl>
#include <QVariant>

#include <filesystem>
#include <optional>

namespace cartloom
{

/// A path as text, for showing and for toPath. Each byte that is not part of valid UTF-8 becomes a lone
/// surrogate, U+DC00 and the byte, which shows as a replacement character.
[[nodiscard]] QString toText(const std::filesystem::path& path);

/// The path that a text names: in UTF-8, and byte for byte the one that toText was given.
[[nodiscard]] std::filesystem::path toPath(const QString& text);

/// The path that the address of a file on this computer names, byte for byte; none for any other address.
[[nodiscard]] std::optional<std::filesystem::path> toPath(const QUrl& address);

/// The address of a file, byte for byte.
[[nodiscard]] QUrl toUrl(const std::filesystem::path& file);

/// The text that the bytes are in UTF-8; none when they are not UTF-8.
[[nodiscard]] std::optional<QString> decodeUtf8(const QByteArray& bytes);

/// The name of a value of an enumeration that Qt's object system knows; none for a value without a name.
template <typename Enum>
[[nodiscard]] QString nameOf(Enum value)
{
    return QVariant::fromValue(value).toString();
}

} // namespace cartloom
