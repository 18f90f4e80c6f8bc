// SPDX-License-Identifier: MIT
#pragma once

#include "platform/FileDescriptor.h"

#include <filesystem>
#include <string>
#include <system_error>
#include <vector>

#include <sys/types.h>

namespace cartloom
{

/// The two ends of a pipe, neither of which a child inherits unasked. Throws std::system_error.
struct Pipe
{
    Pipe();

    FileDescriptor reading;
    FileDescriptor writing;
};

/// A child process.
class ChildProcess
{
public:
    /// A program in a session of its own does not get the signals for this program's terminal and group.
    enum class Session { shared, own };

    /// Starts the program, found on the search path when its name has no slash. It gets the arguments as they
    /// stand, this process's environment with the settings ("NAME=value") over it, its folder and standard
    /// input, no standard output, and its standard error is the writing end given. Throws std::system_error
    /// with the errno that kept it from starting. Any thread.
    [[nodiscard]] static ChildProcess start(const std::filesystem::path& program,
                                            const std::vector<std::string>& arguments,
                                            const FileDescriptor& standardError,
                                            const std::vector<std::string>& settings = {},
                                            Session session = Session::shared);

    /// True for an error of start() that says the program is missing or not made for this system.
    [[nodiscard]] static bool isUnusable(const std::error_code& error);

    [[nodiscard]] pid_t id() const { return m_id; }

    /// Ends the program. Only before waitForExit() is called: the system may give the id to another process
    /// then.
    void kill() const;

    /// Blocks until the program has ended. It keeps its id until waitForExit().
    void waitUntilEnded() const;

    /// Blocks until the program has ended and leaves no zombie. To be called once. The result is the exit
    /// status, or the number of the signal that ended it; -1 if the system does not tell.
    int waitForExit() const;

private:
    explicit ChildProcess(pid_t id)
        : m_id(id)
    {
    }

    pid_t m_id;
};

} // namespace cartloom
