// SPDX-License-Identifier: MIT
#include "DemoOrigins.h"

#include "emulator/SearchedFolders.h"
#include "network/Origins.h"
#include "platform/Places.h"

namespace cartloom
{

namespace
{

QUrl standIn;

} // namespace

void DemoOrigins::set(const QUrl& origin)
{
    standIn = origin;
}

QUrl Origins::releaseApi()
{
    return standIn;
}
QUrl Origins::store()
{
    return standIn;
}
QString Origins::emulatorSite()
{
    return QStringLiteral("ares-emu.net");
}
std::string Origins::certificateAuthorities()
{
    return {};
}

std::vector<std::filesystem::path> AresInstaller::searchedFolders()
{
    return {Places::homeFolder() / "Applications"};
}

} // namespace cartloom
