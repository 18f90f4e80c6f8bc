// SPDX-License-Identifier: MIT
#pragma once

#include <functional>

namespace cartloom
{

/// Makes post() deliver to the thread of the application object. Called once on the main thread, after that
/// object exists and before another thread posts.
void enablePosting();

/// Runs a function on the main thread: in the order of the calls, never inside this one. Any thread. A
/// function that is posted after the event loop has ended does not run.
void post(std::function<void()> function);

} // namespace cartloom
