// SPDX-License-Identifier: MIT
#include "Fuzzing.h"
#include "game/GameDownloader.h"

#include <QUrl>

#include <algorithm>

using namespace cartloom;
using cartloom::Fuzzing::require;

namespace
{

using Text = std::optional<QString>;

const auto field = QStringLiteral("name=\"csrf_token\"");
const auto value = QStringLiteral("value=\"");
const auto uploadID = QStringLiteral("data-upload_id=\"");

bool isDigit(QChar c)
{
    return c >= u'0' && c <= u'9';
}

/// Where the white space that begins at a place ends.
qsizetype afterSpace(const QString& page, qsizetype place)
{
    while (place < page.size() && QStringLiteral(" \t\n\v\f\r").contains(page.at(place)))
        ++place;
    return place;
}

bool standsAt(const QString& page, qsizetype place, const QString& text)
{
    return QStringView(page).sliced(place).startsWith(text, Qt::CaseInsensitive);
}

/// The token by plain search, where the field's name comes first.
Text tokenAfterField(const QString& page)
{
    qsizetype place = 0;
    while ((place = page.indexOf(field, place, Qt::CaseInsensitive)) >= 0) {
        place += field.size();
        const qsizetype next = afterSpace(page, place);
        if (next == place || !standsAt(page, next, value))
            continue;
        const qsizetype start = next + value.size();
        const qsizetype end = page.indexOf(u'"', start);
        if (end > start)
            return page.sliced(start, end - start);
    }
    return std::nullopt;
}

/// The token by plain search, where the field's name comes last.
Text tokenBeforeField(const QString& page)
{
    qsizetype place = 0;
    while ((place = page.indexOf(value, place, Qt::CaseInsensitive)) >= 0) {
        place += value.size();
        const qsizetype end = page.indexOf(u'"', place);
        if (end <= place)
            continue;
        const qsizetype next = afterSpace(page, end + 1);
        if (next > end + 1 && standsAt(page, next, field))
            return page.sliced(place, end - place);
    }
    return std::nullopt;
}

/// The upload's id by plain search.
Text uploadIDIn(const QString& page)
{
    QStringList ids;
    qsizetype listing = 0;
    qsizetype place = 0;
    while ((place = page.indexOf(uploadID, place)) >= 0) {
        const qsizetype start = place + uploadID.size();
        qsizetype end = start;
        while (end < page.size() && isDigit(page.at(end)))
            ++end;
        if (end > start && end < page.size() && page.at(end) == u'"') {
            ids.append(page.sliced(start, end - start));
            const auto before = QStringView(page).sliced(listing, place - listing);
            if (before.contains(QLatin1String("Quillet64.z64"), Qt::CaseInsensitive))
                return ids.last();
            listing = end + 1;
        }
        place = start;
    }
    return ids.size() == 1 ? Text(ids.first()) : std::nullopt;
}

bool fitsAForm(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || isDigit(QLatin1Char(c)) || c == '-' ||
           c == '.' || c == '_' || c == '~' || c == '%';
}

} // namespace

/// The patterns find what a plain search finds; and no token can add to the form, no id to the address.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QString page = QString::fromUtf8(Fuzzing::bytesOf(data, size));

    const Text token = GameDownloader::parseCSRF(page);
    const Text expected = tokenAfterField(page);
    require(token == (expected ? expected : tokenBeforeField(page)),
            "the token is the one that the page holds");
    if (token) {
        const QByteArray encoded = QUrl::toPercentEncoding(*token);
        require(!token->isEmpty() && std::all_of(encoded.begin(), encoded.end(), fitsAForm),
                "a token is sent as one value");
        require(QByteArray::fromPercentEncoding(encoded) == token->toUtf8(),
                "a token arrives as it stands on the page");
    }

    const Text id = GameDownloader::parseUploadID(page);
    require(id == uploadIDIn(page), "the id is the one that the page holds");
    require(!id || (!id->isEmpty() && std::all_of(id->begin(), id->end(), isDigit)),
            "an id is of decimal digits");
    return 0;
}
