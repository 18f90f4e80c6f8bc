// SPDX-License-Identifier: MIT
#pragma once

#include "emulator/Launcher.h"
#include "support/AresBundle.h"
#include "support/Sandbox.h"

#include <QObject>

#include <future>
#include <memory>

namespace cartloom
{

/// A launcher for each test, and an ares.app whose program is the scripted child.
class LaunchTest : public QObject
{
    Q_OBJECT

protected:
    std::unique_ptr<Sandbox> m_sandbox;
    std::filesystem::path m_app;
    std::unique_ptr<Launcher> m_launcher;

    /// One run of the scripted child, to its end.
    LaunchResult run(const QStringList& script, const std::filesystem::path& rom = "/game.z64",
                     bool fullscreen = false)
    {
        return start(script, rom, fullscreen).get();
    }

    std::future<LaunchResult> start(const QStringList& script, const std::filesystem::path& rom = "/game.z64",
                                    bool fullscreen = false)
    {
        scriptChild(script);
        auto result = std::make_shared<std::promise<LaunchResult>>();
        m_launcher->launch(m_app, rom, fullscreen,
                           [result](const LaunchResult& ended) { result->set_value(ended); });
        return result->get_future();
    }

private Q_SLOTS:
    void init()
    {
        m_sandbox = std::make_unique<Sandbox>();
        m_app = makeAresApp(m_sandbox->scratch());
        m_launcher = std::make_unique<Launcher>();
    }

    void cleanup() { m_sandbox.reset(); }
};

} // namespace cartloom
