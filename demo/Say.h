// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

#include <cstdio>

namespace cartloom
{

/// Prints a line at once, whoever reads it.
inline void say(const QString& line)
{
    std::puts(line.toUtf8().constData());
    std::fflush(stdout);
}

} // namespace cartloom
