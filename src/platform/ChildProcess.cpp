// SPDX-License-Identifier: MIT
#include "platform/ChildProcess.h"

#include <cerrno>
#include <system_error>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

// Not every system declares it.
extern char** environ; // NOLINT(readability-redundant-declaration)

namespace cartloom
{

namespace
{

/// What the child's descriptors become.
class FileActions
{
public:
    FileActions() { check(::posix_spawn_file_actions_init(&m_actions)); }
    ~FileActions() { ::posix_spawn_file_actions_destroy(&m_actions); }
    FileActions(const FileActions&) = delete;
    FileActions& operator=(const FileActions&) = delete;

    void discard(int descriptor)
    {
        check(::posix_spawn_file_actions_addopen(&m_actions, descriptor, "/dev/null", O_WRONLY, 0));
    }
    void connect(const FileDescriptor& from, int descriptor)
    {
        check(::posix_spawn_file_actions_adddup2(&m_actions, from.get(), descriptor));
    }

    [[nodiscard]] const posix_spawn_file_actions_t* get() const { return &m_actions; }

private:
    static void check(int error)
    {
        if (error != 0)
            throw std::system_error(error, std::generic_category());
    }

    posix_spawn_file_actions_t m_actions = {};
};

} // namespace

Pipe::Pipe()
{
    int ends[2];
    if (::pipe(ends) != 0)
        throw lastSystemError();
    reading = FileDescriptor(ends[0]);
    writing = FileDescriptor(ends[1]);
    for (const int end : ends)
        ::fcntl(end, F_SETFD, FD_CLOEXEC);
}

ChildProcess ChildProcess::start(const std::filesystem::path& program,
                                 const std::vector<std::string>& arguments,
                                 const FileDescriptor& standardError)
{
    FileActions actions;
    actions.discard(STDOUT_FILENO);
    actions.connect(standardError, STDERR_FILENO);

    std::string name = program.native();
    std::vector<std::string> texts = arguments;
    std::vector<char*> words{name.data()};
    for (auto& text : texts)
        words.push_back(text.data());
    words.push_back(nullptr);

    pid_t id = 0;
    const auto spawn = program.has_parent_path() ? ::posix_spawn : ::posix_spawnp;
    const int error = spawn(&id, name.c_str(), actions.get(), nullptr, words.data(), environ);
    if (error != 0)
        throw std::system_error(error, std::generic_category());
    return ChildProcess(id);
}

int ChildProcess::waitForExit() const
{
    int status = 0;
    while (::waitpid(m_id, &status, 0) < 0 && errno == EINTR) {
    }
    return WIFSIGNALED(status) ? WTERMSIG(status) : WEXITSTATUS(status);
}

} // namespace cartloom
