// SPDX-License-Identifier: MIT
#include "platform/Renderer.h"

#include <QSurfaceFormat>

void cartloom::Renderer::choose()
{
    // A GPU draws the edges of shapes smoothly only with several samples per pixel.
    QSurfaceFormat format = QSurfaceFormat::defaultFormat();
    format.setSamples(4);
    QSurfaceFormat::setDefaultFormat(format);
}
