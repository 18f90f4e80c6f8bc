// SPDX-License-Identifier: MIT
#include "Launcher.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <thread>

#include <unistd.h>

namespace
{

constexpr std::int64_t patience = 120'000'000'000;
/// A person's finger is down for as long as this at least.
constexpr auto fingerDown = std::chrono::milliseconds(80);

double measure(const char* file)
{
    const bench::Screen screen;
    const bench::LauncherWindow launcher(screen);
    ::unlink(file);
    launcher.takeAim();
    std::this_thread::sleep_for(fingerDown);
    const std::int64_t pressed = launcher.press();
    return static_cast<double>(bench::numberIn(file, patience) - pressed) / 1e6;
}

} // namespace

/// press-to-play FILE: presses the launcher's large button, and prints after how many milliseconds the
/// emulator ran. FILE is where the emulator tells that.
int main(int argc, char* argv[])
{
    if (argc != 2)
        return EXIT_FAILURE;
    try {
        std::printf("%.4f\n", measure(argv[1]));
        return EXIT_SUCCESS;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "press-to-play: %s\n", error.what());
        return EXIT_FAILURE;
    }
}
