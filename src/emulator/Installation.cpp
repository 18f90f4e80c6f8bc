// SPDX-License-Identifier: MIT
#include "emulator/AresInstaller.h"

#include "core/Paths.h"
#include "emulator/Unpacking.h"
#include "game/AppError.h"
#include "game/FileDownloader.h"
#include "platform/Files.h"
#include "platform/Text.h"
#include "platform/WorkFolder.h"
#include "platform/WorkThread.h"

#include <QCoroFuture>

#include <chrono>
#include <system_error>

using namespace std::chrono_literals;

namespace cartloom::AresInstaller
{

namespace
{

constexpr auto downloadTimeout = 60s;
constexpr qint64 longestVersion = 64 * 1024;

QNetworkRequest requestFor(const AresRelease& release)
{
    QNetworkRequest request(release.downloadURL);
    request.setRawHeader("User-Agent", "QuilletPlayer");
    request.setTransferTimeout(static_cast<int>(std::chrono::milliseconds(downloadTimeout).count()));
    return request;
}

void requireSize(const std::filesystem::path& archive, qint64 expected)
{
    const qint64 size = Files::size(archive);
    // A service that does not know the size reports 0.
    if (expected < 1 || size == expected)
        return;
    throw AppError(
        QStringLiteral("The Ares download is damaged (got %1 bytes, expected %2). Please try again.")
            .arg(size)
            .arg(expected));
}

/// What does not come to a good end gives its room on the disk back.
void unpack(const std::filesystem::path& archive)
{
    Paths::discard(Paths::aresNew());
    // Into a new folder only: a release must not be mixed with what is left of another one.
    Files::createNewFolder(Paths::aresNew());
    try {
        unzip(archive, Paths::aresNew());
        if (!findApp(Paths::aresNew()))
            throw AppError(QStringLiteral("The Ares download did not contain ares.app. Please try again."));
    } catch (const std::exception&) {
        Paths::discard(Paths::aresNew());
        throw;
    }
}

/// Makes the unpacked copy the installed one and keeps the one before it.
void swapIntoPlace()
{
    // A kept copy without an installed one is the only copy that there is, and stays the kept one.
    if (Files::exists(Paths::ares())) {
        Paths::discard(Paths::aresOld());
        Files::move(Paths::ares(), Paths::aresOld());
    }
    try {
        Files::move(Paths::aresNew(), Paths::ares());
    } catch (const std::system_error&) {
        if (Files::exists(Paths::aresOld())) {
            try {
                Files::move(Paths::aresOld(), Paths::ares());
            } catch (const std::system_error&) {
                // The first failure is the one that tells what went wrong.
            }
        }
        throw;
    }
}

void recordVersion(const QString& tagName)
{
    try {
        Files::writeAtomically(Paths::aresVersion(), tagName.toUtf8());
    } catch (const std::system_error&) {
        // The emulator works without it; the next check for an update then offers one.
    }
}

} // namespace

QCoro::Task<std::filesystem::path> install(AresRelease release, ProgressCallback progress,
                                           CancellationToken token)
{
    co_await onWorkThread(Paths::removeLeftovers);
    const WorkFolder workFolder(Paths::newWorkDir("download-ares"));
    FileDownloader downloader(workFolder.path() / "ares.zip", std::move(progress));
    const auto request = requestFor(release);
    const auto archive = co_await downloader.download(request, token);
    requireSize(archive, release.size);

    const auto takingOver = onWorkThread([archive, tagName = release.tagName] {
        unpack(archive);
        swapIntoPlace();
        recordVersion(tagName);
    });
    co_await takingOver;
    const auto app = findApp(Paths::ares());
    if (!app)
        throw AppError(QStringLiteral("Ares was unpacked but ares.app could not be found."));
    co_return *app;
}

std::optional<QString> installedVersion()
{
    if (!Files::exists(Paths::aresVersion()))
        return std::nullopt;
    try {
        const auto text = decodeUtf8(Files::read(Paths::aresVersion(), longestVersion));
        const QString tag = text.value_or(QString()).trimmed();
        return tag.isEmpty() ? std::nullopt : std::optional(tag);
    } catch (const std::system_error&) {
        return std::nullopt;
    }
}

QFuture<void> discardOldCopy()
{
    Paths::discard(Paths::aresOld());
    // No other moment is sure to come where everything is installed and nothing is downloaded any more. What
    // they are is found out at once, so that the folder of a download that begins now is none of them.
    return onWorkThread([leftovers = Paths::takeLeftovers()] {
        for (const auto& leftover : leftovers)
            Files::tryRemove(leftover);
    });
}

bool recover()
{
    if (findApp(Paths::ares()) || !findApp(Paths::aresOld()))
        return false;
    Paths::discard(Paths::ares());
    try {
        Files::move(Paths::aresOld(), Paths::ares());
    } catch (const std::system_error&) {
        // Then it stays the kept copy, and another one is downloaded.
        return false;
    }
    return true;
}

bool rollback()
{
    if (!Files::exists(Paths::aresOld()))
        return false;
    const auto failed = Paths::support() / ("Ares-failed-" + Paths::newIdentifier());
    try {
        Files::move(Paths::ares(), failed);
        Files::move(Paths::aresOld(), Paths::ares());
    } catch (const std::system_error&) {
        return false;
    }
    Files::tryRemove(failed);
    return true;
}

} // namespace cartloom::AresInstaller
