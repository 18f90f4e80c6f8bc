// SPDX-License-Identifier: MIT
#pragma once

#include "errors/AppError.h"
#include "platform/ChildProcess.h"

#include <QString>

#include <exception>
#include <filesystem>
#include <functional>
#include <optional>

namespace cartloom
{

/// How one run of the emulator went.
struct LaunchResult
{
    /// The exit status, or the number of the signal that ended it.
    qint32 status = 0;
    /// Wall-clock time from just before the start to the handling of the exit.
    double seconds = 0;
    /// The first 8192 bytes of the error stream, as they came; what is not UTF-8 is replaced.
    QString errorText;
};

/// The emulator's bundle holds no program.
struct MissingProgram : AppError
{
    using AppError::AppError;
};

/// Starts the emulator and watches it. The emulator is the player's from then on: nothing here ends it, and
/// it outlives this program.
class Launcher
{
public:
    using ExitCallback = std::function<void(const LaunchResult&)>;

    /// Starts the emulator in an ares.app bundle with a game and returns as soon as it runs. The callback is
    /// called exactly once per start that succeeded, on a thread of its own. Throws MissingProgram, and
    /// std::system_error when the program cannot be started; then the callback is never called. Main thread.
    void launch(const std::filesystem::path& app, const std::filesystem::path& rom, bool fullscreen,
                ExitCallback onExit);

    /// True if a start failed because of the program itself, which no other attempt changes.
    [[nodiscard]] static bool isProgramsOwnFailure(const std::exception& error);

    /// The emulator that was started last, running or not; none before the first start.
    [[nodiscard]] const std::optional<ChildProcess>& process() const { return m_process; }

private:
    std::optional<ChildProcess> m_process;
};

} // namespace cartloom
