// SPDX-License-Identifier: MIT
#pragma once

#include <QImage>
#include <QQuickWindow>
#include <QString>

#include <functional>

/// What the gallery does with a window. Each of these waits for what it needs, and throws std::runtime_error
/// where that does not come. Main thread.
namespace cartloom::GalleryWindow
{

/// Runs the event loop until something is true.
void require(const QString& failure, const std::function<bool()>& condition);
/// Waits until an element that can be seen has the text.
void requireShown(const QQuickWindow& window, const QString& text);

/// Presses the button with the text, also where it lies below the edge of a small window.
void press(const QQuickWindow& window, const QString& text);
/// Moves the pointer to the element with the text; returns where it is.
QPoint pointAt(QQuickWindow& window, const QString& text);
/// Holds the mouse button down on the element with the text.
void hold(QQuickWindow& window, const QString& text);
/// Presses Tab so many times.
void tab(QQuickWindow& window, int times);
/// Scrolls to the end of what the element with the text shows or lies in.
void scrollToEnd(QQuickWindow& window, const QString& text);
/// Waits until the piece of the indeterminate bar is well under way.
void letBarTravel(QQuickWindow& window);
/// Holds a file over the window, as a drag from a file browser does.
void dragFileOver(QQuickWindow& window);

/// The window as it stays: twice the same picture, a frame apart. Only what moves never comes to rest.
[[nodiscard]] QImage settledPicture(QQuickWindow& window, bool moves);

} // namespace cartloom::GalleryWindow
