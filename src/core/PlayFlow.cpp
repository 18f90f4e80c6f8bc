// SPDX-License-Identifier: MIT
#include "core/AppModel.h"

#include "core/PreferenceKeys.h"
#include "emulator/AresInstaller.h"
#include "errors/FriendlyError.h"
#include "errors/PlatformError.h"
#include "game/GameDownloader.h"
#include "game/RomCheck.h"
#include "platform/Files.h"
#include "platform/Preferences.h"
#include "platform/Text.h"
#include "storage/Paths.h"
#include "storage/Removal.h"

#include <system_error>
#include <utility>

namespace cartloom
{

namespace
{

constexpr double minGoodRunSeconds = 3.0;
constexpr qsizetype maxQuotedLines = 5;

bool isGoodRun(const LaunchResult& result)
{
    return result.seconds >= minGoodRunSeconds && (result.status == 0 || result.errorText.isEmpty());
}

QString firstLines(const QString& text)
{
    return text.split(u'\n', Qt::SkipEmptyParts).mid(0, maxQuotedLines).join(u'\n');
}

StartedAres copyToStart(const std::optional<std::filesystem::path>& app)
{
    const bool isOwn = app && app->native().starts_with(Paths::ares().native() + '/');
    return {.isOwn = isOwn, .justUpdated = isOwn && Files::exists(Paths::aresOld())};
}

QString putBack()
{
    return QStringLiteral("\n\nThe new Ares did not work, so the previous version was put back.");
}

/// For waits that a cancellation does not end.
void throwIfCancelled(const CancellationToken& token)
{
    if (token.isCancelled())
        throw CancellationError();
}

} // namespace

void AppModel::start(std::optional<std::filesystem::path> customROM, bool allowExternalOffer)
{
    if (!canStart())
        return;
    clearMessages();
    m_task = TaskHandle::start([self = shared_from_this(), customROM = std::move(customROM),
                                allowExternalOffer](CancellationToken token) {
        return self->runFlow(customROM, allowExternalOffer, std::move(token));
    });
}

QCoro::Task<void> AppModel::runFlow(std::optional<std::filesystem::path> customROM, bool allowExternalOffer,
                                    CancellationToken token)
{
    Step step = Step::gettingAres;
    StartedAres started;
    try {
        if (AresInstaller::recover())
            refreshState();
        auto app = locateAres();
        if (m_chosenAres.isOpen())
            app = co_await awaitAres(token);
        if (!app && allowExternalOffer) {
            if (const auto found = AresInstaller::externalApp()) {
                m_pendingROM = customROM;
                offerExternal = found;
                co_return;
            }
        }
        if (!app)
            app = co_await downloadAres(token);

        auto rom = customROM;
        if (!rom && Files::exists(Paths::gameFile())) {
            rom = checkedSavedGame();
        } else if (!rom) {
            step = Step::gettingGame;
            rom = co_await downloadGame(token);
        }

        step = Step::startingAres;
        started = copyToStart(app);
        launchAres(app, rom, started);
    } catch (const std::exception& error) {
        failFlow(error, step, started);
    }
}

QCoro::Task<std::optional<std::filesystem::path>> AppModel::awaitAres(CancellationToken token)
{
    stage = Stage::gettingAres;
    beginProgress();
    co_await m_chosenAres.settled(token);
    throwIfCancelled(token);
    stage = Stage::idle;
    co_return knownAres();
}

QCoro::Task<std::filesystem::path> AppModel::downloadAres(CancellationToken token)
{
    stage = Stage::gettingAres;
    beginProgress();
    const AresRelease release = co_await AresInstaller::fetchLatest(token, m_timeouts);
    const auto app = co_await AresInstaller::install(release, progressCallback(), token, m_timeouts);
    refreshState();
    throwIfCancelled(token);
    co_return app;
}

QCoro::Task<std::filesystem::path> AppModel::downloadGame(CancellationToken token)
{
    stage = Stage::gettingGame;
    beginProgress();
    try {
        co_await GameDownloader::download(progressCallback(), token, m_timeouts);
    } catch (const std::exception& error) {
        if (!FriendlyError::isCancel(error))
            gameDownloadFailed = true;
        throw;
    }
    refreshState();
    throwIfCancelled(token);
    co_return Paths::gameFile();
}

std::filesystem::path AppModel::checkedSavedGame()
{
    auto file = Paths::gameFile();
    try {
        RomCheck::validate(file, true);
    } catch (const std::exception& error) {
        Removal::tryRemove(file);
        refreshState();
        gameDownloadFailed = true;
        throw AppError(
            QStringLiteral(
                "The saved game file was damaged, so it was deleted. Press the button to download it again."),
            FriendlyError::localizedDescription(error));
    }
    return file;
}

void AppModel::launchAres(const std::optional<std::filesystem::path>& app,
                          const std::optional<std::filesystem::path>& rom, StartedAres started)
{
    if (!app || !rom)
        throw AppError(QStringLiteral("Ares or the game could not be found."));
    stage = Stage::starting;
    endProgress();
    m_launcher.launch(
        *app, *rom, fullscreen(), [model = weak_from_this(), started](const LaunchResult& result) {
            postTo(model, [result, started](AppModel& present) { present.didExit(result, started); });
        });
    stage = Stage::playing;
}

void AppModel::failFlow(const std::exception& error, Step step, StartedAres started)
{
    stage = Stage::idle;
    endProgress();
    if (FriendlyError::isCancel(error)) {
        notice = QStringLiteral("Cancelled. Nothing was changed.");
    } else {
        AppError shown = FriendlyError::make(error, phraseFor(step));
        const bool refusedBySystem = step == Step::startingAres && !dynamic_cast<const AppError*>(&error);
        // Any other failure may pass, and says nothing about the update.
        if (started.justUpdated && Launcher::isProgramsOwnFailure(error) && AresInstaller::rollback())
            shown.message += putBack();
        else if (refusedBySystem)
            shown.message += QStringLiteral("\n\nIf macOS blocked Ares, open System Settings, then Privacy "
                                            "and Security, scroll down and click Open Anyway next to ares.");
        showError(shown);
    }
    refreshState();
}

void AppModel::didExit(const LaunchResult& result, StartedAres started)
{
    stage = Stage::idle;
    if (isGoodRun(result)) {
        if (started.isOwn)
            runInBackground([](const CancellationToken&) { return AresInstaller::discardOldCopy(); });
        return;
    }

    QString message = QStringLiteral("Ares stopped right away (exit code %1).").arg(result.status);
    if (const QString quoted = firstLines(result.errorText); !quoted.isEmpty())
        message += QStringLiteral("\n\n") + quoted;
    if (started.justUpdated && AresInstaller::rollback()) {
        message += putBack();
        refreshState();
    } else {
        message += QStringLiteral("\n\nIf macOS blocked it, open System Settings, then Privacy and Security, "
                                  "and click Open Anyway next to ares.");
    }
    showError(AppError(message, result.errorText));
}

void AppModel::useExistingAres(const std::filesystem::path& app)
{
    Preferences::setText(PreferenceKeys::externalAres, toText(app));
    refreshState();
    start(std::exchange(m_pendingROM, std::nullopt), false);
}

void AppModel::useExistingAres(const QString& app)
{
    useExistingAres(toPath(app));
}

void AppModel::downloadAresInstead()
{
    start(std::exchange(m_pendingROM, std::nullopt), false);
}

} // namespace cartloom
