// SPDX-License-Identifier: MIT
#include "platform/Text.h"

#include <QStringDecoder>

namespace cartloom
{

namespace
{

constexpr char16_t escape = 0xDC00;

/// The text of a UTF-8 string, with a byte order mark where it begins with one.
std::optional<QString> decodeAll(QByteArrayView bytes)
{
    QStringDecoder decoder(QStringDecoder::Utf8,
                           QStringDecoder::Flag::Stateless | QStringDecoder::Flag::ConvertInitialBom);
    const QString text = decoder(bytes);
    return decoder.hasError() ? std::nullopt : std::optional(text);
}

/// The first character of the bytes; an escape if they do not begin with one.
QString firstCharacter(QByteArrayView bytes, qsizetype& length)
{
    constexpr qsizetype maxLength = 4;
    for (length = 1; length <= qMin(maxLength, bytes.size()); ++length) {
        if (const auto text = decodeAll(bytes.first(length)))
            return *text;
    }
    length = 1;
    return QString(QChar(char16_t(escape + static_cast<unsigned char>(bytes.front()))));
}

bool isEscape(const QString& text, qsizetype at)
{
    const auto unit = text[at].unicode();
    const bool isPair = at > 0 && text[at - 1].isHighSurrogate();
    return unit >= escape + 0x80 && unit <= escape + 0xFF && !isPair;
}

} // namespace

QString toText(const std::filesystem::path& path)
{
    QByteArrayView rest(path.native());
    if (const auto whole = decodeAll(rest))
        return *whole;
    QString text;
    while (!rest.isEmpty()) {
        qsizetype length = 0;
        text += firstCharacter(rest, length);
        rest = rest.sliced(length);
    }
    return text;
}

std::filesystem::path toPath(const QString& text)
{
    std::string bytes;
    qsizetype begin = 0;
    for (qsizetype at = 0; at < text.size(); ++at) {
        if (isEscape(text, at)) {
            bytes += text.mid(begin, at - begin).toUtf8().toStdString();
            bytes += static_cast<char>(text[at].unicode() - escape);
            begin = at + 1;
        }
    }
    return bytes + text.mid(begin).toUtf8().toStdString();
}

std::optional<std::filesystem::path> toPath(const QUrl& address)
{
    // QUrl::toLocalFile() replaces bytes that are not UTF-8.
    const auto bytes = QByteArray::fromPercentEncoding(address.path(QUrl::FullyEncoded).toLatin1());
    const std::filesystem::path file(bytes.toStdString());
    // The system would read a path only up to a null character.
    const bool usable =
        address.isLocalFile() && address.host().isEmpty() && file.is_absolute() && !bytes.contains('\0');
    return usable ? std::optional(file) : std::nullopt;
}

QUrl toUrl(const std::filesystem::path& file)
{
    return QUrl::fromEncoded("file://" + QByteArray::fromStdString(file.native()).toPercentEncoding("/"));
}

std::optional<QString> decodeUtf8(const QByteArray& bytes)
{
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    const QString text = decoder(bytes);
    return decoder.hasError() ? std::nullopt : std::optional(text);
}

} // namespace cartloom
