// SPDX-License-Identifier: MIT
#include "support/TreeText.h"

#include "support/Sandbox.h"

#include <set>

namespace fs = std::filesystem;

namespace cartloom
{

QByteArray treeText(const fs::path& folder)
{
    std::set<fs::path> names;
    for (const auto& entry : fs::recursive_directory_iterator(folder))
        names.insert(entry.path().lexically_relative(folder));
    QByteArray text;
    for (const auto& name : names) {
        const auto status = fs::symlink_status(folder / name);
        const bool executable = (status.permissions() & fs::perms::owner_exec) != fs::perms::none;
        text += QByteArray::fromStdString(name.native());
        if (fs::is_symlink(status))
            text += " -> " + QByteArray::fromStdString(fs::read_symlink(folder / name).native());
        else if (fs::is_regular_file(status))
            text += (executable ? " program " : " file ") + readFile(folder / name);
        text += '\n';
    }
    return text;
}

} // namespace cartloom
