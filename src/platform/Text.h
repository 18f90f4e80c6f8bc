// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <QStringDecoder>
#include <QVariant>

#include <filesystem>
#include <optional>

namespace cartloom
{

/// A path as text. Paths are UTF-8; what is not valid UTF-8 shows as replacement characters.
[[nodiscard]] inline QString toText(const std::filesystem::path& path)
{
    const auto& native = path.native();
    return QString::fromUtf8(native.data(), static_cast<qsizetype>(native.size()));
}

/// The path that a text names, in UTF-8.
[[nodiscard]] inline std::filesystem::path toPath(const QString& text)
{
    return std::filesystem::path(text.toUtf8().toStdString());
}

/// The text that the bytes are in UTF-8; none when they are not UTF-8.
[[nodiscard]] inline std::optional<QString> decodeUtf8(const QByteArray& bytes)
{
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    const QString text = decoder(bytes);
    return decoder.hasError() ? std::nullopt : std::optional(text);
}

/// The name of a value of an enumeration that Qt's object system knows; none for a value without a name.
template <typename Enum>
[[nodiscard]] QString nameOf(Enum value)
{
    return QVariant::fromValue(value).toString();
}

} // namespace cartloom
