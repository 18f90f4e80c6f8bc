// SPDX-License-Identifier: MIT
#include "GalleryStates.h"
#include "Say.h"
#include "core/CartloomApp.h"
#include "support/Sandbox.h"

#include <QDir>
#include <QGuiApplication>
#include <QQuickItem>
#include <QQuickWindow>
#include <QTest>

#include <chrono>
#include <cstdlib>
#include <stdexcept>
#include <utility>

using namespace std::chrono_literals;

namespace cartloom
{

namespace
{

/// How long each wait may take at most.
constexpr std::chrono::milliseconds limit = 10s;

template <typename Condition>
void require(const QString& failure, Condition condition)
{
    if (!QTest::qWaitFor(condition, static_cast<int>(limit.count())))
        throw std::runtime_error(failure.toStdString());
}

QQuickItem* itemSaying(QQuickItem* item, const QString& text)
{
    if (!item->isVisible())
        return nullptr;
    if (item->width() > 0 && item->property("text").toString() == text)
        return item;
    const auto children = item->childItems();
    for (QQuickItem* child : children) {
        if (QQuickItem* found = itemSaying(child, text))
            return found;
    }
    return nullptr;
}

QQuickWindow& windowOf(CartloomApp& cartloom)
{
    const auto roots = cartloom.engine().rootObjects();
    auto* window = roots.isEmpty() ? nullptr : qobject_cast<QQuickWindow*>(roots.first());
    if (!window)
        throw std::runtime_error("the launcher's window could not be made");
    return *window;
}

void requireShown(const QQuickWindow& window, const QString& text)
{
    require(QStringLiteral("the window does not show \"%1\"").arg(text.section(u'\n', 0, 0)),
            [&] { return itemSaying(window.contentItem(), text) != nullptr; });
}

/// An element below the edge of a small window is reached without the mouse.
void press(QQuickWindow& window, const QString& text)
{
    requireShown(window, text);
    QQuickItem* const item = itemSaying(window.contentItem(), text);
    if (!QMetaObject::invokeMethod(item, "clicked"))
        throw std::runtime_error("\"" + text.toStdString() + "\" cannot be pressed");
}

/// The window as it stays: twice the same picture, a frame apart. Only a bar that moves never comes to rest.
QImage settledPicture(QQuickWindow& window, bool moves)
{
    QImage picture;
    require(QStringLiteral("the window does not come to rest"), [&] {
        const QImage before = std::exchange(picture, window.grabWindow());
        return !picture.isNull() && (moves || before == picture);
    });
    return picture;
}

void takePicture(const GalleryState& state, const QDir& folder)
{
    const Sandbox sandbox;
    CartloomApp cartloom;
    QQuickWindow& window = windowOf(cartloom);
    window.resize(state.window);
    require(QStringLiteral("the window was not shown"), [&] { return window.isExposed(); });
    require(QStringLiteral("the window did not get its size"), [&] { return window.size() == state.window; });
    state.put(cartloom.model());
    for (const QString& text : state.presses)
        press(window, text);
    if (!state.shows.isEmpty())
        requireShown(window, state.shows);
    const auto& model = cartloom.model();
    const QImage picture = settledPicture(window, model.canCancel() && !model.fraction());
    const QString file = folder.filePath(state.name + QStringLiteral(".png"));
    if (!picture.save(file))
        throw std::runtime_error("cannot write " + file.toStdString());
    say(file);
}

bool takeAll(const QDir& folder)
{
    bool complete = folder.mkpath(QStringLiteral("."));
    for (const GalleryState& state : galleryStates()) {
        QFile::remove(folder.filePath(state.name + QStringLiteral(".png")));
        try {
            takePicture(state, folder);
        } catch (const std::exception& error) {
            std::fprintf(stderr, "no picture %s: %s\n", qPrintable(state.name), error.what());
            complete = false;
        }
    }
    return complete;
}

} // namespace

} // namespace cartloom

/// cartloom-gallery FOLDER: writes a picture of the window in each of its states.
int main(int argc, char* argv[])
{
    cartloom::CartloomApp::prepare();
    const QGuiApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() != 2) {
        std::fputs("usage: cartloom-gallery FOLDER\n", stderr);
        return EXIT_FAILURE;
    }
    return cartloom::takeAll(QDir(arguments[1])) ? EXIT_SUCCESS : EXIT_FAILURE;
}
