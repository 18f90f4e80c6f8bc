// SPDX-License-Identifier: MIT
#include "core/AppModel.h"

#include "emulator/AresInstaller.h"
#include "game/FriendlyError.h"

#include <QPointer>
#include <QScopeGuard>

namespace cartloom
{

void AppModel::checkForUpdate()
{
    if (!isAtRest())
        return;
    if (usingExternalAres()) {
        m_notice = QStringLiteral("You are using your own copy of Ares, so update it yourself.");
        return;
    }
    clearMessages();
    // Not kept: a check cannot be cancelled, and the player may start something else meanwhile.
    TaskHandle::start(this, [this](CancellationToken) { return lookForUpdate(); });
}

QCoro::Task<void> AppModel::lookForUpdate()
{
    const QPointer<AppModel> self(this);
    ++m_checksForUpdate;
    const auto over = qScopeGuard([&self] {
        if (self)
            --self->m_checksForUpdate;
    });
    try {
        const AresRelease release = co_await AresInstaller::fetchLatest();
        if (!self)
            co_return;
        // Any difference counts, even an older tag on the server.
        if (AresInstaller::installedVersion() == release.tagName)
            m_notice = QStringLiteral("Ares ") + release.tagName + QStringLiteral(" is the newest version.");
        else
            m_updateOffer = release;
    } catch (const std::exception& error) {
        if (self)
            showError(FriendlyError::make(error, QStringLiteral("Checking for a newer Ares")));
    }
}

void AppModel::installUpdate(const AresRelease& release)
{
    if (!isAtRest())
        return;
    clearMessages();
    m_task = TaskHandle::start(
        this, [this, release](CancellationToken token) { return runUpdate(release, std::move(token)); });
}

QCoro::Task<void> AppModel::runUpdate(AresRelease release, CancellationToken token)
{
    const QPointer<AppModel> self(this);
    m_stage = Stage::gettingAres;
    beginProgress();
    try {
        co_await AresInstaller::install(release, progressCallback(), token);
        if (!self)
            co_return;
        m_notice = QStringLiteral("Ares ") + release.tagName +
                   QStringLiteral(" is installed. The old copy is kept until the new one has started once.");
    } catch (const std::exception& error) {
        if (!self)
            co_return;
        if (FriendlyError::isCancel(error))
            m_notice = QStringLiteral("Cancelled. Your current Ares was not changed.");
        else
            showError(FriendlyError::make(error, QStringLiteral("Updating Ares")));
    }
    m_stage = Stage::idle;
    m_fraction = std::nullopt;
    m_detailLine = QString();
    refreshState();
}

} // namespace cartloom
