// SPDX-License-Identifier: MIT
#include "storage/Removal.h"

#include <QUuid>

#include <new>
#include <system_error>
#include <utility>
#include <vector>

namespace fs = std::filesystem;

namespace cartloom::Removal
{

namespace
{

/// True for a folder, false for a link to one.
bool isRealFolder(const fs::path& path)
{
    std::error_code ignored;
    return fs::is_directory(fs::symlink_status(path, ignored));
}

/// Gives the owner all permissions on the folder and those below it, and moves deeply nested ones up, so that
/// no path exceeds PATH_MAX and no chain of folders exceeds the open-file limit. Links are not followed.
void makeRemovable(const fs::path& top)
{
    // Relative to the top. With a name of 255 bytes after it, still below every system's PATH_MAX.
    constexpr std::size_t maxRelativeBytes = 300;
    std::vector<fs::path> ahead;
    if (isRealFolder(top))
        ahead.push_back(top);
    while (!ahead.empty()) {
        fs::path folder = std::move(ahead.back());
        ahead.pop_back();
        std::error_code failure;
        fs::permissions(folder, fs::perms::owner_all, fs::perm_options::add, failure);
        if (folder.native().size() > top.native().size() + maxRelativeBytes) {
            const auto higher = top / QUuid::createUuid().toString().toStdString();
            failure.clear();
            fs::rename(folder, higher, failure);
            if (!failure)
                folder = higher;
        }
        failure.clear();
        for (fs::directory_iterator it(folder, failure), end; !failure && it != end; it.increment(failure)) {
            if (isRealFolder(it->path()))
                ahead.push_back(it->path());
        }
    }
}

} // namespace

void remove(const fs::path& path)
{
    fs::remove_all(path);
}

void tryRemove(const fs::path& path) noexcept
{
    std::error_code failure;
    fs::remove_all(path, failure);
    if (!failure)
        return;
    try {
        makeRemovable(path);
    } catch (const std::bad_alloc&) {
        return;
    }
    fs::remove_all(path, failure);
}

} // namespace cartloom::Removal
