// SPDX-License-Identifier: MIT
#include "async/Post.h"

#include <QCoreApplication>
#include <QEvent>
#include <QObject>

#include <deque>
#include <mutex>
#include <utility>

namespace cartloom
{

namespace
{

/// The posted functions. They are in a queue of our own, whose mutex the thread sanitizer can see; one event
/// per function has it called. Never destroyed: a thread that outlives the application may still post.
class Queue final : public QObject
{
public:
    Queue() { moveToThread(QCoreApplication::instance()->thread()); }

    void add(std::function<void()> function)
    {
        {
            const std::lock_guard guard(m_mutex);
            m_functions.push_back(std::move(function));
        }
        QCoreApplication::postEvent(this, new QEvent(QEvent::User));
    }

    bool event(QEvent* event) override
    {
        if (event->type() != QEvent::User)
            return QObject::event(event);
        takeFirst()();
        return true;
    }

private:
    std::function<void()> takeFirst()
    {
        const std::lock_guard guard(m_mutex);
        auto first = std::move(m_functions.front());
        m_functions.pop_front();
        return first;
    }

    std::mutex m_mutex;
    std::deque<std::function<void()>> m_functions;
};

Queue& queue()
{
    static auto* const theOne = new Queue;
    return *theOne;
}

} // namespace

void enablePosting()
{
    static_cast<void>(queue());
}

void post(std::function<void()> function)
{
    queue().add(std::move(function));
}

} // namespace cartloom
