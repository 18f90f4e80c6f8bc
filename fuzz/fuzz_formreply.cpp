// SPDX-License-Identifier: MIT
#include "Fuzzing.h"
#include "errors/AppError.h"
#include "game/GameDownloader.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QUrl>

#include <string>

using namespace cartloom;
using cartloom::Fuzzing::require;

/// A reply yields a link that can be asked for, the one under its key, or the one sentence and a short
/// quotation.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QByteArray reply = Fuzzing::bytesOf(data, size);
    try {
        const std::string link = GameDownloader::linkIn(reply);
        require(QUrl(QString::fromStdString(link), QUrl::StrictMode).isValid() && !link.empty(),
                "a link is an address");
        const auto text = QJsonDocument::fromJson(reply)[QStringLiteral("url")].toString();
        require(text.toStdString() == link, "the link is the one in the reply, byte for byte");
        require(link.find_first_of(std::string("\0\r\n", 3)) == std::string::npos,
                "a link cannot add a line to a request");
    } catch (const AppError& error) {
        require(error.message == QLatin1String("Gamestall did not return a download link."),
                "what is thrown is the sentence for a missing link");
        require(error.details == QString::fromUtf8(reply.left(500)), "the details quote 500 bytes at most");
    }
    return 0;
}
