// SPDX-License-Identifier: MIT
#include "platform/Places.h"

#include <QByteArray>

namespace cartloom::Places
{

namespace
{

/// The absolute path in a variable, byte for byte; none if it holds no such path.
std::optional<std::filesystem::path> folderIn(const char* variable)
{
    const std::filesystem::path configured(qgetenv(variable).toStdString());
    return configured.is_absolute() ? std::optional(configured) : std::nullopt;
}

} // namespace

std::vector<std::filesystem::path> applicationSupportFolders()
{
    return {folderIn("XDG_DATA_HOME").value_or(homeFolder() / ".local/share")};
}

std::filesystem::path preferencesFolder()
{
    return folderIn("XDG_CONFIG_HOME").value_or(homeFolder() / ".config");
}

std::vector<std::filesystem::path> applicationFolders()
{
    return {"/opt", homeFolder() / "Applications"};
}

std::optional<std::filesystem::path> sessionFolder()
{
    return folderIn("XDG_RUNTIME_DIR");
}

} // namespace cartloom::Places
