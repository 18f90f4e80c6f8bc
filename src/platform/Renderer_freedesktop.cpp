// SPDX-License-Identifier: MIT
#include "platform/Renderer.h"

#include <QQuickWindow>

void cartloom::Renderer::choose()
{
    // The scene is flat and small: without a GPU pipeline it starts sooner and takes a third of the memory.
    QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
}
