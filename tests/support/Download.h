// SPDX-License-Identifier: MIT
#pragma once

#include "network/FileDownloader.h"
#include "support/Requests.h"
#include "support/ResultOf.h"
#include "support/Sandbox.h"

#include <QDir>

namespace cartloom
{

/// One download into a folder that holds nothing else.
struct Download
{
    explicit Download(ProgressCallback progress = [](qint64, qint64) {})
        : downloader(destination(), std::move(progress))
    {
        std::filesystem::create_directories(destination().parent_path());
    }

    [[nodiscard]] std::filesystem::path destination() const
    {
        return sandbox.scratch() / "downloads/file.bin";
    }
    [[nodiscard]] QStringList names() const
    {
        return QDir(QString::fromStdString(destination().parent_path().native()))
            .entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot, QDir::Name);
    }

    std::filesystem::path fetch(const HttpRequest& request, const CancellationToken& token = {})
    {
        return resultOf(downloader.download(request, token));
    }
    std::filesystem::path fetch(const QUrl& url, const CancellationToken& token = {})
    {
        return fetch(requestFor(url), token);
    }

    Sandbox sandbox;
    FileDownloader downloader;
};

} // namespace cartloom
