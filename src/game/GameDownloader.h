// SPDX-License-Identifier: MIT
#pragma once

#include "async/Cancellation.h"
#include "network/ProgressCallback.h"
#include "network/Timeouts.h"

#include <QCoroTask>
#include <QString>
#include <QUrl>

#include <filesystem>
#include <optional>
#include <string>

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
[[nodiscard]] QCoro::Task<std::filesystem::path> download(ProgressCallback progress, CancellationToken token,
                                                          Timeouts timeouts = {});

/// The security token of the form on the page, as it stands there.
[[nodiscard]] std::optional<QString> parseCSRF(const QString& page);

/// The id of the upload that the page lists under the game's file name: its decimal digits.
[[nodiscard]] std::optional<QString> parseUploadID(const QString& page);

/// The download link in the reply to the form, byte for byte. Throws AppError, which quotes the reply, if
/// there is none.
[[nodiscard]] std::string linkIn(const QByteArray& reply);

/// Makes a file the installed game, in place of the one before: copied when the original is to be kept, else
/// moved. Throws std::system_error. Any thread.
void install(const std::filesystem::path& file, bool keepOriginal);

} // namespace cartloom::GameDownloader
