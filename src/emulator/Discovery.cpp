// SPDX-License-Identifier: MIT
#include "emulator/AresInstaller.h"

#include "emulator/SearchedFolders.h"
#include "platform/Files.h"

#include <algorithm>
#include <system_error>
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

/// A walk for the bundle. Folders that cannot be read are skipped, and the last failure is kept.
class Search
{
public:
    std::optional<fs::path> run(const fs::path& folder, int depth = 1)
    {
        for (const auto& entry : visibleEntries(folder)) {
            if (entry.path().filename() == bundleName)
                return entry.path();
            if (depth < deepestSearch && isRealFolder(entry)) {
                if (auto found = run(entry.path(), depth + 1))
                    return found;
            }
        }
        return std::nullopt;
    }

    [[nodiscard]] const std::error_code& failure() const { return m_failure; }

private:
    /// The entries that are not hidden, by name, so that the result does not depend on the file system.
    std::vector<fs::directory_entry> visibleEntries(const fs::path& folder)
    {
        std::vector<fs::directory_entry> entries;
        std::error_code unreadable;
        for (fs::directory_iterator it(folder, unreadable), end; !unreadable && it != end;
             it.increment(unreadable)) {
            if (it->path().filename().native().front() != '.')
                entries.push_back(*it);
        }
        keep(unreadable);
        std::ranges::sort(entries);
        return entries;
    }

    bool isRealFolder(const fs::directory_entry& entry)
    {
        std::error_code unreadable;
        const auto status = entry.symlink_status(unreadable);
        keep(unreadable);
        return fs::is_directory(status);
    }

    void keep(const std::error_code& failure)
    {
        if (failure)
            m_failure = failure;
    }

    std::error_code m_failure;
};

} // namespace

std::optional<fs::path> findApp(const fs::path& folder)
{
    return Search().run(folder);
}

bool holdsApp(const fs::path& folder)
{
    Search search;
    if (search.run(folder))
        return true;
    if (search.failure() && search.failure() != std::errc::no_such_file_or_directory)
        throw std::system_error(search.failure());
    return false;
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
