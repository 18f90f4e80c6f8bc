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

/// Packed once for all cases of a test.
const QByteArray& packedRelease(const std::filesystem::path& scratch, const QByteArray& tag)
{
    static std::map<QByteArray, QByteArray> packed;
    QByteArray& zip = packed[tag];
    if (zip.isEmpty()) {
        const auto tree = scratch / ("release-" + tag.toStdString());
        writeFile(makeAresApp(tree) / "tag", tag);
        const auto archive = scratch / "release.zip";
        zipFolder(tree, archive);
        zip = readFile(archive);
    }
    return zip;
}

QByteArray json(const QJsonObject& object)
{
    return QJsonDocument(object).toJson();
}

} // namespace

ScriptedSites::ScriptedSites(const std::filesystem::path& scratch, const QByteArray& tag)
    : m_server([this](RawConnection& connection, const RawRequest& request) {
        if (const auto script = scripts.find(request.path); script != scripts.end()) {
            script->second(connection, request);
            return;
        }
        const auto answer = answers.find(request.path);
        if (answer != answers.end() && answer->second.isEmpty())
            return;
        connection.send(answer != answers.end() ? answer->second : httpAnswer(404));
        if (!heldOpen.contains(request.path))
            connection.close();
    })
{
    publish(packedRelease(scratch, tag), tag);
    answers[page] = httpAnswer(200, storePage);
    answers[form] = httpAnswer(200, link(url(game)));
    answers[game] = httpAnswer(200, bigEndianHeader + QByteArray(10'000'000 - bigEndianHeader.size(), 'x'));
    m_good = answers;
    mend();
}

void ScriptedSites::publish(const QByteArray& zip, const QByteArray& tag)
{
    answers[archive] = httpAnswer(200, zip);
    answers[latest] = httpAnswer(200, release(tag, zip.size(), url(archive)));
}

QByteArray ScriptedSites::release(const QByteArray& tag, qint64 size, const QUrl& address)
{
    const QJsonObject asset{{QStringLiteral("name"), QStringLiteral("ares-macos-universal.zip")},
                            {QStringLiteral("size"), size},
                            {QStringLiteral("browser_download_url"), address.toString()}};
    return json({{QStringLiteral("tag_name"), QString::fromUtf8(tag)},
                 {QStringLiteral("assets"), QJsonArray{asset}}});
}

QByteArray ScriptedSites::link(const QUrl& address)
{
    return json({{QStringLiteral("url"), address.toString()}});
}

QByteArray ScriptedSites::body(const char* path) const
{
    const QByteArray& answer = answers.at(path);
    return answer.mid(answer.indexOf("\r\n\r\n") + 4);
}

void ScriptedSites::mend()
{
    answers = m_good;
    scripts.clear();
    heldOpen.clear();
    TestOrigins::setReleaseApi(origin());
    TestOrigins::setStore(origin());
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
