// SPDX-License-Identifier: MIT
#pragma once

#include "StageRecorder.h"
#include "core/CartloomApp.h"

#include <filesystem>

namespace cartloom
{

/// What a player would do once: presses the main button, waits for the game, plays for a while, closes the
/// emulator. Everything goes through the real windows, and every wait has an end. Needs an X display with a
/// window manager. Main thread.
class UnattendedRun
{
public:
    /// Throws std::runtime_error when the launcher has no window, or a picture folder cannot be made.
    UnattendedRun(CartloomApp& cartloom, const std::filesystem::path& pictures);

    /// Runs the event loop inside until the run is over, and prints how it went. True for a good run.
    [[nodiscard]] bool execute();

private:
    void playOnce();
    void pressMainButton();
    void waitUntilPlaying();
    void playAndClose();

    AppModel& m_model;
    QQuickWindow& m_window;
    StageRecorder m_recorder;
};

} // namespace cartloom
