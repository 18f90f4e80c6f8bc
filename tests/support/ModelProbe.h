// SPDX-License-Identifier: MIT
#pragma once

#include "core/AppModel.h"

namespace cartloom
{

/// Puts a model into a state that a test wants to begin with, and looks at what it does not show.
class ModelProbe
{
public:
    static void setStage(AppModel& model, AppModel::Stage stage) { model.m_stage = stage; }
    static void setFraction(AppModel& model, std::optional<double> fraction) { model.m_fraction = fraction; }
    static void setDetailLine(AppModel& model, const QString& line) { model.m_detailLine = line; }
    static void setErrorMessage(AppModel& model, const std::optional<QString>& message)
    {
        model.m_errorMessage = message;
    }
    static void setErrorDetails(AppModel& model, const QString& details) { model.m_errorDetails = details; }
    static void setGameDownloadFailed(AppModel& model, bool failed) { model.m_gameDownloadFailed = failed; }
    static void setNotice(AppModel& model, const std::optional<QString>& notice) { model.m_notice = notice; }
    static void setOfferExternal(AppModel& model, const std::optional<std::filesystem::path>& app)
    {
        model.m_offerExternal = app;
    }
    static void setUpdateOffer(AppModel& model, const std::optional<AresRelease>& release)
    {
        model.m_updateOffer = release;
    }
    static void setSetupDone(AppModel& model, bool done) { model.m_setupDone = done; }
    static void setAresVersion(AppModel& model, const std::optional<QString>& version)
    {
        model.m_aresVersion = version;
    }
    static void setUsingExternalAres(AppModel& model, bool external) { model.m_usingExternalAres = external; }
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
    [[nodiscard]] static ProgressCallback progressCallback(AppModel& model)
    {
        return model.progressCallback();
    }
    [[nodiscard]] static const Launcher& launcher(const AppModel& model) { return model.m_launcher; }

    static void launchAres(AppModel& model, const std::optional<std::filesystem::path>& app,
                           const std::optional<std::filesystem::path>& rom)
    {
        model.launchAres(app, rom);
    }
    static void failFlow(AppModel& model, const std::exception& error, QLatin1String step)
    {
        model.failFlow(error, step);
    }
};

} // namespace cartloom
