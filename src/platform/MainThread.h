// SPDX-License-Identifier: MIT
#pragma once

#include <functional>

namespace cartloom::MainThread
{

/// To be called on the main thread, once the application object exists and before another thread posts.
void adopt();

/// Runs a function on the main thread, after everything that was posted before it and never inside this call.
/// Any thread, once the application object exists. What is posted after the event loop has ended does not
/// run.
void post(std::function<void()> function);

} // namespace cartloom::MainThread
