// SPDX-License-Identifier: MIT
#include "platform/ArchiveTool.h"

#include "platform/Text.h"

#include <QStandardPaths>

#include <cerrno>
#include <system_error>

namespace cartloom
{

namespace
{

std::filesystem::path find(const QString& program)
{
    const auto path = QStandardPaths::findExecutable(program);
    if (path.isEmpty())
        throw std::system_error(ENOENT, std::generic_category());
    return toPath(path);
}

} // namespace

ArchiveTool ArchiveTool::unpackZip(const std::filesystem::path& archive, const std::filesystem::path& folder)
{
    // The kernel ends the tool with the thread that started it, even when the launcher is killed.
    // Owners and special permission bits are never taken from an archive, not even when this user could set
    // them. Resource forks have no meaning here. Whatever the player's language, a full disk is told in the
    // words that are looked for.
    return {find(QStringLiteral("setpriv")),
            {"--pdeathsig", "KILL", find(QStringLiteral("bsdtar")).native(), "-x", "--no-same-owner",
             "--no-same-permissions", "--exclude", "__MACOSX", "--exclude", "._*", "-f", archive.native(),
             "-C", folder.native()},
            {"LC_ALL=C.UTF-8", "LANGUAGE="}};
}

} // namespace cartloom
