// SPDX-License-Identifier: MIT
#include "ui/WindowIcon.h"

#include <QIcon>
#include <QPainter>
#include <QPixmap>
#include <QQuickItemGrabResult>
#include <QQuickWindow>

#include <algorithm>

namespace cartloom
{

namespace
{

/// The picture on a square of its own height, because icons are square.
QIcon iconOf(const QImage& picture)
{
    const int side = std::max(picture.width(), picture.height());
    QPixmap square(side, side);
    square.fill(Qt::transparent);
    QPainter painter(&square);
    painter.drawImage((side - picture.width()) / 2, (side - picture.height()) / 2, picture);
    painter.end();
    return QIcon(square);
}

void setIconFrom(QQuickItem& drawing)
{
    const auto grabbed = drawing.grabToImage();
    if (!grabbed)
        return;
    auto* const window = drawing.window();
    QObject::connect(
        grabbed.data(), &QQuickItemGrabResult::ready, window,
        [window, grabbed] { window->setIcon(iconOf(grabbed->image())); }, Qt::SingleShotConnection);
}

} // namespace

void WindowIcon::drawFrom(QQuickItem* drawing)
{
    // Only what is visible can be drawn, and the first frame shall not wait for an icon.
    connect(
        drawing->window(), &QQuickWindow::frameSwapped, drawing, [drawing] { setIconFrom(*drawing); },
        Qt::SingleShotConnection);
}

} // namespace cartloom
