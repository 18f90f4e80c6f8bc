// SPDX-License-Identifier: MIT
#pragma once

namespace cartloom::Appearance
{

/// Asks the system to draw what it draws for this program, such as the window's frame and the file panel, for
/// a dark window, whatever the user's setting is. Without effect before Qt 6.8, which cannot ask. Main
/// thread, once the application object exists.
void askForDark();

} // namespace cartloom::Appearance
