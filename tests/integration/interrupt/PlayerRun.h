// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <filesystem>

namespace cartloom
{

/// Which call is interrupted, and how; see interrupter.cpp.
struct Interruption
{
    QByteArray at;
    /// "kill" or an errno.
    QByteArray with;
    /// None for every call that changes something.
    QByteArray only;
};

/// How one run of the player went.
struct PlayerEnd
{
    /// Whether it has come to rest and says that all is well.
    bool well = false;
    bool killed = false;
    /// What the model says at the end, and what the player complains of.
    QString words;
    QString complaint;
    /// The calls that were counted, one a line; the interrupted one is among them.
    QStringList calls;
};

/// Runs the player on a home folder, interrupted in one call, with no time limit of its own on the main
/// thread's event loop, so that servers of this process can answer it. All that the player has started has
/// ended, too, when this returns.
[[nodiscard]] PlayerEnd runPlayer(const std::filesystem::path& home, const std::filesystem::path& scratch,
                                  const QString& origin, const QString& operation,
                                  const Interruption& interruption = {}, const QStringList& wrapper = {});

} // namespace cartloom
