// SPDX-License-Identifier: MIT
#include "DemoHome.h"

#include "platform/Text.h"

#include <QByteArray>
#include <QSettings>

namespace fs = std::filesystem;

namespace cartloom
{

namespace
{

void put(const char* variable, const fs::path& folder)
{
    fs::create_directories(folder);
    qputenv(variable, QByteArray::fromStdString(folder.native()));
}

/// The display's key lies in the real home, and is needed in the other one, too.
void keepDisplayKey()
{
    const fs::path key = fs::path(qgetenv("HOME").toStdString()) / ".Xauthority";
    if (!qEnvironmentVariableIsSet("XAUTHORITY") && fs::exists(key))
        qputenv("XAUTHORITY", QByteArray::fromStdString(key.native()));
}

} // namespace

void liveIn(const fs::path& folder)
{
    keepDisplayKey();
    const fs::path home = fs::absolute(folder);
    put("HOME", home);
    put("XDG_DATA_HOME", home / "data");
    put("XDG_CONFIG_HOME", home / "config");
    put("XDG_CACHE_HOME", home / "cache");
    // Qt reads XDG_CONFIG_HOME once.
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, toText(home / "config"));
    // The stand-in is on this machine, wherever the way out of it leads.
    qputenv("no_proxy", "127.0.0.1");
}

} // namespace cartloom
