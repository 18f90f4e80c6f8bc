// SPDX-License-Identifier: MIT
#include "emulator/Launcher.h"

#include "emulator/ErrorStream.h"
#include "game/AppError.h"
#include "platform/Files.h"
#include "platform/PropertyList.h"
#include "platform/Text.h"

#include <chrono>
#include <memory>
#include <thread>

namespace cartloom
{

namespace
{

using Clock = std::chrono::steady_clock;

/// A name with a separator would lead out of the bundle.
bool isFileName(const QString& name)
{
    return !name.contains(u'/') && name != QLatin1String("..") && name != QLatin1String(".");
}

std::optional<std::filesystem::path> executable(const std::filesystem::path& app)
{
    const auto named = PropertyList::text(app / "Contents/Info.plist", "CFBundleExecutable");
    const QString name = named && !named->isEmpty() ? *named : QStringLiteral("ares");
    const auto candidate = app / "Contents/MacOS" / toPath(name);
    return isFileName(name) && Files::isExecutable(candidate) ? std::optional(candidate) : std::nullopt;
}

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
    const auto program = executable(app);
    if (!program)
        throw AppError(QStringLiteral("Could not find the program inside ares.app."), toText(app));

    Pipe pipe;
    const auto start = Clock::now();
    const auto process = ChildProcess::start(*program, argumentsFor(rom, fullscreen), pipe.writing);
    pipe.writing.close();
    m_process = process;

    // Both threads may outlive this object and even the event loop, so they hold all that they touch.
    const auto errors = std::make_shared<ErrorStream>(std::move(pipe.reading));
    std::thread reader([errors] { errors->readUntilStopped(); });
    std::thread([process, start, errors, reader = std::move(reader), onExit = std::move(onExit)]() mutable {
        const int status = process.waitForExit();
        errors->stop();
        reader.join();
        const std::chrono::duration<double> seconds = Clock::now() - start;
        onExit({status, seconds.count(), errors->text()});
    }).detach();
}

} // namespace cartloom
