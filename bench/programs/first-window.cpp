// SPDX-License-Identifier: MIT
#include "Screen.h"

#include <xcb/damage.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>

#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>

namespace
{

using bench::Area;
using bench::Reply;
using bench::Screen;

constexpr std::uint32_t unpainted = 0xFF00FF;
constexpr std::int64_t patience = 20'000'000'000;
constexpr std::int64_t settled = 2'000'000'000;

/// Gives the screen a colour that no window has, so that where a program has drawn nothing yet can be told.
void paintScreen(const Screen& screen)
{
    xcb_change_window_attributes(screen.connection(), screen.root(), XCB_CW_BACK_PIXEL, &unpainted);
    xcb_clear_area(screen.connection(), 0, screen.root(), 0, 0, 0, 0);
    xcb_flush(screen.connection());
}

/// Tells of everything that is drawn or shown anywhere on the screen.
void watch(const Screen& screen, xcb_damage_damage_t damage)
{
    auto* const connection = screen.connection();
    const std::uint32_t events = XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
    xcb_change_window_attributes(connection, screen.root(), XCB_CW_EVENT_MASK, &events);
    const Reply<xcb_damage_query_version_reply_t> version(
        xcb_damage_query_version_reply(connection, xcb_damage_query_version(connection, 1, 1), nullptr));
    if (!version)
        throw std::runtime_error("the display does not tell what is drawn");
    xcb_damage_create(connection, damage, screen.root(), XCB_DAMAGE_REPORT_LEVEL_NON_EMPTY);
    xcb_flush(connection);
}

/// Whether nothing of the screen's own colour is left on three lines across a window.
bool isPainted(const Screen& screen, const Area& window)
{
    for (const int quarter : {1, 2, 3}) {
        const auto line = screen.pixels({window.x, window.y + window.height * quarter / 4, window.width, 1});
        if (line.empty() || std::ranges::find(line, unpainted) != line.end())
            return false;
    }
    return true;
}

bool showsPaintedWindow(const Screen& screen)
{
    return std::ranges::any_of(screen.mainWindows(),
                               [&](xcb_window_t window) { return isPainted(screen, screen.areaOf(window)); });
}

/// When the first window stood there painted.
std::int64_t waitForWindow(const Screen& screen, xcb_damage_damage_t damage, std::int64_t end)
{
    auto* const connection = screen.connection();
    while (bench::now() < end) {
        pollfd wait{xcb_get_file_descriptor(connection), POLLIN, 0};
        ::poll(&wait, 1, 100);
        bool changed = false;
        while (const Reply<xcb_generic_event_t> event{xcb_poll_for_event(connection)})
            changed = true;
        if (!changed)
            continue;
        const std::int64_t seen = bench::now();
        xcb_damage_subtract(connection, damage, XCB_NONE, XCB_NONE);
        xcb_flush(connection);
        if (showsPaintedWindow(screen))
            return seen;
    }
    throw std::runtime_error("no window appeared");
}

/// A figure in KiB of what the system tells of a process's memory.
long memory(pid_t process, const std::string& name)
{
    std::ifstream file("/proc/" + std::to_string(process) + "/smaps_rollup");
    for (std::string line; std::getline(file, line);) {
        if (line.starts_with(name + ":"))
            return std::stol(line.substr(name.size() + 1));
    }
    throw std::runtime_error("the program has ended");
}

void measure(char* const program[])
{
    const Screen screen;
    if (!screen.mainWindows().empty())
        throw std::runtime_error("there is a window on the display already");
    paintScreen(screen);
    const xcb_damage_damage_t damage = xcb_generate_id(screen.connection());
    watch(screen, damage);

    const std::int64_t start = bench::now();
    pid_t process = 0;
    if (::posix_spawn(&process, program[0], nullptr, nullptr, program, environ) != 0)
        throw std::runtime_error(std::string("cannot start ") + program[0]);
    try {
        const std::int64_t seen = waitForWindow(screen, damage, start + patience);
        std::this_thread::sleep_for(std::chrono::nanoseconds(start + settled - bench::now()));
        std::printf(R"({"visible_ms": %.3f, "resident_kib": %ld, "proportional_kib": %ld})"
                    "\n",
                    static_cast<double>(seen - start) / 1e6, memory(process, "Rss"), memory(process, "Pss"));
    } catch (const std::exception&) {
        ::kill(process, SIGKILL);
        ::waitpid(process, nullptr, 0);
        throw;
    }
    ::kill(process, SIGTERM);
    ::waitpid(process, nullptr, 0);
}

} // namespace

/// first-window PROGRAM [ARGUMENT...]: from the start of a program to its first window, painted, and its
/// memory two seconds after the start.
int main(int argc, char* argv[])
{
    if (argc < 2)
        return EXIT_FAILURE;
    try {
        measure(argv + 1);
        return EXIT_SUCCESS;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "first-window: %s\n", error.what());
        return EXIT_FAILURE;
    }
}
