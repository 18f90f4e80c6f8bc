// SPDX-License-Identifier: MIT
#include "core/Paths.h"

#include "platform/Files.h"
#include "platform/Places.h"

#include <QUuid>

namespace cartloom::Paths
{

std::filesystem::path support()
{
    return supportIn(Places::applicationSupportFolders());
}

std::filesystem::path supportIn(const std::vector<std::filesystem::path>& applicationSupportFolders)
{
    const auto area = applicationSupportFolders.empty() ? Places::homeFolder() / "Library/Application Support"
                                                        : applicationSupportFolders.front();
    return area / "Quillet64 Player";
}

std::filesystem::path ares()
{
    return support() / "Ares";
}
std::filesystem::path aresNew()
{
    return support() / "Ares-new";
}
std::filesystem::path aresOld()
{
    return support() / "Ares-old";
}
std::filesystem::path aresVersion()
{
    return support() / "ares-version.txt";
}
std::filesystem::path gameFile()
{
    return support() / "Quillet64.z64";
}

void ensureSupport()
{
    Files::createFolders(support());
}

std::filesystem::path newWorkDir(std::string_view prefix)
{
    ensureSupport();
    auto folder = support() / (std::string(prefix) + '-' + newIdentifier());
    Files::createFolders(folder);
    return folder;
}

std::string newIdentifier()
{
    return QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper().toStdString();
}

} // namespace cartloom::Paths
