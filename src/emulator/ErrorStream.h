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

/// What a program writes to its error stream, read on a thread of its own: the beginning is kept, the rest is
/// read and dropped, so that the program never waits for a reader and memory stays bounded.
class ErrorStream
{
public:
    /// Reads from now on. Throws std::system_error.
    explicit ErrorStream(FileDescriptor stream);
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
    /// Closing its writing end stops the reader.
    Pipe m_stop;
    /// Guards what was kept.
    std::mutex m_mutex;
    QByteArray m_kept;
    std::thread m_reader;
};

} // namespace cartloom
