// SPDX-License-Identifier: MIT
#include "platform/PropertyList.h"

#include "platform/Files.h"

#include <QByteArrayView>
#include <QLatin1String>
#include <QStringDecoder>
#include <QXmlStreamReader>

#include <stdexcept>
#include <system_error>

namespace cartloom::PropertyList
{

namespace
{

constexpr qsizetype maxFileBytes = 1024 * 1024;

/// A binary property list, of which only one text is decoded: nothing is followed deeper than the top
/// dictionary. Members throw std::out_of_range for a position outside the list.
class BinaryList
{
public:
    static constexpr QByteArrayView mark{"bplist00"};

    explicit BinaryList(QByteArrayView bytes)
        : m_bytes(bytes)
    {
        const quint64 trailer = static_cast<quint64>(bytes.size()) - trailerBytes;
        m_offsetBytes = number(trailer + 6, 1);
        m_referenceBytes = number(trailer + 7, 1);
        m_objects = number(trailer + 8, 8);
        m_top = number(trailer + 16, 8);
        m_offsets = number(trailer + 24, 8);
    }

    [[nodiscard]] std::optional<QString> text(QLatin1String key) const
    {
        // Keys may share one object, so that the file's size does not bound their number.
        constexpr quint64 maxEntries = 10'000;
        const Object top = object(m_top);
        if (top.kind != Kind::dictionary || top.count > maxEntries)
            return std::nullopt;
        for (quint64 i = 0; i < top.count; ++i) {
            const Object candidate = object(reference(top, i));
            if (candidate.count == static_cast<quint64>(key.size()) && textOf(candidate) == key)
                return textOf(object(reference(top, top.count + i)));
        }
        return std::nullopt;
    }

private:
    static constexpr quint64 trailerBytes = 32;

    enum class Kind : quint64 { integer = 0x1, ascii = 0x5, utf16 = 0x6, dictionary = 0xd };

    struct Object
    {
        Kind kind;
        /// Characters, or pairs of a key and a value.
        quint64 count;
        quint64 contents;
    };

    [[nodiscard]] QByteArrayView slice(quint64 at, quint64 length) const
    {
        const auto size = static_cast<quint64>(m_bytes.size());
        if (at > size || length > size - at)
            throw std::out_of_range("property list");
        return m_bytes.sliced(static_cast<qsizetype>(at), static_cast<qsizetype>(length));
    }

    [[nodiscard]] quint64 number(quint64 at, quint64 width) const
    {
        if (width < 1 || width > sizeof(quint64))
            throw std::out_of_range("property list");
        quint64 value = 0;
        for (const char byte : slice(at, width))
            value = value << 8 | static_cast<unsigned char>(byte);
        return value;
    }

    /// The element of a table of numbers.
    [[nodiscard]] quint64 element(quint64 table, quint64 index, quint64 width) const
    {
        if (index > static_cast<quint64>(m_bytes.size()))
            throw std::out_of_range("property list");
        return number(table + index * width, width);
    }

    [[nodiscard]] quint64 reference(const Object& owner, quint64 index) const
    {
        return element(owner.contents, index, m_referenceBytes);
    }

    [[nodiscard]] Object object(quint64 index) const
    {
        constexpr quint64 countFollows = 0xf;
        if (index >= m_objects)
            throw std::out_of_range("property list");
        const quint64 at = element(m_offsets, index, m_offsetBytes);
        const quint64 marker = number(at, 1);
        Object object{Kind(marker >> 4), marker & 0xf, at + 1};
        if (object.count == countFollows) {
            const quint64 width = 1ULL << (number(at + 1, 1) & 0xf);
            object.count = number(at + 2, width);
            object.contents = at + 2 + width;
        }
        return object;
    }

    [[nodiscard]] std::optional<QString> textOf(const Object& object) const
    {
        if (object.kind == Kind::ascii)
            return QString::fromUtf8(slice(object.contents, object.count));
        if (object.kind != Kind::utf16)
            return std::nullopt;
        // The multiplication cannot overflow: no list has half as many bytes.
        const quint64 characters = static_cast<quint64>(slice(object.contents, object.count).size());
        return QStringDecoder(QStringDecoder::Utf16BE)(slice(object.contents, 2 * characters));
    }

    QByteArrayView m_bytes;
    quint64 m_offsetBytes;
    quint64 m_referenceBytes;
    quint64 m_objects;
    quint64 m_top;
    quint64 m_offsets;
};

/// True if Qt's reader needs little time and memory. It compares each attribute with all others, keeps an
/// entry for each open element and parenthesis, and repeats what a declaration adds.
bool isPlausible(const QByteArray& xml)
{
    constexpr qsizetype maxAttributes = 100;
    constexpr qsizetype maxMarks = 10'000;
    return xml.count('=') <= maxAttributes && xml.count('<') + xml.count('&') + xml.count('(') <= maxMarks &&
           !xml.contains("<!ENTITY") && !xml.contains("<!ATTLIST");
}

std::optional<QString> textInXml(const QByteArray& bytes, QLatin1String key)
{
    if (!isPlausible(bytes))
        return std::nullopt;
    // A string is read as UTF-8, whatever encoding the list declares.
    QXmlStreamReader xml(QString::fromUtf8(bytes));
    for (const auto* const element : {"plist", "dict"}) {
        if (!xml.readNextStartElement() || xml.name() != QLatin1String(element))
            return std::nullopt;
    }
    QString lastKey;
    std::optional<QString> text;
    while (xml.readNextStartElement()) {
        if (xml.name() == QLatin1String("key"))
            lastKey = xml.readElementText();
        else if (xml.name() == QLatin1String("string") && lastKey == key)
            text = xml.readElementText();
        else
            xml.skipCurrentElement();
    }
    return xml.hasError() ? std::nullopt : text;
}

} // namespace

std::optional<QString> text(const std::filesystem::path& file, const char* key)
{
    try {
        const QByteArray bytes = Files::read(file, maxFileBytes + 1);
        if (bytes.size() > maxFileBytes)
            return std::nullopt;
        const QLatin1String name(key);
        return bytes.startsWith(BinaryList::mark) ? BinaryList(bytes).text(name) : textInXml(bytes, name);
    } catch (const std::system_error&) {
        return std::nullopt;
    } catch (const std::out_of_range&) {
        return std::nullopt;
    }
}

} // namespace cartloom::PropertyList
