// SPDX-License-Identifier: MIT
#include "PowerLoss.h"

#include "platform/Text.h"

#include <filesystem>
#include <set>
#include <string>

namespace fs = std::filesystem;

namespace cartloom
{

namespace
{

/// The paths of all files whose bytes are not on the disk yet.
class UnflushedFiles
{
public:
    void apply(const QString& call)
    {
        const QString kind = call.section(u' ', 0, 0);
        const QStringList paths = call.section(u' ', 1).split(QStringLiteral(" > "));
        const auto path = toPath(paths.first()).native();
        if (kind == QLatin1String("open") || kind == QLatin1String("write") ||
            kind == QLatin1String("truncate"))
            m_paths.insert(path);
        else if (kind == QLatin1String("sync") || kind == QLatin1String("remove"))
            m_paths.erase(path);
        else if (kind == QLatin1String("syncfs"))
            m_paths.clear();
        else if (kind == QLatin1String("rename"))
            rename(path, toPath(paths.last()).native());
    }

    [[nodiscard]] const std::set<std::string>& paths() const { return m_paths; }

private:
    void rename(const std::string& from, const std::string& to)
    {
        m_paths.erase(to);
        std::set<std::string> renamed;
        for (const auto& path : m_paths) {
            const bool moves = path == from || path.starts_with(from + '/');
            renamed.insert(moves ? to + path.substr(from.size()) : path);
        }
        m_paths = std::move(renamed);
    }

    std::set<std::string> m_paths;
};

} // namespace

void loseUnflushed(const QStringList& calls, Remains remains)
{
    UnflushedFiles unflushed;
    for (const auto& call : calls)
        unflushed.apply(call);
    for (const auto& path : unflushed.paths()) {
        if (!fs::is_regular_file(fs::symlink_status(path)))
            continue;
        const auto size = fs::file_size(path);
        fs::permissions(path, fs::perms::owner_write, fs::perm_options::add);
        fs::resize_file(path, remains == Remains::half ? size / 2 : 0);
        if (remains == Remains::zeros)
            fs::resize_file(path, size);
    }
}

} // namespace cartloom
