// SPDX-License-Identifier: MIT
#include "core/AppModel.h"

#include "core/Paths.h"
#include "core/PreferenceKeys.h"
#include "emulator/AresInstaller.h"
#include "game/GameDownloader.h"
#include "game/Origins.h"
#include "platform/FileBrowser.h"
#include "platform/Files.h"
#include "platform/MainThread.h"
#include "platform/Preferences.h"
#include "platform/Text.h"

#include <system_error>

namespace cartloom
{

namespace
{

/// An absent value is undefined in QML.
template <typename T>
QVariant toVariant(const std::optional<T>& value)
{
    return value ? QVariant::fromValue(*value) : QVariant();
}

} // namespace

AppModel::AppModel(Clock clock)
    : m_clock(std::move(clock))
    , m_fullscreen(this, &AppModel::fullscreenChanged, Preferences::boolean(PreferenceKeys::fullscreen))
    , m_lastTick(m_clock())
{
    MainThread::adopt();
    refreshState();
}

bool AppModel::hasWorkUnderWay() const
{
    return canCancel() || m_checksForUpdate > 0;
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
    m_setupDone = locateAres().has_value() && Files::exists(Paths::gameFile());
    m_usingExternalAres = externalPreference().has_value();
    m_aresVersion = usingExternalAres() ? std::nullopt : AresInstaller::installedVersion();
}

void AppModel::clearMessages()
{
    m_errorMessage = std::nullopt;
    m_errorDetails = QString();
    m_gameDownloadFailed = false;
    m_notice = std::nullopt;
}

std::optional<std::filesystem::path> AppModel::locateAres() const
{
    if (auto chosen = externalPreference())
        return chosen;
    return AresInstaller::findApp(Paths::ares());
}

std::optional<std::filesystem::path> AppModel::externalPreference() const
{
    const auto text = Preferences::text(PreferenceKeys::externalAres);
    // The system would read a path only up to a null character.
    if (!text || text->contains(QChar::Null))
        return std::nullopt;
    const auto app = toPath(*text);
    return app.is_absolute() && Files::exists(app) ? std::optional(app) : std::nullopt;
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
    m_errorMessage = error.message;
    m_errorDetails = error.details;
}

/// Whether nothing is running and nothing is about to.
bool AppModel::isAtRest() const
{
    return stage() == Stage::idle && (!m_task || m_task->hasBegun());
}

QString AppModel::stageName() const
{
    return nameOf(stage());
}

QVariant AppModel::fractionVariant() const
{
    return toVariant(fraction());
}
QVariant AppModel::errorMessageVariant() const
{
    return toVariant(errorMessage());
}
QVariant AppModel::noticeVariant() const
{
    return toVariant(notice());
}
QVariant AppModel::updateOfferVariant() const
{
    return toVariant(updateOffer());
}
QVariant AppModel::aresVersionVariant() const
{
    return toVariant(aresVersion());
}

QVariant AppModel::offerExternalVariant() const
{
    return offerExternal() ? QVariant(toText(*offerExternal())) : QVariant();
}

} // namespace cartloom
