// SPDX-License-Identifier: MIT
#pragma once

#include "platform/FileDescriptor.h"

#include <QLocalServer>
#include <QObject>

#include <filesystem>

namespace cartloom
{

/// Among all processes of one user that work on the same folder, the one that may. It stays the first for as
/// long as this object lives; the system itself ends that when the process dies, however it dies. Main
/// thread, needs the application object.
class SingleInstance : public QObject
{
    Q_OBJECT

public:
    /// Becomes the first, or else tells the first that it was started again and waits for the answer: a few
    /// seconds at most. A first that dies meanwhile is succeeded. Where the system offers no place for a
    /// lock, every process counts as the first. The folder need not exist.
    explicit SingleInstance(const std::filesystem::path& folder);

    [[nodiscard]] bool isFirst() const { return m_first; }

Q_SIGNALS:
    /// To the first: another process has been started. Arrives through the event loop.
    void startedAgain();

private:
    [[nodiscard]] bool takeLock();
    [[nodiscard]] bool callFirst() const;
    void listen();
    void answer();

    const QString m_place;
    FileDescriptor m_lock;
    QLocalServer m_server;
    bool m_first = false;
};

} // namespace cartloom
