// SPDX-License-Identifier: MIT
#pragma once

#include <QImage>

namespace cartloom
{

/// What the demo's game shows: the robot, and the game's title below it. 320 by 240 pixels. Needs the
/// application object, for the font.
[[nodiscard]] QImage titlePicture();

/// Whether the robot of that picture can be seen in another one, in any size, by the colours that only the
/// robot has.
[[nodiscard]] bool showsRobot(const QImage& picture);

} // namespace cartloom
