// SPDX-License-Identifier: MIT
#include "async/Cancellation.h"

#include <algorithm>
#include <mutex>
#include <vector>

namespace cartloom
{

/// What a source and its tokens share. The mutex is held while callbacks run, so that removing one waits for
/// it; it is recursive, so that a callback may remove itself.
class CancellationState
{
public:
    bool isCancelled()
    {
        const std::lock_guard guard(m_mutex);
        return m_cancelled;
    }

    void cancel()
    {
        const std::lock_guard guard(m_mutex);
        m_cancelled = true;
        while (!m_callbacks.empty()) {
            // The callback may remove itself.
            const auto next = std::move(m_callbacks.front()->m_callback);
            m_callbacks.erase(m_callbacks.begin());
            next();
        }
    }

    void add(CancellationCallback* callback)
    {
        const std::lock_guard guard(m_mutex);
        if (m_cancelled)
            callback->m_callback();
        else
            m_callbacks.push_back(callback);
    }

    void remove(CancellationCallback* callback)
    {
        const std::lock_guard guard(m_mutex);
        std::erase(m_callbacks, callback);
    }

private:
    std::recursive_mutex m_mutex;
    bool m_cancelled = false;
    std::vector<CancellationCallback*> m_callbacks;
};

bool CancellationToken::isCancelled() const
{
    return m_state && m_state->isCancelled();
}

CancellationSource::CancellationSource()
    : m_state(std::make_shared<CancellationState>())
{
}

void CancellationSource::cancel() const
{
    // A callback may let go of this source.
    const auto state = m_state;
    state->cancel();
}

CancellationCallback::CancellationCallback(const CancellationToken& token, std::function<void()> callback)
    : m_state(token.m_state)
    , m_callback(std::move(callback))
{
    if (m_state)
        m_state->add(this);
}

CancellationCallback::~CancellationCallback()
{
    if (m_state)
        m_state->remove(this);
}

} // namespace cartloom
