// SPDX-License-Identifier: MIT
#include "emulator/TreeInspection.h"

#include "game/AppError.h"
#include "platform/Text.h"

#include <cerrno>
#include <list>
#include <string>
#include <system_error>
#include <vector>

#include <sys/stat.h>

namespace fs = std::filesystem;

namespace cartloom::TreeInspection
{

namespace
{

/// As many links as the system itself follows on the way to one file.
constexpr int mostLinksFollowed = 40;
constexpr mode_t permissionBits = 07777;

class Inspection
{
public:
    Inspection(const fs::path& folder, const Bounds& bounds)
        : m_top(folder)
        , m_left(bounds)
    {
    }

    void inspect()
    {
        look({});
        // Only now can every folder on their ways be looked into.
        for (const auto& link : m_links)
            lookWhereItLeads(link);
    }

private:
    /// An entry of the tree by its name below the top; the top itself has the empty name.
    void walk(const fs::path& name)
    {
        std::vector<fs::path> children;
        std::error_code failure;
        for (fs::directory_iterator it(m_top / name, failure), end; !failure && it != end;
             it.increment(failure)) {
            const fs::path child = name / it->path().filename();
            // Counted here, so that a folder of millions of entries is not first read to its end.
            if (--m_left.entries < 0)
                refuse(child, QStringLiteral("too many files"));
            children.push_back(child);
        }
        if (failure)
            refuse(name, QString::fromStdString(failure.message()));
        for (const auto& child : children)
            look(child);
    }

    [[noreturn]] static void refuse(const fs::path& name, const QString& reason)
    {
        throw AppError(QStringLiteral("Could not unpack Ares. The download may be damaged."),
                       (name.empty() ? QStringLiteral(".") : toText(name)) + QStringLiteral(": ") + reason);
    }

    void look(const fs::path& name)
    {
        struct stat status = {};
        if (::lstat((m_top / name).c_str(), &status) != 0)
            refuse(name, QString::fromStdString(std::generic_category().message(errno)));
        if (S_ISLNK(status.st_mode)) {
            m_links.push_back(name);
        } else if (S_ISDIR(status.st_mode)) {
            setPermissions(name, status.st_mode, (status.st_mode & ~specialBits) | S_IRWXU);
            walk(name);
        } else if (S_ISREG(status.st_mode)) {
            setPermissions(name, status.st_mode, status.st_mode & ~specialBits);
            // No sum is made, for it could be more than any number holds.
            if (status.st_size > m_left.bytes)
                refuse(name, QStringLiteral("too many bytes"));
            m_left.bytes -= status.st_size;
        } else {
            refuse(name, QStringLiteral("neither a file nor a folder"));
        }
    }

    void setPermissions(const fs::path& name, mode_t present, mode_t wanted) const
    {
        if (present != wanted && ::chmod((m_top / name).c_str(), wanted & permissionBits) != 0)
            refuse(name, QString::fromStdString(std::generic_category().message(errno)));
    }

    /// Goes the way that the system would go, and refuses it as soon as it is outside. A way that ends
    /// nowhere, or never, does no harm as long as it stays inside.
    void lookWhereItLeads(const fs::path& link) const
    {
        fs::path place = link.parent_path();
        std::list<fs::path> ahead = stepsOf(link, link);
        int followed = 1;
        while (!ahead.empty()) {
            const fs::path step = ahead.front();
            ahead.pop_front();
            if (step == ".." && place.empty())
                refuse(link, QStringLiteral("a link that leads out of the folder"));
            if (step == "..") {
                place = place.parent_path();
            } else if (!isLink(place / step)) {
                place /= step;
            } else if (++followed <= mostLinksFollowed) {
                ahead.splice(ahead.begin(), stepsOf(place / step, link));
            } else {
                return;
            }
        }
    }

    [[nodiscard]] bool isLink(const fs::path& name) const
    {
        std::error_code absent;
        return fs::is_symlink(fs::symlink_status(m_top / name, absent));
    }

    /// What a link says, step by step; the whole way was asked for by the first one.
    [[nodiscard]] std::list<fs::path> stepsOf(const fs::path& link, const fs::path& first) const
    {
        std::error_code failure;
        const fs::path target = fs::read_symlink(m_top / link, failure);
        if (failure)
            refuse(link, QString::fromStdString(failure.message()));
        if (target.is_absolute())
            refuse(first, QStringLiteral("a link to ") + toText(target));
        std::list<fs::path> steps;
        for (const auto& step : target) {
            if (!step.empty() && step != ".")
                steps.push_back(step);
        }
        return steps;
    }

    static constexpr mode_t specialBits = S_ISUID | S_ISGID;

    const fs::path m_top;
    /// What may still come.
    Bounds m_left;
    std::vector<fs::path> m_links;
};

} // namespace

void inspect(const fs::path& folder, const Bounds& bounds)
{
    Inspection(folder, bounds).inspect();
}

} // namespace cartloom::TreeInspection
