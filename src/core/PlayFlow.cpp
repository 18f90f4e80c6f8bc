// SPDX-License-Identifier: MIT
#include "core/AppModel.h"

#include "core/Paths.h"
#include "core/PreferenceKeys.h"
#include "emulator/AresInstaller.h"
#include "game/FriendlyError.h"
#include "game/GameDownloader.h"
#include "game/RomCheck.h"
#include "platform/Errors.h"
#include "platform/Files.h"
#include "platform/MainThread.h"
#include "platform/Preferences.h"
#include "platform/Text.h"

#include <QPointer>

#include <cerrno>
#include <system_error>
#include <utility>

namespace cartloom
{

namespace
{

constexpr QLatin1String gettingAresStep("Getting Ares");
constexpr QLatin1String gettingGameStep("Getting the game");
constexpr QLatin1String startingAresStep("Starting Ares");

/// A run of at least this many seconds has got past everything that stops an emulator at its start.
constexpr double shortestGoodRun = 3.0;
constexpr qsizetype mostQuotedLines = 5;

bool isGoodRun(const LaunchResult& result)
{
    return result.seconds >= shortestGoodRun && (result.status == 0 || result.errorText.isEmpty());
}

QString firstLines(const QString& text)
{
    return text.split(u'\n', Qt::SkipEmptyParts).mid(0, mostQuotedLines).join(u'\n');
}

/// Whether the system knows what to do and does not let this user do it.
bool isForbidden(const std::exception& error)
{
    const auto* const failure = dynamic_cast<const std::system_error*>(&error);
    return failure && (failure->code().value() == EACCES || failure->code().value() == EPERM);
}

} // namespace

void AppModel::start(std::optional<std::filesystem::path> customROM, bool allowExternalOffer)
{
    if (!isAtRest())
        return;
    clearMessages();
    m_task = TaskHandle::start(
        this, [this, customROM = std::move(customROM), allowExternalOffer](CancellationToken token) {
            return runFlow(customROM, allowExternalOffer, std::move(token));
        });
}

QCoro::Task<void> AppModel::runFlow(std::optional<std::filesystem::path> customROM, bool allowExternalOffer,
                                    CancellationToken token)
{
    const QPointer<AppModel> self(this);
    QLatin1String step = gettingAresStep;
    try {
        if (AresInstaller::recover())
            refreshState();
        auto app = locateAres();
        if (!app && allowExternalOffer) {
            if (const auto found = AresInstaller::externalApp()) {
                m_pendingROM = customROM;
                m_offerExternal = found;
                co_return;
            }
        }
        if (!app)
            app = co_await downloadAres(token);
        if (!self)
            co_return;

        auto rom = customROM;
        if (!rom && Files::exists(Paths::gameFile())) {
            rom = checkedSavedGame();
        } else if (!rom) {
            step = gettingGameStep;
            rom = co_await downloadGame(token);
        }
        if (!self)
            co_return;

        step = startingAresStep;
        launchAres(app, rom);
    } catch (const std::exception& error) {
        if (self)
            failFlow(error, step);
    }
}

QCoro::Task<std::filesystem::path> AppModel::downloadAres(CancellationToken token)
{
    const QPointer<AppModel> self(this);
    m_stage = Stage::gettingAres;
    beginProgress();
    const AresRelease release = co_await AresInstaller::fetchLatest(token);
    if (!self)
        throw CancellationError();
    const auto app = co_await AresInstaller::install(release, progressCallback(), token);
    if (self)
        refreshState();
    co_return app;
}

QCoro::Task<std::filesystem::path> AppModel::downloadGame(CancellationToken token)
{
    const QPointer<AppModel> self(this);
    m_stage = Stage::gettingGame;
    beginProgress();
    try {
        co_await GameDownloader::download(progressCallback(), token);
    } catch (const std::exception& error) {
        if (self && !FriendlyError::isCancel(error))
            m_gameDownloadFailed = true;
        throw;
    }
    if (self)
        refreshState();
    co_return Paths::gameFile();
}

std::filesystem::path AppModel::checkedSavedGame()
{
    auto file = Paths::gameFile();
    try {
        RomCheck::validate(file, true);
    } catch (const std::exception& error) {
        Files::tryRemove(file);
        refreshState();
        m_gameDownloadFailed = true;
        throw AppError(
            QStringLiteral(
                "The saved game file was damaged, so it was deleted. Press the button to download it again."),
            FriendlyError::localizedDescription(error));
    }
    return file;
}

void AppModel::launchAres(const std::optional<std::filesystem::path>& app,
                          const std::optional<std::filesystem::path>& rom)
{
    if (!app || !rom)
        throw AppError(QStringLiteral("Ares or the game could not be found."));
    m_stage = Stage::starting;
    m_fraction = std::nullopt;
    m_detailLine = QString();
    const bool justUpdated = Files::exists(Paths::aresOld());
    m_launcher.launch(*app, *rom, fullscreen(),
                      [model = QPointer(this), justUpdated](const LaunchResult& result) {
                          MainThread::post([model, result, justUpdated] {
                              if (model)
                                  model->didExit(result, justUpdated);
                          });
                      });
    m_stage = Stage::playing;
}

void AppModel::failFlow(const std::exception& error, QLatin1String step)
{
    m_stage = Stage::idle;
    m_fraction = std::nullopt;
    m_detailLine = QString();
    if (FriendlyError::isCancel(error)) {
        m_notice = QStringLiteral("Cancelled. Nothing was changed.");
    } else {
        AppError shown = FriendlyError::make(error, step);
        const bool refusedBySystem = step == startingAresStep && !dynamic_cast<const AppError*>(&error);
        if (refusedBySystem)
            shown.message += QStringLiteral("\n\nIf macOS blocked Ares, open System Settings, then Privacy "
                                            "and Security, scroll down and click Open Anyway next to ares.");
        showError(shown);
        // An update that cannot be started must not stand in the way of the copy that could, unless it waits
        // for the player to permit it.
        if (step == startingAresStep && !isForbidden(error) && !usingExternalAres())
            AresInstaller::rollback();
    }
    refreshState();
}

void AppModel::didExit(const LaunchResult& result, bool justUpdated)
{
    m_stage = Stage::idle;
    if (isGoodRun(result)) {
        AresInstaller::discardOldCopy();
        return;
    }

    QString message = QStringLiteral("Ares stopped right away (exit code %1).").arg(result.status);
    if (const QString quoted = firstLines(result.errorText); !quoted.isEmpty())
        message += QStringLiteral("\n\n") + quoted;
    if (justUpdated && AresInstaller::rollback()) {
        message += QStringLiteral("\n\nThe new Ares did not work, so the previous version was put back.");
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
