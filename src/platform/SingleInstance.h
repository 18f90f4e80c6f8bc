// SPDX-License-Identifier: MIT
#pragma once

#include "platform/FileDescriptor.h"

#include <QLocalServer>
#include <QObject>

#include <filesystem>
#include <string>

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
    /// seconds at most. A first that dies meanwhile is succeeded. Where no folder is the user's alone, every
    /// process counts as the first. Lock and socket lie in the session's folder, or else in ".instance" of
    /// the folder, which is created then.
    explicit SingleInstance(const std::filesystem::path& folder);

    [[nodiscard]] bool isFirst() const { return m_first; }

    /// True if the first answered. If this is not the first and there was no answer, the first hangs.
    [[nodiscard]] bool reachedFirst() const { return m_answered; }

Q_SIGNALS:
    /// To the first: another process has been started. Arrives through the event loop.
    void startedAgain();

private:
    void choosePlace(const std::filesystem::path& folder);
    [[nodiscard]] bool takeLock();
    [[nodiscard]] bool callFirst() const;
    [[nodiscard]] QString socketName() const;
    void listen();
    void answer();

    /// The folder of lock and socket; closed if there is none. The socket is removed through it.
    FileDescriptor m_place;
    std::filesystem::path m_placePath;
    const std::string m_name;
    FileDescriptor m_lock;
    QLocalServer m_server;
    bool m_first = false;
    bool m_answered = false;
};

} // namespace cartloom
