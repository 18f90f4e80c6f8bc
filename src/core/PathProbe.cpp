// SPDX-License-Identifier: MIT
#include "core/PathProbe.h"

#include "async/Post.h"
#include "platform/Files.h"

#include <QCoroSignal>
#include <QPointer>

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>

using namespace std::chrono_literals;

namespace cartloom
{

struct PathProbe::Question
{
    explicit Question(std::filesystem::path asked)
        : path(std::move(asked))
    {
    }

    const std::filesystem::path path;
    std::mutex mutex;
    std::condition_variable answered;
    std::optional<bool> answer;
    /// True if ask() returned without an answer.
    bool isLate = false;

    /// Blocks for as long as the system does. True if the answer is late.
    bool resolve()
    {
        const bool exists = Files::exists(path);
        const std::lock_guard guard(mutex);
        answer = exists;
        answered.notify_all();
        return isLate;
    }
};

std::optional<std::filesystem::path> PathProbe::found() const
{
    if (!m_question)
        return std::nullopt;
    const std::lock_guard guard(m_question->mutex);
    return m_question->answer == true ? std::optional(m_question->path) : std::nullopt;
}

bool PathProbe::isOpen() const
{
    if (!m_question)
        return false;
    const std::lock_guard guard(m_question->mutex);
    return !m_question->answer;
}

void PathProbe::ask(const std::filesystem::path& path)
{
    if (isOpen() && m_question->path == path)
        return;
    m_question = std::make_shared<Question>(path);
    const auto question = m_question;
    try {
        std::thread([question, probe = QPointer(this)] {
            if (!question->resolve())
                return;
            post([question, probe] {
                if (!probe || probe->m_question != question)
                    return;
                Q_EMIT probe->answeredLate();
                Q_EMIT probe->woken();
            });
        }).detach();
    } catch (const std::system_error&) {
        // No thread is left.
        question->resolve();
    }
    std::unique_lock lock(question->mutex);
    const auto timeout = m_wasLate ? 100ms : 500ms;
    m_wasLate = !question->answered.wait_for(lock, timeout, [&] { return question->answer.has_value(); });
    question->isLate = m_wasLate;
}

QCoro::Task<void> PathProbe::settled(CancellationToken token)
{
    const CancellationCallback onCancel(token, [probe = QPointer(this)] {
        post([probe] {
            if (probe)
                Q_EMIT probe->woken();
        });
    });
    while (isOpen() && !token.isCancelled())
        co_await qCoro(this, &PathProbe::woken);
}

} // namespace cartloom
