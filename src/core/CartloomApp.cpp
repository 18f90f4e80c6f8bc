// SPDX-License-Identifier: MIT
#include "core/CartloomApp.h"

#include "platform/Appearance.h"
#include "platform/Renderer.h"
#include "platform/SessionBus.h"
#include "platform/Signals.h"
#include "storage/Paths.h"

#include <QFontMetrics>
#include <QGuiApplication>
#include <QQmlComponent>
#include <QQuickWindow>

#include <cstdio>
#include <cstdlib>

namespace cartloom
{

namespace
{

/// Forces Qt's font database to load, while Qt reads the QML files.
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
    SessionBus::leaveIfHung();
    Renderer::choose();
    Signals::prepare();
}

CartloomApp::CartloomApp()
    : m_instance(Paths::support())
{
    if (!isFirst())
        return;
    Appearance::askForDark();
    QObject::connect(&m_instance, &SingleInstance::startedAgain, &m_engine, [this] { showWindow(); });
    m_engine.addImportPath(QStringLiteral("qrc:/qt/qml"));
    m_engine.setInitialProperties({{QStringLiteral("model"), QVariant::fromValue(m_model.get())}});
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

int CartloomApp::endAsSecond() const
{
    if (m_instance.reachedFirst())
        return EXIT_SUCCESS;
    // Qt's messages may go to the system's log instead.
    std::fputs("Cartloom is already running and does not answer.\n", stderr);
    return EXIT_FAILURE;
}

int CartloomApp::run()
{
    if (!isFirst())
        return endAsSecond();
    const int status = m_engine.rootObjects().isEmpty() ? EXIT_FAILURE : QGuiApplication::exec();
    // Worker threads may still run; nothing waits for them.
    if (m_model->hasWorkUnderWay())
        std::_Exit(status);
    return status;
}

} // namespace cartloom
