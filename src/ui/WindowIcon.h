// SPDX-License-Identifier: MIT
#pragma once

#include <QObject>
#include <QQuickItem>
#include <QtQmlIntegration>

namespace cartloom
{

/// Gives a window its icon. Main thread.
class WindowIcon : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON

public:
    /// Makes a picture of an item the icon of the window that the item is in, once that has been drawn.
    Q_INVOKABLE void drawFrom(QQuickItem* drawing);
};

} // namespace cartloom
