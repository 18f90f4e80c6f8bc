// SPDX-License-Identifier: MIT
#pragma once

#include "async/Cancellation.h"
#include "network/HttpRequest.h"
#include "network/HttpResponse.h"
#include "network/ProgressCallback.h"

#include <QCoroTask>

#include <filesystem>

namespace cartloom
{

/// Fetches one resource to one file. An instance serves one request.
class FileDownloader
{
public:
    /// The progress callback runs on the worker thread of the download.
    FileDownloader(std::filesystem::path destination, ProgressCallback onProgress);

    /// Returns the destination once the file is there; replaces what was there. A body longer than the
    /// request allows is cut off there, and its size is for the caller to judge. Throws PlatformError for
    /// network failures and for a cancellation, std::system_error for the file system, AppError for a status
    /// outside 200 to 299. The old file stays on every failure but that of the last move. Main thread; this
    /// object must outlive the call.
    [[nodiscard]] QCoro::Task<std::filesystem::path> download(HttpRequest request, CancellationToken token);

    /// Throws AppError unless the response to this request is a file.
    static void requireFile(const HttpRequest& request, const HttpResponse& response);

private:
    [[nodiscard]] std::filesystem::path run(const HttpRequest& request, const CancellationToken& token) const;

    const std::filesystem::path m_destination;
    const ProgressCallback m_onProgress;
};

} // namespace cartloom
