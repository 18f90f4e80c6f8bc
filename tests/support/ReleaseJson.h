// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>

namespace cartloom
{

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

} // namespace cartloom
