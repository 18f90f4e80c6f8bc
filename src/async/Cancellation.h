// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>

namespace cartloom
{

class CancellationState;

/// Asks a piece of work to stop. Copies ask for the same work. Any thread.
class CancellationToken
{
public:
    /// A token that never fires.
    CancellationToken() = default;

    [[nodiscard]] bool isCancelled() const;

private:
    friend class CancellationSource;
    friend class CancellationCallback;
    explicit CancellationToken(std::shared_ptr<CancellationState> state)
        : m_state(std::move(state))
    {
    }

    std::shared_ptr<CancellationState> m_state;
};

/// The side that cancels. Dropping a source cancels nothing. Any thread.
class CancellationSource
{
public:
    CancellationSource();

    [[nodiscard]] CancellationToken token() const { return CancellationToken(m_state); }

    /// Fires the token once and runs what is registered with it, on the calling thread.
    void cancel() const;

private:
    std::shared_ptr<CancellationState> m_state;
};

/// Runs a function when a token fires, at once if it has fired already. When the destructor has returned, the
/// function is not running and will not run. Any thread.
class CancellationCallback
{
public:
    CancellationCallback(const CancellationToken& token, std::function<void()> callback);
    ~CancellationCallback();
    CancellationCallback(const CancellationCallback&) = delete;
    CancellationCallback& operator=(const CancellationCallback&) = delete;

private:
    friend class CancellationState;

    std::shared_ptr<CancellationState> m_state;
    std::function<void()> m_callback;
};

} // namespace cartloom
