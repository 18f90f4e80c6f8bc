// SPDX-License-Identifier: MIT
#include "emulator/Launcher.h"

#include "emulator/Bundle.h"
#include "platform/ErrorStream.h"
#include "platform/SessionBus.h"
#include "platform/Text.h"

#include <chrono>
#include <future>
#include <memory>
#include <system_error>
#include <thread>

namespace cartloom
{

namespace
{

using Clock = std::chrono::steady_clock;

constexpr qsizetype maxErrorBytes = 8192;

std::vector<std::string> argumentsFor(const std::filesystem::path& rom, bool fullscreen)
{
    std::vector<std::string> arguments{"--system", "Nintendo 64"};
    if (fullscreen)
        arguments.emplace_back("--fullscreen");
    arguments.push_back(rom.native());
    return arguments;
}

} // namespace

void Launcher::launch(const std::filesystem::path& app, const std::filesystem::path& rom, bool fullscreen,
                      ExitCallback onExit)
{
    const auto program = Bundle::executable(app);
    if (!program)
        throw MissingProgram(QStringLiteral("Could not find the program inside ares.app."), toText(app));

    // All that may fail comes before the start: an emulator that runs is one that is watched. The watcher may
    // outlive this object and even the event loop, so it holds all that it touches.
    Pipe pipe;
    const auto errors = std::make_shared<ErrorStream>(std::move(pipe.reading), maxErrorBytes);
    const auto start = Clock::now();
    std::promise<std::optional<ChildProcess>> started;
    std::thread([start, errors, process = started.get_future(), onExit = std::move(onExit)]() mutable {
        if (const auto running = process.get()) {
            const int status = running->waitForExit();
            errors->finish();
            const std::chrono::duration<double> seconds = Clock::now() - start;
            onExit({status, seconds.count(), errors->text()});
        }
    }).detach();

    try {
        m_process = ChildProcess::start(*program, argumentsFor(rom, fullscreen), pipe.writing,
                                        SessionBus::inheritedSettings(), ChildProcess::Session::own);
    } catch (const std::system_error&) {
        started.set_value(std::nullopt);
        throw;
    }
    started.set_value(m_process);
}

bool Launcher::isProgramsOwnFailure(const std::exception& error)
{
    const auto* const refused = dynamic_cast<const std::system_error*>(&error);
    return refused ? ChildProcess::isUnusable(refused->code())
                   : dynamic_cast<const MissingProgram*>(&error) != nullptr;
}

} // namespace cartloom
