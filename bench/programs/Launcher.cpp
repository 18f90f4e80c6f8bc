// SPDX-License-Identifier: MIT
#include "Launcher.h"

#include <xcb/xtest.h>

#include <chrono>
#include <fstream>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>

using namespace std::chrono_literals;

namespace bench
{

namespace
{

constexpr std::int64_t patience = 10'000'000'000;
/// No other green thing of the window is as wide as this.
constexpr int narrowestButton = 200;

bool isGreen(std::uint32_t pixel)
{
    const auto red = static_cast<int>(pixel >> 16 & 0xFF);
    const auto green = static_cast<int>(pixel >> 8 & 0xFF);
    const auto blue = static_cast<int>(pixel & 0xFF);
    return green > red + 60 && green > blue + 60;
}

/// The left end of the button's upper edge is enough to hit it: the point is some pixels below.
std::optional<Point> findButton(const Screen& screen, const Area& window)
{
    const auto pixels = screen.pixels(window);
    int run = 0;
    for (std::size_t i = 0; i < pixels.size(); ++i) {
        const auto column = static_cast<int>(i % static_cast<std::size_t>(window.width));
        run = isGreen(pixels[i]) && column > 0 ? run + 1 : 0;
        if (run == narrowestButton) {
            const auto row = static_cast<int>(i / static_cast<std::size_t>(window.width));
            return Point{window.x + column, window.y + row + 8};
        }
    }
    return std::nullopt;
}

} // namespace

LauncherWindow::LauncherWindow(const Screen& screen)
    : m_screen(screen)
{
    const std::int64_t end = now() + patience;
    while (now() < end) {
        for (const auto window : screen.mainWindows()) {
            if (const auto button = findButton(screen, screen.areaOf(window))) {
                m_window = window;
                m_button = *button;
                return;
            }
        }
        std::this_thread::sleep_for(10ms);
    }
    throw std::runtime_error("the launcher shows no button");
}

void LauncherWindow::takeAim() const
{
    fake(XCB_MOTION_NOTIFY, 0, m_button);
    fake(XCB_BUTTON_PRESS, XCB_BUTTON_INDEX_1, {});
    xcb_flush(m_screen.connection());
}

std::int64_t LauncherWindow::press() const
{
    const std::int64_t asked = now();
    fake(XCB_BUTTON_RELEASE, XCB_BUTTON_INDEX_1, {});
    xcb_flush(m_screen.connection());
    return asked;
}

void LauncherWindow::fake(std::uint8_t event, std::uint8_t detail, Point at) const
{
    xcb_test_fake_input(m_screen.connection(), event, detail, XCB_CURRENT_TIME, m_screen.root(),
                        static_cast<std::int16_t>(at.x), static_cast<std::int16_t>(at.y), 0);
}

std::int64_t numberIn(const char* file, std::int64_t patience)
{
    const std::int64_t end = now() + patience;
    while (now() < end) {
        std::ifstream stream(file);
        std::string line;
        if (std::getline(stream, line) && !stream.eof())
            return std::stoll(line);
        std::this_thread::sleep_for(1ms);
    }
    throw std::runtime_error(std::string("nothing was written to ") + file);
}

} // namespace bench
