// SPDX-License-Identifier: MIT
#pragma once

#include "Drawing.h"

#include <QByteArray>
#include <QImage>

/// The forms in which systems take an icon. In each of them the drawing stands in the middle of a square,
/// with a narrow margin.
namespace cartloom::IconFiles
{

/// The drawing on a transparent square of that many pixels a side.
[[nodiscard]] QImage picture(const Drawing& drawing, int side);

/// A scalable picture, as SVG 1.1.
[[nodiscard]] QByteArray svg(const Drawing& drawing);

/// Apple's icon container with pictures of every size from 16 to 1024 pixels.
[[nodiscard]] QByteArray icns(const Drawing& drawing);

} // namespace cartloom::IconFiles
