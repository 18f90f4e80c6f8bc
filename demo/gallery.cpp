// SPDX-License-Identifier: MIT
#include "DemoHome.h"
#include "GalleryStates.h"
#include "GalleryWindow.h"
#include "Say.h"
#include "core/CartloomApp.h"
#include "platform/Text.h"

#include <QCursor>
#include <QDir>
#include <QFont>
#include <QGuiApplication>
#include <QQuickWindow>
#include <QScreen>
#include <QTemporaryDir>

#include <cstdlib>
#include <stdexcept>

namespace cartloom
{

namespace
{

using namespace GalleryWindow;

QQuickWindow& windowOf(CartloomApp& cartloom)
{
    const auto roots = cartloom.engine().rootObjects();
    auto* window = roots.isEmpty() ? nullptr : qobject_cast<QQuickWindow*>(roots.first());
    if (!window)
        throw std::runtime_error("the launcher's window could not be made");
    return *window;
}

/// Larger texts come with a larger font of the desktop. 11 points are usual on Linux, where the gallery runs.
void setTextScale(qreal scale)
{
    QFont font = QGuiApplication::font();
    font.setPointSizeF(11 * scale);
    QGuiApplication::setFont(font);
}

void takePicture(const GalleryState& state, const QDir& folder)
{
    const QTemporaryDir home;
    liveIn(toPath(home.path()));
    setTextScale(state.textScale);
    CartloomApp cartloom;
    QQuickWindow& window = windowOf(cartloom);
    window.resize(state.window);
    require(QStringLiteral("the window was not shown"), [&] { return window.isExposed(); });
    require(QStringLiteral("the window did not get its size"), [&] { return window.size() == state.window; });
    state.put(cartloom.model());
    if (!state.shows.isEmpty())
        requireShown(window, state.shows);
    if (state.act)
        state.act(window);
    const auto& model = cartloom.model();
    const bool moves = model.stage() == AppModel::Stage::starting || model.canCancel();
    const QImage picture = settledPicture(window, moves && !model.fraction());
    const QString file = folder.filePath(state.name + QStringLiteral(".png"));
    if (!picture.save(file))
        throw std::runtime_error("cannot write " + file.toStdString());
    say(file);
}

bool takeAll(const QDir& folder)
{
    // The middle of the screen is where the main button appears, which would be hovered.
    QCursor::setPos(QGuiApplication::primaryScreen()->geometry().bottomRight());
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
