// SPDX-License-Identifier: MIT
#include "core/CartloomApp.h"

#include "core/Paths.h"
#include "platform/Appearance.h"
#include "platform/JustInTime.h"
#include "platform/ThreadLoops.h"

#include <QFontMetrics>
#include <QGuiApplication>
#include <QNetworkProxyFactory>
#include <QQmlComponent>
#include <QQuickWindow>
#include <QSurfaceFormat>

#include <csignal>
#include <cstdlib>

namespace cartloom
{

namespace
{

/// Has Qt look for the system's fonts, which it does when the first text is measured.
void findFonts()
{
    static_cast<void>(QFontMetrics(QGuiApplication::font()).height());
}

} // namespace

void CartloomApp::prepare()
{
    QCoreApplication::setApplicationName(QStringLiteral("Cartloom"));
    QCoreApplication::setOrganizationName(QStringLiteral("Cartloom"));
    QCoreApplication::setApplicationVersion(QStringLiteral(CARTLOOM_VERSION));
    QGuiApplication::setDesktopFileName(QStringLiteral("org.cartloom.Cartloom"));
    JustInTime::forbidForPatterns();
    ThreadLoops::leaveOutGLib();
    QNetworkProxyFactory::setUseSystemConfiguration(true);
#ifdef Q_OS_LINUX
    // The scene is flat and small: without a GPU pipeline it is up sooner and takes a third of the memory.
    QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
#else
    // A GPU draws the edges of shapes smoothly only when it takes several samples a pixel.
    QSurfaceFormat format = QSurfaceFormat::defaultFormat();
    format.setSamples(4);
    QSurfaceFormat::setDefaultFormat(format);
#endif
    // The emulator inherits this, and so may write errors after this program has gone.
    std::signal(SIGPIPE, SIG_IGN);
    // Whoever started this program may have ignored its children; we want to know how ours end.
    std::signal(SIGCHLD, SIG_DFL);
}

CartloomApp::CartloomApp()
    : m_instance(Paths::support())
{
    if (!isFirst())
        return;
    Appearance::askForDark();
    QObject::connect(&m_instance, &SingleInstance::startedAgain, &m_engine, [this] { showWindow(); });
    m_engine.addImportPath(QStringLiteral("qrc:/qt/qml"));
    m_engine.setInitialProperties({{QStringLiteral("model"), QVariant::fromValue(&m_model)}});
    const QUrl window(QStringLiteral("qrc:/qt/qml/Cartloom/Main.qml"));
    // Qt reads it on a thread of its own.
    const QQmlComponent ahead(&m_engine, window, QQmlComponent::Asynchronous);
    findFonts();
    m_engine.load(window);
}

void CartloomApp::showWindow() const
{
    const auto roots = m_engine.rootObjects();
    auto* const window = roots.isEmpty() ? nullptr : qobject_cast<QQuickWindow*>(roots.first());
    if (!window)
        return;
    window->setWindowStates(window->windowStates() & ~Qt::WindowMinimized);
    window->raise();
    window->requestActivate();
}

int CartloomApp::run()
{
    if (!isFirst())
        return EXIT_SUCCESS;
    const int status = m_engine.rootObjects().isEmpty() ? EXIT_FAILURE : QGuiApplication::exec();
    // What is under way has threads that nobody waits for any more.
    if (m_model.hasWorkUnderWay())
        std::_Exit(status);
    return status;
}

} // namespace cartloom
