// SPDX-License-Identifier: MIT
#include "ui/WindowIcon.h"

#include <QIcon>
#include <QPainter>
#include <QPixmap>
#include <QPointer>
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

} // namespace

void WindowIcon::drawFrom(QQuickItem* drawing)
{
    const QPointer<QQuickWindow> window = drawing->window();
    const auto grabbed = drawing->grabToImage();
    if (!grabbed)
        return;
    connect(grabbed.data(), &QQuickItemGrabResult::ready, this, [window, grabbed] {
        if (window)
            window->setIcon(iconOf(grabbed->image()));
    });
}

} // namespace cartloom
