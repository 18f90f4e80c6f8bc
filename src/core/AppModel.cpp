// SPDX-License-Identifier: MIT
#include "core/AppModel.h"

#include "async/Post.h"
#include "core/PreferenceKeys.h"
#include "emulator/AresInstaller.h"
#include "game/GameDownloader.h"
#include "network/Origins.h"
#include "platform/FileBrowser.h"
#include "platform/Files.h"
#include "platform/Preferences.h"
#include "platform/Text.h"
#include "storage/Paths.h"

#include <algorithm>
#include <system_error>
#include <utility>

namespace cartloom
{

std::shared_ptr<AppModel> AppModel::create(Clock clock, Timeouts timeouts)
{
    return std::shared_ptr<AppModel>(new AppModel(std::move(clock), timeouts));
}

AppModel::AppModel(Clock clock, Timeouts timeouts)
    : m_clock(std::move(clock))
    , m_timeouts(timeouts)
    , m_fullscreen(this, &AppModel::fullscreenChanged, Preferences::boolean(PreferenceKeys::fullscreen))
    , m_lastTick(m_clock())
{
    enablePosting();
    connect(&m_chosenAres, &PathProbe::answeredLate, this, &AppModel::showState);
    refreshState();
}

bool AppModel::hasWorkUnderWay() const
{
    return canCancel() || std::ranges::any_of(m_backgroundTasks, &TaskHandle::isRunning);
}

TaskHandle AppModel::runInBackground(const TaskHandle::Body& body)
{
    std::erase_if(m_backgroundTasks, [](const TaskHandle& task) { return !task.isRunning(); });
    return m_backgroundTasks.emplace_back(TaskHandle::startNow(body));
}

void AppModel::postTo(std::weak_ptr<AppModel> model, std::function<void(AppModel&)> function)
{
    post([model = std::move(model), function = std::move(function)] {
        if (const auto present = model.lock())
            function(*present);
    });
}

QUrl AppModel::storePage()
{
    return GameDownloader::pageURL();
}

void AppModel::setFullscreen(bool fullscreen)
{
    m_fullscreen = fullscreen;
    Preferences::setBoolean(PreferenceKeys::fullscreen, fullscreen);
}

void AppModel::refreshState()
{
    askForChosenAres();
    showState();
}

void AppModel::showState()
{
    setupDone = knownAres().has_value() && Files::exists(Paths::gameFile());
    usingExternalAres = m_chosenAres.found().has_value();
    aresVersion = usingExternalAres() ? std::nullopt : AresInstaller::installedVersion();
}

void AppModel::clearMessages()
{
    errorMessage = std::nullopt;
    errorDetails = QString();
    gameDownloadFailed = false;
    notice = std::nullopt;
}

std::optional<std::filesystem::path> AppModel::locateAres()
{
    askForChosenAres();
    return knownAres();
}

std::optional<std::filesystem::path> AppModel::knownAres() const
{
    if (auto chosen = m_chosenAres.found())
        return chosen;
    return AresInstaller::findApp(Paths::ares());
}

std::optional<std::filesystem::path> AppModel::externalPreference()
{
    askForChosenAres();
    return m_chosenAres.found();
}

void AppModel::askForChosenAres()
{
    const auto text = Preferences::text(PreferenceKeys::externalAres).value_or(QString());
    const auto app = toPath(text);
    // The system would read a path only up to a null character.
    if (app.is_absolute() && !text.contains(QChar::Null))
        m_chosenAres.ask(app);
    else
        m_chosenAres.forget();
}

void AppModel::cancel()
{
    if (m_task)
        m_task->cancel();
}

void AppModel::revealStorage()
{
    try {
        Paths::ensureSupport();
    } catch (const std::system_error&) {
        // The file browser then shows what there is.
    }
    FileBrowser::reveal(Paths::support());
}

QString AppModel::emulatorSite()
{
    return Origins::emulatorSite();
}

void AppModel::showError(const AppError& error)
{
    errorMessage = error.message;
    errorDetails = error.details;
}

bool AppModel::canStart() const
{
    return atRest() && (!m_task || m_task->hasBegun());
}

void AppModel::endProgress()
{
    fraction = std::nullopt;
    detailLine = QString();
}

} // namespace cartloom
