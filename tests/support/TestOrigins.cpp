// SPDX-License-Identifier: MIT
#include "support/TestOrigins.h"

#include "emulator/SearchedFolders.h"
#include "network/Origins.h"
#include "platform/Places.h"

namespace cartloom
{

namespace
{

/// Nothing listens on this port.
const QUrl nowhere(QStringLiteral("http://127.0.0.1:1"));
QUrl releaseApiOrigin = nowhere;
QUrl storeOrigin = nowhere;
std::string authorities;

} // namespace

void TestOrigins::setReleaseApi(const QUrl& origin)
{
    releaseApiOrigin = origin;
}
void TestOrigins::setStore(const QUrl& origin)
{
    storeOrigin = origin;
}

void TestOrigins::setCertificateAuthorities(const std::string& file)
{
    authorities = file;
}

QUrl Origins::releaseApi()
{
    return releaseApiOrigin;
}
QUrl Origins::store()
{
    return storeOrigin;
}
QString Origins::emulatorSite()
{
    return QStringLiteral("emulator.example");
}
std::string Origins::certificateAuthorities()
{
    return authorities;
}

std::vector<std::filesystem::path> AresInstaller::searchedFolders()
{
    return {Places::homeFolder() / "machine", Places::homeFolder() / "Applications"};
}

} // namespace cartloom
