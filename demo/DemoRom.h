// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QImage>
#include <QString>

namespace cartloom::DemoRom
{

/// A cartridge image, big-endian, that shows one still picture of 320 by 240 pixels for ever. The title is
/// ASCII, at most 20 characters. The size is in bytes, a multiple of four that leaves room for the picture.
[[nodiscard]] QByteArray make(const QString& title, const QImage& picture, qsizetype size);

/// The title in a cartridge image's header, without the blanks at its end.
[[nodiscard]] QString title(const QByteArray& image);

/// The picture in an image that was made here; a null picture when the image is too short for one.
[[nodiscard]] QImage picture(const QByteArray& image);

} // namespace cartloom::DemoRom
