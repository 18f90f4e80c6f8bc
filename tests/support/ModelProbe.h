// SPDX-License-Identifier: MIT
#pragma once

#include "core/AppModel.h"

namespace cartloom
{

/// Reaches the private members of a model.
class ModelProbe
{
public:
    static void setPendingROM(AppModel& model, const std::optional<std::filesystem::path>& rom)
    {
        model.m_pendingROM = rom;
    }

    [[nodiscard]] static const std::optional<std::filesystem::path>& pendingROM(const AppModel& model)
    {
        return model.m_pendingROM;
    }
    [[nodiscard]] static const std::optional<TaskHandle>& task(const AppModel& model) { return model.m_task; }
    [[nodiscard]] static const QString& speedText(const AppModel& model) { return model.m_speedText; }
    [[nodiscard]] static const Launcher& launcher(const AppModel& model) { return model.m_launcher; }

    static void launchAres(AppModel& model, const std::optional<std::filesystem::path>& app,
                           const std::optional<std::filesystem::path>& rom)
    {
        model.launchAres(app, rom, {});
    }
    static void failFlow(AppModel& model, const std::exception& error, Step step)
    {
        model.failFlow(error, step, {});
    }
};

} // namespace cartloom
