// SPDX-License-Identifier: MIT
#pragma once

#include "Screen.h"

namespace bench
{

struct Point
{
    int x = 0;
    int y = 0;
};

/// The launcher's window as a player finds it: by its looks, without its help.
class LauncherWindow
{
public:
    /// Waits until the window is shown with its large green button. Throws std::runtime_error when it is not
    /// within a few seconds.
    explicit LauncherWindow(const Screen& screen);

    [[nodiscard]] xcb_window_t id() const { return m_window; }

    /// Moves the pointer onto the large button and presses the mouse button down there.
    void takeAim() const;

    /// Lets the mouse button go, which is what presses the large button; returns when it was asked for.
    [[nodiscard]] std::int64_t press() const;

private:
    void fake(std::uint8_t event, std::uint8_t detail, Point at) const;

    const Screen& m_screen;
    xcb_window_t m_window = 0;
    Point m_button;
};

/// Waits until a file has been written whole, and returns the number that it holds. Throws std::runtime_error
/// when there is none within the time, in nanoseconds.
[[nodiscard]] std::int64_t numberIn(const char* file, std::int64_t patience);

} // namespace bench
