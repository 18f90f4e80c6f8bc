// SPDX-License-Identifier: MIT
#pragma once

#include "platform/Text.h"

#include <QProcess>
#include <QUrl>

#include <csignal>
#include <cstdio>
#include <filesystem>

namespace cartloom
{

/// A process that ends with this object at the latest.
class Process
{
public:
    Process(const char* program, const QStringList& arguments)
    {
        m_process.start(QString::fromLatin1(program), arguments);
    }
    ~Process()
    {
        kill();
        std::fputs(errors().constData(), stderr);
    }
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;

    /// The lines that it has written.
    [[nodiscard]] QByteArrayList words()
    {
        m_output += m_process.readAllStandardOutput();
        return m_output.split('\n').mid(0, m_output.count('\n'));
    }
    [[nodiscard]] bool says(const char* word) { return words().value(0) == word; }
    /// Its standard error so far.
    [[nodiscard]] QByteArray errors() { return m_errors += m_process.readAllStandardError(); }
    [[nodiscard]] int exitCode() const { return m_process.exitCode(); }
    [[nodiscard]] bool isRunning() const { return m_process.state() == QProcess::Running; }
    [[nodiscard]] bool hasEnded() const { return m_process.state() == QProcess::NotRunning; }
    [[nodiscard]] bool hasEndedWell() const
    {
        return hasEnded() && m_process.exitStatus() == QProcess::NormalExit && m_process.exitCode() == 0;
    }

    void closeWindow() { m_process.write("close\n"); }
    void signal(int number) const { ::kill(static_cast<pid_t>(m_process.processId()), number); }
    void kill()
    {
        m_process.kill();
        m_process.waitForFinished();
    }

private:
    QProcess m_process;
    QByteArray m_output;
    QByteArray m_errors;
};

/// A process that asks for the place of the first on a folder.
class Start : public Process
{
public:
    explicit Start(const std::filesystem::path& folder)
        : Process(INSTANCE_CHILD, {toText(folder)})
    {
    }
};

/// The launcher with its window, which presses its button at once, or does as it is told.
class Window : public Process
{
public:
    explicit Window(const QUrl& origin, const char* action = "play")
        : Process(WINDOW_CHILD, {origin.toString(), QString::fromLatin1(action)})
    {
    }
};

} // namespace cartloom
