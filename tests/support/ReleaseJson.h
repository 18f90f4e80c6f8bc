// SPDX-License-Identifier: MIT
#pragma once

#include "emulator/AresInstaller.h"
#include "support/RawServer.h"
#include "support/ResultOf.h"
#include "support/TestOrigins.h"

namespace cartloom
{

/// The sentence for a list that is no list.
inline const auto unreadable = QStringLiteral("Could not read the Ares release list.");

/// JSON written with single quotes.
[[nodiscard]] inline QByteArray json(QByteArray text)
{
    return text.replace('\'', '"');
}

[[nodiscard]] inline QByteArray asset(const QByteArray& name, const QByteArray& size = "80123456",
                                      const QByteArray& url = "https://files.example/a.zip")
{
    return json("{'name':'" + name + "','size':" + size + ",'browser_download_url':'" + url + "'}");
}

[[nodiscard]] inline QByteArray release(const QByteArray& assets, const QByteArray& tag = "v148")
{
    return json("{'tag_name':'" + tag + "','assets':[" + assets + "]}");
}

[[nodiscard]] inline AresRelease fetch()
{
    return resultOf(AresInstaller::fetchLatest());
}

/// What the lookup makes of a body with status 200.
[[nodiscard]] inline AresRelease lookUp(const QByteArray& body)
{
    const RawServer server(httpAnswer(200, body));
    TestOrigins::setReleaseApi(server.url(QString()));
    return fetch();
}

} // namespace cartloom
