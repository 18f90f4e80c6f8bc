// SPDX-License-Identifier: MIT
#pragma once

#include "platform/ChildProcess.h"

#include <QByteArray>
#include <QString>

#include <mutex>
#include <optional>
#include <thread>

namespace cartloom
{

/// The beginning of a program's standard error, read on a worker thread. The rest is read and dropped, so
/// that the program never blocks on a full pipe and memory stays bounded.
class ErrorStream
{
public:
    /// Reads from now on and keeps the first maxBytes. Throws std::system_error.
    ErrorStream(FileDescriptor stream, qsizetype maxBytes);
    ~ErrorStream() { finish(); }
    ErrorStream(const ErrorStream&) = delete;
    ErrorStream& operator=(const ErrorStream&) = delete;

    /// Ends the reading. What the stream holds at this moment still counts; what another process that shares
    /// the stream writes later does not. One thread.
    void finish();

    /// What was kept so far, what is not UTF-8 replaced. Any thread.
    [[nodiscard]] QString text();

private:
    void read();
    [[nodiscard]] std::optional<std::size_t> readOnce();
    [[nodiscard]] bool isFull();

    FileDescriptor m_stream;
    const qsizetype m_maxBytes;
    /// Closing its writing end stops the reader.
    Pipe m_stop;
    /// Guards what was kept.
    std::mutex m_mutex;
    QByteArray m_kept;
    std::thread m_reader;
};

} // namespace cartloom
