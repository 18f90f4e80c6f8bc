// SPDX-License-Identifier: MIT
#include "emulator/TreeInspection.h"

#include "errors/AppError.h"
#include "platform/Text.h"

#include <cstdint>
#include <list>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

namespace fs = std::filesystem;

namespace cartloom::TreeInspection
{

namespace
{

/// As many links as the system itself follows on the way to one file.
constexpr int mostLinksFollowed = 40;

[[noreturn]] void refuse(const fs::path& name, const QString& reason)
{
    throw AppError(QStringLiteral("Could not unpack Ares. The download may be damaged."),
                   (name.empty() ? QStringLiteral(".") : toText(name)) + QStringLiteral(": ") + reason);
}

/// The entries and bytes that may still come.
class Allowance
{
public:
    explicit Allowance(const Bounds& bounds)
        : m_left(bounds)
    {
    }

    void countEntry(const fs::path& name)
    {
        if (--m_left.entries < 0)
            refuse(name, QStringLiteral("too many files"));
    }

    void countBytes(const fs::path& name, std::uintmax_t size)
    {
        // Compared before the subtraction: the sum of the sizes may exceed 64 bits.
        if (std::cmp_greater(size, m_left.bytes))
            refuse(name, QStringLiteral("too many bytes"));
        m_left.bytes -= static_cast<qint64>(size);
    }

private:
    Bounds m_left;
};

class Inspection
{
public:
    Inspection(const fs::path& folder, const Bounds& bounds)
        : m_top(folder)
        , m_allowance(bounds)
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
            m_allowance.countEntry(child);
            children.push_back(child);
        }
        if (failure)
            refuse(name, QString::fromStdString(failure.message()));
        for (const auto& child : children)
            look(child);
    }

    void look(const fs::path& name)
    {
        std::error_code failure;
        const auto status = fs::symlink_status(m_top / name, failure);
        if (failure)
            refuse(name, QString::fromStdString(failure.message()));
        const auto wanted = status.permissions() & ~(fs::perms::set_uid | fs::perms::set_gid);
        if (fs::is_symlink(status)) {
            m_links.push_back(name);
        } else if (fs::is_directory(status)) {
            setPermissions(name, status.permissions(), wanted | fs::perms::owner_all);
            walk(name);
        } else if (fs::is_regular_file(status)) {
            setPermissions(name, status.permissions(), wanted);
            countBytes(name);
        } else {
            refuse(name, QStringLiteral("neither a file nor a folder"));
        }
    }

    void countBytes(const fs::path& name)
    {
        std::error_code failure;
        const auto size = fs::file_size(m_top / name, failure);
        if (failure)
            refuse(name, QString::fromStdString(failure.message()));
        m_allowance.countBytes(name, size);
    }

    void setPermissions(const fs::path& name, fs::perms present, fs::perms wanted) const
    {
        std::error_code failure;
        if (present != wanted)
            fs::permissions(m_top / name, wanted, failure);
        if (failure)
            refuse(name, QString::fromStdString(failure.message()));
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

    const fs::path m_top;
    Allowance m_allowance;
    std::vector<fs::path> m_links;
};

} // namespace

void inspect(const fs::path& folder, const Bounds& bounds)
{
    Inspection(folder, bounds).inspect();
}

void checkSize(const fs::path& folder, const Bounds& bounds)
{
    Allowance allowance(bounds);
    // By their names below the folder, which itself has the empty name.
    std::vector<fs::path> ahead(1);
    while (!ahead.empty()) {
        const fs::path current = std::move(ahead.back());
        ahead.pop_back();
        std::error_code failure;
        for (fs::directory_iterator it(folder / current, failure), end; !failure && it != end;
             it.increment(failure)) {
            const fs::path name = current / it->path().filename();
            allowance.countEntry(name);
            std::error_code vanished;
            const auto status = it->symlink_status(vanished);
            if (fs::is_directory(status))
                ahead.push_back(name);
            const auto size = fs::is_regular_file(status) ? it->file_size(vanished) : 0;
            allowance.countBytes(name, vanished ? 0 : size);
        }
        if (failure == std::errc::filename_too_long)
            refuse(current, QString::fromStdString(failure.message()));
    }
}

} // namespace cartloom::TreeInspection
