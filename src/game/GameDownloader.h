// SPDX-License-Identifier: MIT
#pragma once

#include "game/ProgressCallback.h"
#include "platform/Cancellation.h"

#include <QCoroTask>
#include <QString>
#include <QUrl>

#include <filesystem>
#include <optional>

/// Fetches the game from its store page, as a browser does when its download button is pressed.
namespace cartloom::GameDownloader
{

/// The game's store page.
[[nodiscard]] QUrl pageURL();

/// Fetches, checks and installs the game; returns where it is installed. Throws AppError for what the store
/// answers and for a file that is not the game, PlatformError for what the network reports and for a
/// cancellation, and std::system_error for what the file system does. Whatever happens, no work folder stays,
/// and an installed game is replaced only by one that has passed the check. Main thread; progress is called
/// from another one.
[[nodiscard]] QCoro::Task<std::filesystem::path> download(ProgressCallback progress, CancellationToken token);

/// The security token of the form on the page, as it stands there.
[[nodiscard]] std::optional<QString> parseCSRF(const QString& page);

/// The id of the upload that the page lists under the game's file name: its decimal digits.
[[nodiscard]] std::optional<QString> parseUploadID(const QString& page);

/// The download link in the reply to the form. Throws AppError, which quotes the reply, when there is none.
[[nodiscard]] QUrl linkIn(const QByteArray& reply);

/// Makes a file the installed game, in place of the one before: copied when the original is to be kept, else
/// moved. Throws std::system_error. Any thread.
void install(const std::filesystem::path& file, bool keepOriginal);

} // namespace cartloom::GameDownloader
