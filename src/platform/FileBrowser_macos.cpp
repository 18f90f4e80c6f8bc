// SPDX-License-Identifier: MIT
#include "platform/FileBrowser.h"

#include "platform/Text.h"

#include <QProcess>

namespace cartloom::FileBrowser
{

void reveal(const std::filesystem::path& folder)
{
    QProcess::startDetached(QStringLiteral("open"), {QStringLiteral("-R"), toText(folder)});
}

} // namespace cartloom::FileBrowser
