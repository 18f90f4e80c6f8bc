// SPDX-License-Identifier: MIT
#include "Fuzzing.h"
#include "emulator/ReleaseReply.h"
#include "errors/AppError.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QUrl>

#include <algorithm>

using namespace cartloom;
using cartloom::Fuzzing::require;

namespace
{

bool isMacOSDownload(const QString& name)
{
    return name.startsWith(QLatin1String("ares-macos")) && name.endsWith(QLatin1String(".zip")) &&
           !name.contains(QLatin1String("dSYMs"));
}

bool isPlain(const QString& text)
{
    return std::ranges::all_of(text, [](QChar character) { return character >= u' ' && character <= u'~'; });
}

void checkRelease(const AresRelease& release, const QJsonObject& reply)
{
    require(reply.value(QLatin1String("tag_name")) == release.tagName, "the tag is the reply's");
    require(isMacOSDownload(release.assetName), "the asset is a macOS download");
    require(QUrl(QString::fromStdString(release.downloadURL), QUrl::StrictMode).isValid(),
            "its link is an address");
    for (const auto& item : reply.value(QLatin1String("assets")).toArray()) {
        const QJsonObject asset = item.toObject();
        if (!isMacOSDownload(asset.value(QLatin1String("name")).toString()))
            continue;
        require(asset.value(QLatin1String("name")) == release.assetName, "the asset is the first that fits");
        require(asset.value(QLatin1String("size")).isDouble() &&
                    asset.value(QLatin1String("size")).toInteger(release.size ^ 1) == release.size,
                "the size is the asset's");
        const QString address = asset.value(QLatin1String("browser_download_url")).toString();
        require(address.toStdString() == release.downloadURL, "the link is the asset's, byte for byte");
        return;
    }
    require(false, "the asset is one of the reply's");
}

void checkError(const AppError& error, const QJsonObject& reply)
{
    if (error.message == QLatin1String("Could not read the Ares release list.")) {
        require(!error.details.isEmpty() && error.details.size() < 200,
                "why a reply cannot be read is told in short");
        return;
    }
    const QString tag = reply.value(QLatin1String("tag_name")).toString();
    require(error.message == QStringLiteral("The latest Ares release (") + tag +
                                 QStringLiteral(") has no macOS download."),
            "what is thrown is one of the two sentences");
    const QStringList lines = error.details.split(u'\n');
    const auto assets = reply.value(QLatin1String("assets")).toArray();
    require(lines.size() == std::clamp<qsizetype>(assets.size(), 1, 31),
            "the details name 30 assets and no more");
    for (const auto& line : lines)
        require(line.size() <= 103 && isPlain(line), "a name is cut, and has plain characters only");
}

} // namespace

/// A reply yields its first macOS download, as it describes it, or one of two errors, and nothing else is
/// thrown.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QByteArray reply = Fuzzing::bytesOf(data, size);
    const QJsonObject object = QJsonDocument::fromJson(reply).object();
    try {
        checkRelease(AresInstaller::releaseIn(reply), object);
    } catch (const AppError& error) {
        checkError(error, object);
    }
    return 0;
}
