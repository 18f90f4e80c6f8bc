// SPDX-License-Identifier: MIT
#include "platform/Places.h"

#include "platform/Text.h"

#include <QDir>

namespace cartloom::Places
{

std::filesystem::path homeFolder()
{
    return toPath(QDir::homePath());
}

std::vector<std::filesystem::path> applicationSupportFolders()
{
    const auto configured = toPath(qEnvironmentVariable("XDG_DATA_HOME"));
    return {configured.is_absolute() ? configured : homeFolder() / ".local/share"};
}

std::vector<std::filesystem::path> applicationFolders()
{
    return {"/opt", homeFolder() / "Applications"};
}

std::optional<std::filesystem::path> sessionFolder()
{
    const std::filesystem::path configured(qgetenv("XDG_RUNTIME_DIR").toStdString());
    return configured.is_absolute() ? std::optional(configured) : std::nullopt;
}

} // namespace cartloom::Places
