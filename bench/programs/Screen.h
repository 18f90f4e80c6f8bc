// SPDX-License-Identifier: MIT
#pragma once

#include <xcb/xcb.h>

#include <cstdint>
#include <memory>
#include <vector>

namespace bench
{

struct FreeReply
{
    void operator()(void* reply) const;
};

/// What the X server answered; empty when it refused.
template <typename T>
using Reply = std::unique_ptr<T, FreeReply>;

struct Area
{
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;
};

/// The X display that the environment names, as someone who looks at the screen from outside sees it. Throws
/// std::runtime_error when there is none.
class Screen
{
public:
    Screen();
    ~Screen();
    Screen(const Screen&) = delete;
    Screen& operator=(const Screen&) = delete;

    [[nodiscard]] xcb_connection_t* connection() const { return m_connection; }
    [[nodiscard]] xcb_window_t root() const { return m_screen->root; }
    [[nodiscard]] xcb_atom_t atom(const char* name) const;

    /// The windows that are shown directly on the screen and are at least as large as a main window.
    [[nodiscard]] std::vector<xcb_window_t> mainWindows() const;

    [[nodiscard]] Area areaOf(xcb_window_t window) const;

    /// The pixels of an area of the screen, row by row, as 0x00RRGGBB; empty when it is not all on the
    /// screen.
    [[nodiscard]] std::vector<std::uint32_t> pixels(const Area& area) const;

private:
    xcb_connection_t* m_connection;
    xcb_screen_t* m_screen;
};

/// Nanoseconds of the clock that all programs of a measurement share.
[[nodiscard]] std::int64_t now();

} // namespace bench
