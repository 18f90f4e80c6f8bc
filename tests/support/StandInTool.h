// SPDX-License-Identifier: MIT
#pragma once

#include "support/Sandbox.h"

#include <QByteArray>

#include <filesystem>

namespace cartloom
{

/// A shell script that is run in place of the archive tool, until the end of its scope.
class StandInTool
{
public:
    /// Puts the script's folder before all others on the search path.
    StandInTool(const std::filesystem::path& folder, const QByteArray& script)
    {
        writeFile(folder / "bsdtar", "#!/bin/sh\n" + script + '\n');
        std::filesystem::permissions(folder / "bsdtar", std::filesystem::perms::owner_all);
        qputenv("PATH", QByteArray::fromStdString(folder.native()) + ':' + m_path);
    }
    ~StandInTool() { qputenv("PATH", m_path); }
    StandInTool(const StandInTool&) = delete;
    StandInTool& operator=(const StandInTool&) = delete;

private:
    const QByteArray m_path = qgetenv("PATH");
};

} // namespace cartloom
