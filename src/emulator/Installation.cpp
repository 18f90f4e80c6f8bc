// SPDX-License-Identifier: MIT
#include "emulator/AresInstaller.h"

#include "async/RunOnWorker.h"
#include "emulator/Unpacking.h"
#include "errors/AppError.h"
#include "errors/PlatformError.h"
#include "network/FileDownloader.h"
#include "network/Origins.h"
#include "platform/Files.h"
#include "platform/Text.h"
#include "platform/TreeFlush.h"
#include "storage/Paths.h"
#include "storage/Removal.h"
#include "storage/WholeFiles.h"
#include "storage/WorkFolder.h"

#include <algorithm>
#include <chrono>
#include <system_error>

namespace cartloom::AresInstaller
{

namespace
{

constexpr qint64 maxVersionBytes = 64 * 1024;

/// Of a release whose size is not announced.
constexpr qint64 maxReleaseBytes = 1'000'000'000;

HttpRequest requestFor(const AresRelease& release, std::chrono::milliseconds timeout)
{
    auto limits = limitsFor(timeout);
    // One byte more shows that there is too much.
    const qint64 plausible = release.size < 1 ? maxReleaseBytes : release.size;
    limits.maxBodyBytes = std::min(plausible, limits.maxBodyBytes - 1) + 1;
    return {.url = release.downloadURL,
            .headers = {"User-Agent: QuilletPlayer"},
            .limits = limits,
            .schemes = Origins::schemesFor(Origins::releaseApi())};
}

void requireSize(const std::filesystem::path& archive, qint64 expected)
{
    const qint64 size = Files::size(archive);
    // A service that does not know the size reports 0.
    if (expected < 1 ? size <= maxReleaseBytes : size == expected)
        return;
    throw AppError(
        QStringLiteral("The Ares download is damaged (got %1 bytes, expected %2). Please try again.")
            .arg(size)
            .arg(expected < 1 ? maxReleaseBytes : expected));
}

/// Deletes the unpacked files on failure, to free the disk space.
void unpack(const std::filesystem::path& archive, const CancellationToken& token)
{
    Paths::discard(Paths::aresNew());
    // Into a new folder only: a release must not be mixed with what is left of another one.
    Files::createNewFolder(Paths::aresNew());
    try {
        unzip(archive, Paths::aresNew(), token);
        if (!findApp(Paths::aresNew()))
            throw AppError(QStringLiteral("The Ares download did not contain ares.app. Please try again."));
        // Before its name becomes that of the installed copy.
        flushTree(Paths::aresNew());
        if (token.isCancelled())
            throw CancellationError();
    } catch (const std::exception&) {
        Paths::discard(Paths::aresNew());
        throw;
    }
}

/// Keeps the installed copy. A kept copy without an installed one is the only one, and stays the kept one.
void makeRoom()
{
    const bool isInstalled = holdsApp(Paths::ares());
    if (isInstalled || !holdsApp(Paths::aresOld()))
        Paths::discard(Paths::aresOld());
    if (isInstalled)
        Files::move(Paths::ares(), Paths::aresOld());
    else
        Paths::discard(Paths::ares());
}

/// Makes the unpacked copy the installed one.
void swapIntoPlace()
{
    makeRoom();
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
    Files::tryFlush(Paths::support());
}

void recordVersion(const QString& tagName)
{
    try {
        WholeFiles::write(Paths::aresVersion(), tagName.toUtf8());
    } catch (const std::system_error&) {
        // The emulator works without it; the next check for an update then offers one.
    }
}

} // namespace

QCoro::Task<std::filesystem::path> install(AresRelease release, ProgressCallback progress,
                                           CancellationToken token, Timeouts timeouts)
{
    co_await runOnWorker(Paths::removeLeftovers);
    const WorkFolder workFolder(Paths::newWorkDir("download-ares"));
    FileDownloader downloader(workFolder.path() / "ares.zip", std::move(progress));
    const auto request = requestFor(release, timeouts.emulator);
    const auto archive = co_await downloader.download(request, token);
    requireSize(archive, release.size);

    co_await runOnWorker([&] {
        unpack(archive, token);
        swapIntoPlace();
        recordVersion(release.tagName);
    });
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
        const auto text = decodeUtf8(Files::read(Paths::aresVersion(), maxVersionBytes));
        const QString tag = text.value_or(QString()).trimmed();
        return tag.isEmpty() ? std::nullopt : std::optional(tag);
    } catch (const std::system_error&) {
        return std::nullopt;
    }
}

QCoro::Task<void> discardOldCopy()
{
    Paths::setAside(Paths::aresOld());
    // Everything is installed and nothing is downloaded now. The leftovers are listed before the first wait,
    // so that the work folder of a download that starts meanwhile is not one of them.
    const auto leftovers = Paths::takeLeftovers();
    try {
        co_await runOnWorker([&leftovers] {
            for (const auto& leftover : leftovers)
                Removal::tryRemove(leftover);
        });
    } catch (const std::system_error&) {
        // No thread is left. The next download deletes them.
    }
}

bool recover()
{
    try {
        if (holdsApp(Paths::ares()) || !findApp(Paths::aresOld()))
            return false;
        Paths::discard(Paths::ares());
        Files::move(Paths::aresOld(), Paths::ares());
    } catch (const std::system_error&) {
        // Then it stays the kept copy.
        return false;
    }
    Files::tryFlush(Paths::support());
    return true;
}

bool rollback()
{
    if (!findApp(Paths::aresOld()))
        return false;
    const auto failed = Paths::support() / ("Ares-failed-" + Paths::newIdentifier());
    try {
        Files::move(Paths::ares(), failed);
        Files::move(Paths::aresOld(), Paths::ares());
    } catch (const std::system_error&) {
        return false;
    }
    Files::tryFlush(Paths::support());
    Removal::tryRemove(failed);
    return true;
}

} // namespace cartloom::AresInstaller
