// SPDX-License-Identifier: MIT
#include "platform/FileBrowser.h"

#include "platform/Text.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDesktopServices>
#include <QUrl>

namespace cartloom::FileBrowser
{

void reveal(const std::filesystem::path& folder)
{
    const QUrl url = toUrl(folder);
    auto call = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.FileManager1"), QStringLiteral("/org/freedesktop/FileManager1"),
        QStringLiteral("org.freedesktop.FileManager1"), QStringLiteral("ShowItems"));
    call.setArguments({QStringList{url.toString(QUrl::FullyEncoded)}, QString()});
    auto* const answer = new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(call));
    const auto judge = [answer, url] {
        // Not every desktop has a file manager that answers to this name.
        if (answer->isError())
            QDesktopServices::openUrl(url);
        answer->deleteLater();
    };
    // Without a bus, the call is over at once, and nothing is told later.
    if (answer->isFinished())
        judge();
    else
        QObject::connect(answer, &QDBusPendingCallWatcher::finished, answer, judge);
}

} // namespace cartloom::FileBrowser
