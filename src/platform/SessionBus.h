// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

/// The message bus of the user's session. Qt connects to it before the first window, and waits without end
/// for a bus that accepts the connection and does not answer.
namespace cartloom::SessionBus
{

/// Makes this process go without the bus if it does not answer within a second. Before the application object
/// is made. Main thread.
void leaveIfHung();

/// The settings that give a child the bus which this process was started with. Any thread.
[[nodiscard]] std::vector<std::string> inheritedSettings();

} // namespace cartloom::SessionBus
