// SPDX-License-Identifier: MIT
// windowchild ORIGIN play|check|show: the launcher with its window, which asks this origin for everything and
// begins at once to play or to check for an update. Writes "shown" when its window has been drawn. Closes its
// window when it reads a line.
#include "core/CartloomApp.h"
#include "support/TestOrigins.h"

#include <QGuiApplication>
#include <QQuickWindow>
#include <QSocketNotifier>
#include <QWindow>

#include <cstdio>
#include <cstdlib>

#include <unistd.h>

int main(int argc, char* argv[])
{
    cartloom::CartloomApp::prepare();
    QGuiApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() != 3)
        return EXIT_FAILURE;
    const QUrl origin(arguments[1]);
    cartloom::TestOrigins::setReleaseApi(origin);
    cartloom::TestOrigins::setStore(origin);

    cartloom::CartloomApp cartloom;
    if (arguments[2] == QLatin1String("check"))
        cartloom.model().checkForUpdate();
    else if (arguments[2] == QLatin1String("play"))
        cartloom.model().play();

    for (QObject* const root : cartloom.engine().rootObjects()) {
        QObject::connect(
            qobject_cast<QQuickWindow*>(root), &QQuickWindow::frameSwapped, root,
            [] {
                std::puts("shown");
                std::fflush(stdout);
            },
            Qt::ConnectionType(Qt::QueuedConnection | Qt::SingleShotConnection));
    }

    QSocketNotifier line(STDIN_FILENO, QSocketNotifier::Read);
    QObject::connect(&line, &QSocketNotifier::activated, &line, [&line] {
        line.setEnabled(false);
        for (QWindow* const window : QGuiApplication::topLevelWindows())
            window->close();
    });
    return cartloom.run();
}
