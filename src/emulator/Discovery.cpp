// SPDX-License-Identifier: MIT
#include "emulator/AresInstaller.h"

#include "emulator/SearchedFolders.h"
#include "platform/Files.h"

#include <algorithm>
#include <vector>

namespace fs = std::filesystem;

namespace cartloom::AresInstaller
{

namespace
{

constexpr auto bundleName = "ares.app";
/// The folder's own entries are at depth 1. Deeper than this the walk would go through a whole unpacked
/// bundle.
constexpr int deepestSearch = 5;

/// The entries that are not hidden, by name, so that the result does not depend on the file system. Empty for
/// a folder that cannot be read.
std::vector<fs::directory_entry> visibleEntries(const fs::path& folder)
{
    std::vector<fs::directory_entry> entries;
    std::error_code unreadable;
    for (fs::directory_iterator it(folder, unreadable), end; !unreadable && it != end;
         it.increment(unreadable)) {
        if (it->path().filename().native().front() != '.')
            entries.push_back(*it);
    }
    std::ranges::sort(entries);
    return entries;
}

bool isRealFolder(const fs::directory_entry& entry)
{
    std::error_code unreadable;
    return fs::is_directory(entry.symlink_status(unreadable));
}

std::optional<fs::path> search(const fs::path& folder, int depth)
{
    for (const auto& entry : visibleEntries(folder)) {
        if (entry.path().filename() == bundleName)
            return entry.path();
        if (depth < deepestSearch && isRealFolder(entry)) {
            if (auto found = search(entry.path(), depth + 1))
                return found;
        }
    }
    return std::nullopt;
}

} // namespace

std::optional<fs::path> findApp(const fs::path& folder)
{
    return search(folder, 1);
}

std::optional<fs::path> externalApp()
{
    return externalAppIn(searchedFolders());
}

std::optional<fs::path> externalAppIn(const std::vector<fs::path>& folders)
{
    for (const auto& folder : folders) {
        if (Files::exists(folder / bundleName))
            return folder / bundleName;
    }
    return std::nullopt;
}

} // namespace cartloom::AresInstaller
