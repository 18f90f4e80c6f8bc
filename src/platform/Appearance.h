// SPDX-License-Identifier: MIT
#pragma once

namespace cartloom::Appearance
{

/// Asks the system for dark window frames and file panels, whatever the user's setting is. It affects windows
/// that are created later. Before Qt 6.8, only X11 can be asked. Main thread, once the application object
/// exists.
void askForDark();

} // namespace cartloom::Appearance
