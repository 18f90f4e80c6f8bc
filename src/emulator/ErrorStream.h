// SPDX-License-Identifier: MIT
#pragma once

#include "platform/ChildProcess.h"

#include <QByteArray>
#include <QString>

#include <mutex>
#include <optional>

namespace cartloom
{

/// What a program writes to its error stream: the beginning is kept, the rest is read and dropped, so that
/// the program never waits for a reader and memory stays bounded. One thread reads; any thread asks.
class ErrorStream
{
public:
    explicit ErrorStream(FileDescriptor stream);

    /// Reads until the stream ends or stop is called. What the stream holds at that moment still counts; what
    /// another process that shares the stream writes later does not.
    void readUntilStopped();

    /// Makes readUntilStopped return. Any thread.
    void stop();

    /// What was kept so far, what is not UTF-8 replaced. Any thread.
    [[nodiscard]] QString text();

private:
    [[nodiscard]] std::optional<std::size_t> readOnce();
    [[nodiscard]] bool isFull();

    FileDescriptor m_stream;
    Pipe m_stop;
    std::mutex m_mutex;
    QByteArray m_kept;
};

} // namespace cartloom
