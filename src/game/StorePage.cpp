// SPDX-License-Identifier: MIT
#include "game/GameDownloader.h"

#include "errors/AppError.h"
#include "network/Link.h"
#include "network/Origins.h"
#include "platform/Text.h"
#include "storage/Paths.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>

#include <array>

namespace cartloom::GameDownloader
{

namespace
{

constexpr qsizetype maxQuotedBytes = 500;

/// What group 1 of a pattern's first match holds.
std::optional<QString> firstCapture(const QRegularExpression& pattern, const QString& text)
{
    const auto match = pattern.match(text);
    return match.hasMatch() ? std::optional(match.captured(1)) : std::nullopt;
}

} // namespace

QUrl pageURL()
{
    QUrl page = Origins::store();
    page.setPath(QStringLiteral("/quillet64"));
    return page;
}

std::optional<QString> parseCSRF(const QString& page)
{
    // The attributes of the hidden input come in either order.
    static const std::array patterns{
        QRegularExpression(QStringLiteral(R"re(name="csrf_token"\s+value="([^"]+)")re"),
                           QRegularExpression::CaseInsensitiveOption),
        QRegularExpression(QStringLiteral(R"re(value="([^"]+)"\s+name="csrf_token")re"),
                           QRegularExpression::CaseInsensitiveOption),
    };
    for (const auto& pattern : patterns) {
        if (auto token = firstCapture(pattern, page))
            return token;
    }
    return std::nullopt;
}

std::optional<QString> parseUploadID(const QString& page)
{
    // Each upload is listed with its file name first and its id after it.
    static const QRegularExpression pattern(QStringLiteral(R"re(data-upload_id="(\d+)")re"));
    const QString fileName = toText(Paths::gameFile().filename());

    QStringList ids;
    qsizetype cursor = 0;
    for (auto matches = pattern.globalMatch(page); matches.hasNext();) {
        const auto match = matches.next();
        ids.append(match.captured(1));
        const auto listing = QStringView(page).sliced(cursor, match.capturedStart() - cursor);
        if (listing.contains(fileName, Qt::CaseInsensitive))
            return ids.last();
        cursor = match.capturedEnd();
    }
    // A page with a single upload needs no file name.
    return ids.size() == 1 ? std::optional(ids.first()) : std::nullopt;
}

std::string linkIn(const QByteArray& reply)
{
    const QJsonValue link = QJsonDocument::fromJson(reply).object().value(QLatin1String("url"));
    const auto address = link.isString() ? parseLink(link.toString()) : std::nullopt;
    if (!address)
        throw AppError(QStringLiteral("Gamestall did not return a download link."),
                       QString::fromUtf8(reply.left(maxQuotedBytes)));
    return *address;
}

} // namespace cartloom::GameDownloader
