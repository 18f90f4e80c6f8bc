// SPDX-License-Identifier: MIT
#pragma once

#include "async/Cancellation.h"
#include "emulator/AresRelease.h"
#include "network/ProgressCallback.h"
#include "network/Timeouts.h"

#include <QCoroTask>

#include <filesystem>
#include <optional>
#include <vector>

/// Finds, fetches and keeps the emulator. One instance of the program at a time works on the storage folder.
namespace cartloom::AresInstaller
{

/// The newest release and its macOS download. Throws AppError for what the service answers, PlatformError for
/// what the network reports and for a cancellation. Main thread.
[[nodiscard]] QCoro::Task<AresRelease> fetchLatest(CancellationToken token = {}, Timeouts timeouts = {});

/// Downloads, checks and unpacks a release and swaps it into place; returns the installed ares.app. A folder
/// that holds ares.app is a copy: the previous one is kept until discardOldCopy or rollback. A cancellation
/// before the swap changes nothing; a swap that has begun is finished. Throws AppError, PlatformError,
/// CancellationError and std::system_error; then the installed copy is as it was, and no work folder stays.
/// Main thread; progress is called from a worker thread.
[[nodiscard]] QCoro::Task<std::filesystem::path> install(AresRelease release, ProgressCallback progress,
                                                         CancellationToken token, Timeouts timeouts = {});

/// The first ares.app under a folder, in the order of the names, at most five levels down.
[[nodiscard]] std::optional<std::filesystem::path> findApp(const std::filesystem::path& folder);

/// True if findApp finds one. Throws std::system_error if it does not and a part of the folder cannot be
/// read.
[[nodiscard]] bool holdsApp(const std::filesystem::path& folder);

/// The tag of the installed release, if one is recorded.
[[nodiscard]] std::optional<QString> installedVersion();

/// Deletes Ares-old at once, and then the leftovers of interrupted runs on a worker thread. Never throws. Not
/// during a download. Main thread.
QCoro::Task<void> discardOldCopy();

/// Puts the copy that was kept back where no installed one is: between the two moves of an installation or of
/// a rollback, this program was ended, or ares.app was taken out of its folder. True if one was put back.
/// A folder that cannot be read is left alone. Never fails.
bool recover();

/// Puts the copy that was kept back in place of the installed one; false when there was none or it could not
/// be done. The recorded tag stays that of the release which failed.
bool rollback();

/// A copy of the emulator that the user has installed. Only its existence is tested.
[[nodiscard]] std::optional<std::filesystem::path> externalApp();

/// The first copy in these folders, in their order.
[[nodiscard]] std::optional<std::filesystem::path>
externalAppIn(const std::vector<std::filesystem::path>& folders);

} // namespace cartloom::AresInstaller
