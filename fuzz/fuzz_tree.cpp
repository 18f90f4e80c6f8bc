// SPDX-License-Identifier: MIT
#include "Fuzzing.h"
#include "emulator/TreeInspection.h"
#include "errors/AppError.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace cartloom;
using cartloom::Fuzzing::require;

namespace fs = std::filesystem;

namespace
{

constexpr std::array<const char*, 4> names{"a", "b", "c", "\xff"};

/// The folder that is inspected. Above it there is something of every name, for links that lead out to find.
const fs::path& top()
{
    static const fs::path made = [] {
        const fs::path outer = fs::canonical(Fuzzing::scratchFolder()) / "outer";
        for (const auto& folder : {outer, outer / "inner"}) {
            for (const char* const name : names)
                fs::create_directories(folder / name / "a");
        }
        return outer / "inner" / "tree";
    }();
    return made;
}

/// The input, byte by byte; zeros when it is used up.
class Choices
{
public:
    Choices(const std::uint8_t* data, std::size_t size)
        : m_next(data)
        , m_end(data + size)
    {
    }
    [[nodiscard]] bool isAtEnd() const { return m_next == m_end; }
    std::size_t below(std::size_t count) { return (isAtEnd() ? 0U : *m_next++) % count; }

private:
    const std::uint8_t* m_next;
    const std::uint8_t* m_end;
};

/// A tree as the input says, made anew.
class Tree
{
public:
    explicit Tree(Choices& choices)
    {
        fs::create_directory(top());
        m_folders.push_back(top());
        constexpr int mostEntries = 12;
        while (!choices.isAtEnd() && m_entries < mostEntries)
            addTo(m_folders[choices.below(m_folders.size())] / names[choices.below(names.size())], choices);
    }
    ~Tree()
    {
        for (const auto& folder : m_folders)
            ::chmod(folder.c_str(), S_IRWXU);
        fs::remove_all(top());
    }
    Tree(const Tree&) = delete;
    Tree& operator=(const Tree&) = delete;

    [[nodiscard]] qint64 entries() const { return m_entries; }
    [[nodiscard]] qint64 bytes() const { return m_bytes; }
    [[nodiscard]] bool isOfFilesAndFolders() const { return m_links.empty() && !m_hasPipe; }
    [[nodiscard]] const std::vector<fs::path>& links() const { return m_links; }

private:
    void addTo(const fs::path& place, Choices& choices)
    {
        if (fs::exists(fs::symlink_status(place)))
            return;
        ++m_entries;
        switch (choices.below(5)) {
        case 0:
            fs::create_directory(place);
            m_folders.push_back(place);
            break;
        case 1:
            Fuzzing::write(place, "x");
            fs::resize_file(place, choices.below(256));
            m_bytes += static_cast<qint64>(fs::file_size(place));
            ::chmod(place.c_str(), modeIn(choices));
            break;
        case 2:
        case 3:
            fs::create_symlink(targetIn(choices), place);
            m_links.push_back(place);
            break;
        default:
            require(::mkfifo(place.c_str(), S_IRUSR) == 0, "a pipe can be made");
            m_hasPipe = true;
        }
    }

    static mode_t modeIn(Choices& choices)
    {
        return static_cast<mode_t>(choices.below(8) << 9U | choices.below(8) << 6U);
    }

    static fs::path targetIn(Choices& choices)
    {
        std::string target = choices.below(16) == 15 ? top().native() : std::string();
        const std::size_t steps = choices.below(6) + 1;
        for (std::size_t step = 0; step < steps; ++step) {
            const std::size_t choice = choices.below(12);
            // Now and then the separator comes first or is doubled.
            if (!target.empty() || choice == 11)
                target += '/';
            target += choice < 6 ? ".." : choice == 6 ? "." : names[choice % names.size()];
        }
        return target;
    }

    std::vector<fs::path> m_folders;
    std::vector<fs::path> m_links;
    qint64 m_entries = 0;
    qint64 m_bytes = 0;
    bool m_hasPipe = false;
};

/// Where the system arrives by a path; nothing when it leads nowhere.
std::optional<std::string> realPath(const fs::path& path)
{
    const int place = ::open(path.c_str(), O_PATH | O_CLOEXEC);
    if (place < 0)
        return std::nullopt;
    std::array<char, 4096> name{};
    const auto length =
        ::readlink(("/proc/self/fd/" + std::to_string(place)).c_str(), name.data(), name.size());
    ::close(place);
    require(length > 0, "the system tells where a path arrives");
    return std::string(name.data(), static_cast<std::size_t>(length));
}

void checkAccepted(const Tree& tree, const TreeInspection::Bounds& bounds)
{
    require(tree.entries() <= bounds.entries, "what is accepted has no more entries than allowed");
    require(tree.bytes() <= bounds.bytes, "what is accepted has no more bytes than allowed");
    for (const auto& link : tree.links()) {
        const auto real = realPath(link);
        require(!real || *real == top() || real->starts_with(top().native() + '/'),
                "no link of what is accepted leads out");
    }
    for (const auto& entry : fs::recursive_directory_iterator(top())) {
        const fs::file_status status = entry.symlink_status();
        if (fs::is_symlink(status))
            continue;
        require(fs::is_regular_file(status) || fs::is_directory(status), "there are files and folders only");
        require((status.permissions() & (fs::perms::set_uid | fs::perms::set_gid)) == fs::perms::none,
                "no file keeps another user's rights");
        require(!fs::is_directory(status) ||
                    (status.permissions() & fs::perms::owner_all) == fs::perms::owner_all,
                "every folder can be listed and removed");
    }
}

} // namespace

/// A tree is accepted only if nothing in it leads out of it, or refused with its sentence; and one of a few
/// files and folders is accepted.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Choices choices(data, size);
    TreeInspection::Bounds bounds;
    if (choices.below(4) == 0)
        bounds = {static_cast<qint64>(choices.below(16)), static_cast<qint64>(choices.below(256))};
    const Tree tree(choices);
    try {
        TreeInspection::inspect(top(), bounds);
        checkAccepted(tree, bounds);
    } catch (const AppError& error) {
        require(error.message == QLatin1String("Could not unpack Ares. The download may be damaged."),
                "what is thrown is the sentence for a damaged download");
        require(!error.details.isEmpty(), "the details name what is wrong");
        require(!tree.isOfFilesAndFolders() || tree.entries() > bounds.entries || tree.bytes() > bounds.bytes,
                "a few files and folders are accepted");
    }
    return 0;
}
