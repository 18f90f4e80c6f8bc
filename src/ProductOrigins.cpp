// SPDX-License-Identifier: MIT
#include "emulator/SearchedFolders.h"
#include "network/Origins.h"
#include "platform/Places.h"

namespace cartloom::Origins
{

QUrl releaseApi()
{
    return QUrl(QStringLiteral(CARTLOOM_API_ORIGIN));
}

QUrl store()
{
    return QUrl(QStringLiteral(CARTLOOM_STORE_ORIGIN));
}

QString emulatorSite()
{
    return QStringLiteral(CARTLOOM_EMULATOR_SITE);
}

std::string certificateAuthorities()
{
    return {};
}

} // namespace cartloom::Origins

std::vector<std::filesystem::path> cartloom::AresInstaller::searchedFolders()
{
    return Places::applicationFolders();
}
