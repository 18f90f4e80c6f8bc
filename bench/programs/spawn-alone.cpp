// SPDX-License-Identifier: MIT
#include "Launcher.h"

#include <cstdio>
#include <cstdlib>
#include <stdexcept>

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace
{

constexpr std::int64_t patience = 10'000'000'000;

double measure(const char* file, char* const program[])
{
    ::unlink(file);
    const std::int64_t start = bench::now();
    pid_t process = 0;
    if (::posix_spawn(&process, program[0], nullptr, nullptr, program, environ) != 0)
        throw std::runtime_error("the program cannot be started");
    const std::int64_t started = bench::numberIn(file, patience);
    ::waitpid(process, nullptr, 0);
    return static_cast<double>(started - start) / 1e6;
}

} // namespace

/// spawn-alone FILE PROGRAM [ARGUMENT...]: starts the program with nothing around it, and prints after how
/// many milliseconds it ran. FILE is where the program tells that.
int main(int argc, char* argv[])
{
    if (argc < 3)
        return EXIT_FAILURE;
    try {
        std::printf("%.4f\n", measure(argv[1], argv + 2));
        return EXIT_SUCCESS;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "spawn-alone: %s\n", error.what());
        return EXIT_FAILURE;
    }
}
