// SPDX-License-Identifier: MIT
#include "core/AppModel.h"

#include "emulator/AresInstaller.h"
#include "errors/FriendlyError.h"

#include <utility>

namespace cartloom
{

void AppModel::checkForUpdate()
{
    if (!canStart())
        return;
    if (usingExternalAres()) {
        notice = QStringLiteral("You are using your own copy of Ares, so update it yourself.");
        return;
    }
    clearMessages();
    if (m_lookup && m_lookup->isRunning())
        return;
    m_lookup = runInBackground(
        [self = shared_from_this()](const CancellationToken&) { return self->lookForUpdate(); });
}

QCoro::Task<void> AppModel::lookForUpdate()
{
    try {
        const AresRelease release = co_await AresInstaller::fetchLatest({}, m_timeouts);
        // Any difference counts, even an older tag on the server.
        if (AresInstaller::installedVersion() == release.tagName)
            notice = QStringLiteral("Ares ") + release.tagName + QStringLiteral(" is the newest version.");
        else
            updateOffer = release;
    } catch (const std::exception& error) {
        showError(FriendlyError::make(error, phraseFor(Step::checkingForUpdate)));
    }
}

void AppModel::installUpdate(const AresRelease& release)
{
    if (!canStart())
        return;
    clearMessages();
    m_task = TaskHandle::start([self = shared_from_this(), release](CancellationToken token) {
        return self->runUpdate(release, std::move(token));
    });
}

QCoro::Task<void> AppModel::runUpdate(AresRelease release, CancellationToken token)
{
    stage = Stage::gettingAres;
    beginProgress();
    try {
        AresInstaller::recover();
        co_await AresInstaller::install(release, progressCallback(), token, m_timeouts);
        notice = QStringLiteral("Ares ") + release.tagName +
                 QStringLiteral(" is installed. The old copy is kept until the new one has started once.");
    } catch (const std::exception& error) {
        if (FriendlyError::isCancel(error))
            notice = QStringLiteral("Cancelled. Your current Ares was not changed.");
        else
            showError(FriendlyError::make(error, phraseFor(Step::updatingAres)));
    }
    stage = Stage::idle;
    endProgress();
    refreshState();
}

} // namespace cartloom
