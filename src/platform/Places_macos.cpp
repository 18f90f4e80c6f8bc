// SPDX-License-Identifier: MIT
#include "platform/Places.h"

namespace cartloom::Places
{

std::vector<std::filesystem::path> applicationSupportFolders()
{
    return {homeFolder() / "Library/Application Support"};
}

std::filesystem::path preferencesFolder()
{
    return homeFolder() / "Library/Preferences";
}

std::vector<std::filesystem::path> applicationFolders()
{
    return {"/Applications", homeFolder() / "Applications"};
}

std::optional<std::filesystem::path> sessionFolder()
{
    // The system deletes files from the user's temporary folder that were not used for three days.
    return std::nullopt;
}

} // namespace cartloom::Places
