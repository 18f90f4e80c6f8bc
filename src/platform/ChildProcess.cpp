// SPDX-License-Identifier: MIT
#include "platform/ChildProcess.h"

#include <QtGlobal>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
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

void check(int error)
{
    if (error != 0)
        throw std::system_error(error, std::generic_category());
}

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
    posix_spawn_file_actions_t m_actions = {};
};

class Attributes
{
public:
    Attributes() { check(::posix_spawnattr_init(&m_attributes)); }
    ~Attributes() { ::posix_spawnattr_destroy(&m_attributes); }
    Attributes(const Attributes&) = delete;
    Attributes& operator=(const Attributes&) = delete;

    void startSession() { check(::posix_spawnattr_setflags(&m_attributes, POSIX_SPAWN_SETSID)); }

    [[nodiscard]] const posix_spawnattr_t* get() const { return &m_attributes; }

private:
    posix_spawnattr_t m_attributes = {};
};

/// The environment that this process was started with, and the settings in place of what it has under their
/// names.
std::vector<std::string> environmentWith(const std::vector<std::string>& settings)
{
    std::vector<std::string> variables = settings;
    for (char** variable = environ; *variable; ++variable) {
        const std::string inherited = *variable;
        const auto name = inherited.substr(0, inherited.find('=') + 1);
        if (std::ranges::none_of(settings, [&](const auto& setting) { return setting.starts_with(name); }))
            variables.push_back(inherited);
    }
    return variables;
}

/// The texts as the system's calls take them. Valid as long as the texts are.
std::vector<char*> pointersTo(std::vector<std::string>& texts)
{
    std::vector<char*> pointers;
    pointers.reserve(texts.size() + 1);
    for (auto& text : texts)
        pointers.push_back(text.data());
    pointers.push_back(nullptr);
    return pointers;
}

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
                                 const FileDescriptor& standardError,
                                 const std::vector<std::string>& settings, Session session)
{
    Attributes attributes;
    if (session == Session::own)
        attributes.startSession();
    // In this order: the writing end may itself be standard output, in a process that was started without
    // one.
    FileActions actions;
    actions.connect(standardError, STDERR_FILENO);
    actions.discard(STDOUT_FILENO);

    std::vector<std::string> texts = arguments;
    texts.insert(texts.begin(), program.native());
    auto variables = environmentWith(settings);

    pid_t id = 0;
    const auto spawn = program.has_parent_path() ? ::posix_spawn : ::posix_spawnp;
    check(spawn(&id, program.c_str(), actions.get(), attributes.get(), pointersTo(texts).data(),
                pointersTo(variables).data()));
    return ChildProcess(id);
}

bool ChildProcess::isUnusable(const std::error_code& error)
{
    constexpr std::array unusable{
        ENOENT,   ENOEXEC,
#ifdef Q_OS_MACOS
        EBADEXEC, EBADARCH, ESHLIBVERS, EBADMACHO,
#endif
    };
    return error.category() == std::generic_category() &&
           std::ranges::find(unusable, error.value()) != unusable.end();
}

void ChildProcess::kill() const
{
    ::kill(m_id, SIGKILL);
}

void ChildProcess::waitUntilEnded() const
{
    siginfo_t ended = {};
    while (::waitid(P_PID, static_cast<id_t>(m_id), &ended, WEXITED | WNOWAIT) != 0 && errno == EINTR) {
    }
}

int ChildProcess::waitForExit() const
{
    int status = 0;
    while (::waitpid(m_id, &status, 0) < 0) {
        if (errno != EINTR)
            return -1;
    }
    return WIFSIGNALED(status) ? WTERMSIG(status) : WEXITSTATUS(status);
}

} // namespace cartloom
