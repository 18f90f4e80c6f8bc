// SPDX-License-Identifier: MIT
#include "storage/Paths.h"

#include "platform/Files.h"
#include "platform/Places.h"
#include "platform/Text.h"
#include "storage/Removal.h"

#include <QRegularExpression>
#include <QUuid>

#include <optional>
#include <system_error>

namespace cartloom::Paths
{

namespace
{

/// Work folders, copies of the emulator that were given up, and files that were to replace one of ours.
bool isLeftover(const std::filesystem::path& name)
{
    static const QRegularExpression pattern(
        QStringLiteral("\\A(?:(?:download-ares|download-game|discarded|Ares-failed)"
                       "-[0-9A-F]{8}(?:-[0-9A-F]{4}){3}-[0-9A-F]{12}"
                       "|\\.(?:Quillet64\\.z64|ares-version\\.txt)"
                       "-[0-9a-f]{8}(?:-[0-9a-f]{4}){3}-[0-9a-f]{12})\\z"));
    return pattern.match(toText(name)).hasMatch();
}

} // namespace

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

std::optional<std::filesystem::path> setAside(const std::filesystem::path& entry)
{
    auto aside = support() / ("discarded-" + newIdentifier());
    try {
        Files::move(entry, aside);
    } catch (const std::system_error&) {
        return std::nullopt;
    }
    return aside;
}

void discard(const std::filesystem::path& entry)
{
    if (const auto aside = setAside(entry))
        Removal::tryRemove(*aside);
}

std::vector<std::filesystem::path> takeLeftovers()
{
    setAside(aresNew());
    std::vector<std::filesystem::path> leftovers;
    std::error_code unreadable;
    for (std::filesystem::directory_iterator it(support(), unreadable), end; !unreadable && it != end;
         it.increment(unreadable)) {
        if (isLeftover(it->path().filename()))
            leftovers.push_back(it->path());
    }
    return leftovers;
}

void removeLeftovers()
{
    for (const auto& leftover : takeLeftovers())
        Removal::tryRemove(leftover);
}

std::string newIdentifier()
{
    return QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper().toStdString();
}

} // namespace cartloom::Paths
