// SPDX-License-Identifier: MIT
#include "Launcher.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <thread>

#include <poll.h>
#include <unistd.h>

namespace
{

using bench::LauncherWindow;
using bench::Reply;
using bench::Screen;

constexpr std::int64_t patience = 120'000'000'000;
constexpr std::int64_t afterwards = 500'000'000;
constexpr auto fingerDown = std::chrono::milliseconds(80);
constexpr auto betweenQuestions = std::chrono::microseconds(500);

/// Asks a window's program whether it is still there, as window managers do. Its main thread answers, between
/// two things that it does; so an answer takes as long as the thing that it is at.
class Pinger
{
public:
    Pinger(const Screen& screen, xcb_window_t window)
        : m_screen(screen)
        , m_window(window)
        , m_protocols(screen.atom("WM_PROTOCOLS"))
        , m_ping(screen.atom("_NET_WM_PING"))
    {
        // The answer is sent to the screen, for a window manager.
        const std::uint32_t events = XCB_EVENT_MASK_STRUCTURE_NOTIFY;
        xcb_change_window_attributes(screen.connection(), screen.root(), XCB_CW_EVENT_MASK, &events);
    }

    /// How long the answer took, in nanoseconds.
    [[nodiscard]] std::int64_t ask()
    {
        const std::int64_t asked = bench::now();
        send();
        while (!hasAnswer()) {
            pollfd wait{xcb_get_file_descriptor(m_screen.connection()), POLLIN, 0};
            if (::poll(&wait, 1, 10'000) == 0 || xcb_connection_has_error(m_screen.connection()) != 0)
                throw std::runtime_error("the launcher does not answer");
        }
        return bench::now() - asked;
    }

private:
    void send()
    {
        xcb_client_message_event_t message{};
        message.response_type = XCB_CLIENT_MESSAGE;
        message.format = 32;
        message.window = m_window;
        message.type = m_protocols;
        message.data.data32[0] = m_ping;
        message.data.data32[1] = ++m_number;
        message.data.data32[2] = m_window;
        xcb_send_event(m_screen.connection(), 0, m_window, XCB_EVENT_MASK_NO_EVENT,
                       reinterpret_cast<const char*>(&message));
        xcb_flush(m_screen.connection());
    }

    [[nodiscard]] bool hasAnswer() const
    {
        while (const Reply<xcb_generic_event_t> event{xcb_poll_for_event(m_screen.connection())}) {
            if ((event->response_type & 0x7F) != XCB_CLIENT_MESSAGE)
                continue;
            const auto* const message = reinterpret_cast<const xcb_client_message_event_t*>(event.get());
            if (message->type == m_protocols && message->data.data32[0] == m_ping &&
                message->data.data32[1] == m_number)
                return true;
        }
        return false;
    }

    const Screen& m_screen;
    const xcb_window_t m_window;
    const xcb_atom_t m_protocols;
    const xcb_atom_t m_ping;
    std::uint32_t m_number = 0;
};

/// From the press until a while after the emulator has been started.
void measure(const char* file)
{
    const Screen screen;
    const LauncherWindow launcher(screen);
    Pinger pinger(screen, launcher.id());
    ::unlink(file);
    launcher.takeAim();
    std::this_thread::sleep_for(fingerDown);

    const std::int64_t pressed = launcher.press();
    std::int64_t longest = 0;
    std::int64_t longestAt = 0;
    std::int64_t end = pressed + patience;
    bool playing = false;
    long asked = 0;
    for (std::int64_t at = pressed; at < end; at = bench::now()) {
        const std::int64_t pause = pinger.ask();
        ++asked;
        if (pause > longest) {
            longest = pause;
            longestAt = at - pressed;
        }
        if (!playing && ::access(file, R_OK) == 0) {
            playing = true;
            end = bench::now() + afterwards;
        }
        std::this_thread::sleep_for(betweenQuestions);
    }
    if (!playing)
        throw std::runtime_error("the emulator was not started");
    std::printf(R"({"longest_ms": %.3f, "at_ms": %.1f, "playing_ms": %.1f, "asked": %ld})"
                "\n",
                static_cast<double>(longest) / 1e6, static_cast<double>(longestAt) / 1e6,
                static_cast<double>(end - afterwards - pressed) / 1e6, asked);
}

} // namespace

/// longest-pause FILE: presses the launcher's large button and prints for how long its main thread did not
/// answer at most, until the game is played. FILE is where the emulator tells that it runs.
int main(int argc, char* argv[])
{
    if (argc != 2)
        return EXIT_FAILURE;
    try {
        measure(argv[1]);
        return EXIT_SUCCESS;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "longest-pause: %s\n", error.what());
        return EXIT_FAILURE;
    }
}
