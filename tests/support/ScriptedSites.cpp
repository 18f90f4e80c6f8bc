// SPDX-License-Identifier: MIT
#include "support/ScriptedSites.h"

#include "support/AresBundle.h"
#include "support/Sandbox.h"
#include "support/TestOrigins.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>

namespace cartloom
{

namespace
{

constexpr auto storePage = R"(<form><input type="hidden" name="csrf_token" value="token"></form>
<div>Quillet64.z64</div><a data-upload_id="42">Download</a>)";

QByteArray packedRelease(const std::filesystem::path& scratch, const QByteArray& tag)
{
    const auto tree = scratch / ("release-" + tag.toStdString());
    writeFile(makeAresApp(tree) / "tag", tag);
    const auto archive = scratch / "release.zip";
    zipFolder(tree, archive);
    return readFile(archive);
}

QByteArray json(const QJsonObject& object)
{
    return QJsonDocument(object).toJson();
}

} // namespace

ScriptedSites::ScriptedSites(const std::filesystem::path& scratch, const QByteArray& tag)
    : m_server([this](RawConnection& connection, const RawRequest& request) {
        const auto answer = answers.find(request.path);
        if (answer != answers.end() && answer->second.isEmpty())
            return;
        connection.send(answer != answers.end() ? answer->second : httpAnswer(404));
        if (!heldOpen.contains(request.path))
            connection.close();
    })
{
    const QJsonObject link{{QStringLiteral("url"), m_server.url(QLatin1String(game)).toString()}};

    offer(tag, packedRelease(scratch, tag));
    answers[page] = httpAnswer(200, storePage);
    answers[form] = httpAnswer(200, json(link));
    answers[game] = httpAnswer(200, bigEndianHeader + QByteArray(10'000'000 - bigEndianHeader.size(), 'x'));

    TestOrigins::setReleaseApi(origin());
    TestOrigins::setStore(origin());
}

void ScriptedSites::offer(const QByteArray& tag, const QByteArray& zip)
{
    const QJsonObject asset{
        {QStringLiteral("name"), QStringLiteral("ares-macos-universal.zip")},
        {QStringLiteral("size"), zip.size()},
        {QStringLiteral("browser_download_url"), m_server.url(QLatin1String(archive)).toString()}};
    const QJsonObject release{{QStringLiteral("tag_name"), QString::fromUtf8(tag)},
                              {QStringLiteral("assets"), QJsonArray{asset}}};
    answers[latest] = httpAnswer(200, json(release));
    answers[archive] = httpAnswer(200, zip);
}

QStringList ScriptedSites::asked() const
{
    QStringList paths;
    for (const auto& request : m_server.requests())
        paths.append(QString::fromLatin1(request.path));
    return paths;
}

bool ScriptedSites::isDeserted() const
{
    return std::ranges::all_of(m_server.connections(),
                               [](const auto& connection) { return connection->isClosed(); });
}

} // namespace cartloom
