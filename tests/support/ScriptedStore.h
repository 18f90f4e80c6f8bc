// SPDX-License-Identifier: MIT
#pragma once

#include "game/GameDownloader.h"
#include "support/RawServer.h"
#include "support/ResultOf.h"
#include "support/Sandbox.h"
#include "support/TestOrigins.h"

#include <atomic>
#include <map>

namespace cartloom
{

/// The store with its page, its form and its file, each of which a test may change. It leaves a request with
/// an empty answer unanswered. It is the compiled origin for as long as it lives.
struct ScriptedStore
{
    static inline const auto pagePath = QByteArrayLiteral("/quillet64");
    static inline const auto formPath = QByteArrayLiteral("/quillet64/file/22?source=game_download");
    static inline const auto filePath = QByteArrayLiteral("/files/game?signature=a%2Fb");

    explicit ScriptedStore(const QByteArray& token = "token")
    {
        TestOrigins::setStore(server.url(QString()));
        answers[pagePath] = httpAnswer(200, page(token), {"Set-Cookie: session=s1; Path=/"});
        answers[formPath] =
            httpAnswer(200, "{\"url\":\"" + server.url(QString()).toEncoded() + filePath + "\"}");
        answers[filePath] = httpAnswer(200, rom());
    }

    /// A page that lists a manual and the game.
    [[nodiscard]] static QByteArray page(const QByteArray& token)
    {
        return "<form><input name=\"csrf_token\" value=\"" + token +
               "\"></form><b>Manual.pdf</b><a data-upload_id=\"11\"></a>"
               "<b>Quillet64.z64</b><a data-upload_id=\"22\"></a>";
    }

    /// A file that passes the check.
    [[nodiscard]] static const QByteArray& rom()
    {
        static const QByteArray bytes = bigEndianHeader + QByteArray(9'999'996, 'r');
        return bytes;
    }

    std::filesystem::path download(CancellationToken token = {})
    {
        return resultOf(GameDownloader::download([this](qint64, qint64) { ++progressed; }, std::move(token)));
    }

    std::map<QByteArray, QByteArray> answers;
    std::function<void(const QByteArray& path)> onRequest;
    std::atomic<int> progressed = 0;
    RawServer server{[this](RawConnection& connection, const RawRequest& request) {
        if (onRequest)
            onRequest(request.path);
        const QByteArray& answer = answers[request.path];
        if (answer.isEmpty())
            return;
        connection.send(answer);
        connection.close();
    }};
};

} // namespace cartloom
