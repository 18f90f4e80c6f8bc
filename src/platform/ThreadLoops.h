// SPDX-License-Identifier: MIT
#pragma once

#include <string_view>

/// How the threads that Qt makes wait for events.
namespace cartloom::ThreadLoops
{

/// Has all threads but the main one wait without GLib, with which every posted event costs a system call. It
/// is said in a variable of the environment, unless whoever started this program has set that already. Must
/// be called before there is a second thread.
void leaveOutGLib();

/// Whether a variable of the environment, with its value, is there only since leaveOutGLib: programs that are
/// started from here are not to have it. Any thread.
[[nodiscard]] bool hasSet(std::string_view candidate);

} // namespace cartloom::ThreadLoops
