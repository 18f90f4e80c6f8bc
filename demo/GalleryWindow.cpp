// SPDX-License-Identifier: MIT
#include "GalleryWindow.h"

#include <QCoreApplication>
#include <QDragEnterEvent>
#include <QMimeData>
#include <QQuickItem>
#include <QTest>
#include <QUrl>

#include <chrono>
#include <stdexcept>
#include <utility>

using namespace std::chrono_literals;

namespace cartloom
{

namespace
{

/// How long each wait may take at most.
constexpr std::chrono::milliseconds limit = 10s;

/// By its text, or by the first line of it.
QQuickItem* itemSaying(QQuickItem* item, const QString& text)
{
    if (!item->isVisible())
        return nullptr;
    const QString said = item->property("text").toString();
    if (item->width() > 0 && (said == text || said.section(u'\n', 0, 0) == text))
        return item;
    const auto children = item->childItems();
    for (QQuickItem* child : children) {
        if (QQuickItem* found = itemSaying(child, text))
            return found;
    }
    return nullptr;
}

} // namespace

void GalleryWindow::require(const QString& failure, const std::function<bool()>& condition)
{
    if (!QTest::qWaitFor(condition, static_cast<int>(limit.count())))
        throw std::runtime_error(failure.toStdString());
}

void GalleryWindow::requireShown(const QQuickWindow& window, const QString& text)
{
    require(QStringLiteral("the window does not show \"%1\"").arg(text.section(u'\n', 0, 0)),
            [&] { return itemSaying(window.contentItem(), text) != nullptr; });
}

void GalleryWindow::press(const QQuickWindow& window, const QString& text)
{
    requireShown(window, text);
    if (!QMetaObject::invokeMethod(itemSaying(window.contentItem(), text), "clicked"))
        throw std::runtime_error("\"" + text.toStdString() + "\" cannot be pressed");
}

QPoint GalleryWindow::pointAt(QQuickWindow& window, const QString& text)
{
    requireShown(window, text);
    // A rendered frame has its final layout.
    static_cast<void>(settledPicture(window, false));
    const QQuickItem* const item = itemSaying(window.contentItem(), text);
    const QPoint middle = item->mapToScene({item->width() / 2, item->height() / 2}).toPoint();
    // Qt passes over a move to where the pointer was in the window before.
    QTest::mouseMove(&window, {1, 1});
    QTest::mouseMove(&window, middle);
    return middle;
}

void GalleryWindow::hold(QQuickWindow& window, const QString& text)
{
    QTest::mousePress(&window, Qt::LeftButton, {}, pointAt(window, text));
}

void GalleryWindow::tab(QQuickWindow& window, int times)
{
    window.requestActivate();
    require(QStringLiteral("the window does not get the keyboard"), [&] { return window.isActive(); });
    for (int i = 0; i < times; ++i)
        QTest::keyClick(&window, Qt::Key_Tab);
}

void GalleryWindow::scrollToEnd(QQuickWindow& window, const QString& text)
{
    requireShown(window, text);
    QQuickItem* view = itemSaying(window.contentItem(), text);
    if (auto* const own = view->property("view").value<QQuickItem*>())
        view = own;
    while (view && !view->inherits("QQuickFlickable"))
        view = view->parentItem();
    if (!view)
        throw std::runtime_error("\"" + text.toStdString() + "\" does not scroll");
    require(QStringLiteral("the end is not reached"), [&] {
        const qreal below = view->property("contentHeight").toReal() - view->height();
        view->setProperty("contentY", below);
        // A rendered frame has its final layout, which may be longer.
        return !window.grabWindow().isNull() && below > 0 &&
               below == view->property("contentHeight").toReal() - view->height();
    });
}

void GalleryWindow::letBarTravel(QQuickWindow& window)
{
    const auto* const piece = window.findChild<QQuickItem*>(QStringLiteral("progressTraveller"));
    require(QStringLiteral("the bar does not move"), [&] {
        // Drawing is what moves it.
        return !window.grabWindow().isNull() && piece && piece->x() > piece->width();
    });
}

void GalleryWindow::dragFileOver(QQuickWindow& window)
{
    QMimeData file;
    file.setUrls({QUrl(QStringLiteral("file:///home/anna/Quillet64.z64"))});
    const QPoint middle(window.width() / 2, window.height() / 2);
    QDragEnterEvent enter(middle, Qt::CopyAction, &file, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(&window, &enter);
    if (!enter.isAccepted())
        throw std::runtime_error("the window does not take the file");
}

QImage GalleryWindow::settledPicture(QQuickWindow& window, bool moves)
{
    QImage picture;
    require(QStringLiteral("the window does not come to rest"), [&] {
        const QImage before = std::exchange(picture, window.grabWindow());
        return !picture.isNull() && (moves || before == picture);
    });
    return picture;
}

} // namespace cartloom
