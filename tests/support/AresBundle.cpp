// SPDX-License-Identifier: MIT
#include "support/AresBundle.h"

#include "platform/Text.h"
#include "support/Sandbox.h"

#include <QProcess>

namespace cartloom
{

std::filesystem::path makeAresApp(const std::filesystem::path& folder)
{
    const auto app = folder / "ares.app";
    writeFile(app / "Contents/Info.plist",
              R"(<?xml version="1.0" encoding="UTF-8"?>
<plist version="1.0"><dict><key>CFBundleExecutable</key><string>ares</string></dict></plist>)");
    std::filesystem::create_directories(app / "Contents/MacOS");
    std::filesystem::copy_file(SCRIPTED_CHILD, app / "Contents/MacOS/ares",
                               std::filesystem::copy_options::overwrite_existing);
    return app;
}

void scriptChild(const QStringList& commands)
{
    qputenv("CARTLOOM_CHILD", commands.join(u'\n').toUtf8());
}

void zipFolder(const std::filesystem::path& folder, const std::filesystem::path& archive)
{
    QProcess tool;
    QStringList arguments{QStringLiteral("--format"), QStringLiteral("zip"),
                          QStringLiteral("-cf"),      toText(archive),
                          QStringLiteral("-C"),       toText(folder)};
    for (const auto& entry : std::filesystem::directory_iterator(folder))
        arguments.append(toText(entry.path().filename()));
    tool.start(QStringLiteral("bsdtar"), arguments);
    if (!tool.waitForFinished() || tool.exitCode() != 0)
        qFatal("bsdtar: %s", tool.readAllStandardError().constData());
}

} // namespace cartloom
