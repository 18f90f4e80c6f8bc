// SPDX-License-Identifier: MIT
#include "emulator/ReleaseReply.h"

#include "errors/AppError.h"
#include "network/Link.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <limits>
#include <stdexcept>
#include <vector>

namespace cartloom::AresInstaller
{

namespace
{

struct APIAsset
{
    QString name;
    qint64 size = 0;
    QString browserDownloadURL;
};

struct APIRelease
{
    QString tagName;
    std::vector<APIAsset> assets;
};

/// Why a reply is not a release; for the error's details.
struct DecodingError : std::runtime_error
{
    using std::runtime_error::runtime_error;
};

QJsonValue required(const QJsonObject& object, const char* key)
{
    QJsonValue value = object.value(QLatin1String(key));
    if (value.isUndefined())
        throw DecodingError(std::string("There is no value for the key \"") + key + "\".");
    return value;
}

QString requiredText(const QJsonObject& object, const char* key)
{
    const QJsonValue value = required(object, key);
    if (!value.isString())
        throw DecodingError(std::string("The value of \"") + key + "\" is not a text.");
    return value.toString();
}

/// A number counts by its value, however it is written: 1000, 1000.0 and 1e3 are the same.
qint64 requiredInteger(const QJsonObject& object, const char* key, bool replyHoldsLowest)
{
    const QJsonValue value = required(object, key);
    // A value that is no whole number of 64 bits comes back as the default, whichever that is.
    const bool isWhole = value.toInteger(0) == value.toInteger(1);
    // Those just below the range are rounded up to its lowest number, from which only the figures tell them.
    const bool isLowest = value.toInteger() == std::numeric_limits<qint64>::min();
    if (!isWhole || (isLowest && !replyHoldsLowest))
        throw DecodingError(std::string("The value of \"") + key + "\" is not a whole number.");
    return value.toInteger();
}

QJsonObject requiredObject(const QJsonValue& value, const char* what)
{
    if (!value.isObject())
        throw DecodingError(std::string("The ") + what + " is not an object.");
    return value.toObject();
}

APIRelease decodeRelease(const QByteArray& body)
{
    QJsonParseError parseError;
    const auto document = QJsonDocument::fromJson(body, &parseError);
    if (document.isNull())
        throw DecodingError(parseError.errorString().toStdString() + " (at byte " +
                            std::to_string(parseError.offset) + ")");
    const QJsonObject root =
        requiredObject(document.isObject() ? QJsonValue(document.object()) : QJsonValue(), "reply");

    APIRelease release{requiredText(root, "tag_name"), {}};
    const QJsonValue assets = required(root, "assets");
    if (!assets.isArray())
        throw DecodingError("The value of \"assets\" is not a list.");
    const bool holdsLowest = body.contains(QByteArray::number(std::numeric_limits<qint64>::min()));
    for (const auto& item : assets.toArray()) {
        const QJsonObject asset = requiredObject(item, "asset");
        release.assets.push_back({requiredText(asset, "name"), requiredInteger(asset, "size", holdsLowest),
                                  requiredText(asset, "browser_download_url")});
    }
    return release;
}

/// The debug symbols come as an archive whose name is that of a macOS download in all else.
bool isMacOSDownload(const APIAsset& asset)
{
    return asset.name.startsWith(QLatin1String("ares-macos")) && asset.name.endsWith(QLatin1String(".zip")) &&
           !asset.name.contains(QLatin1String("dSYMs"));
}

/// The name in printable ASCII. Other characters can make the window look for fonts, or lay out text, for
/// seconds.
QString plainName(const QString& name)
{
    constexpr qsizetype maxLength = 100;
    QString plain = name.left(maxLength);
    for (QChar& character : plain) {
        if (character < u' ' || character > u'~')
            character = u'?';
    }
    return name.size() > maxLength ? plain + QStringLiteral("...") : plain;
}

QString namesOf(const std::vector<APIAsset>& assets)
{
    constexpr qsizetype maxNames = 30;
    QStringList names;
    for (const auto& asset : assets) {
        if (names.size() == maxNames) {
            names.append(QStringLiteral("..."));
            break;
        }
        names.append(plainName(asset.name));
    }
    return names.join(u'\n');
}

AresRelease choose(const APIRelease& release)
{
    const auto chosen = std::ranges::find_if(release.assets, isMacOSDownload);
    const auto url = chosen != release.assets.end() ? parseLink(chosen->browserDownloadURL) : std::nullopt;
    if (!url) {
        throw AppError(QStringLiteral("The latest Ares release (") + release.tagName +
                           QStringLiteral(") has no macOS download."),
                       namesOf(release.assets));
    }
    return {release.tagName, chosen->name, *url, chosen->size};
}

} // namespace

AresRelease releaseIn(const QByteArray& reply)
{
    APIRelease release;
    try {
        release = decodeRelease(reply);
    } catch (const DecodingError& error) {
        throw AppError(QStringLiteral("Could not read the Ares release list."),
                       QString::fromStdString(error.what()));
    }
    return choose(release);
}

} // namespace cartloom::AresInstaller
