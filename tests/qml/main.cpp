// SPDX-License-Identifier: MIT
#include "PageProbe.h"

#include <QQmlContext>
#include <QQmlEngine>
#include <QQuickWindow>
#include <QtQuickTest>

/// Gives each test file the page's types and the probe.
class PageSetup : public QObject
{
    Q_OBJECT

public Q_SLOTS:
    void applicationAvailable()
    {
        // No file manager of the machine's shall answer.
        qputenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nowhere");
        QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
        m_probe.emplace();
    }

    void qmlEngineAvailable(QQmlEngine* engine)
    {
        engine->addImportPath(QStringLiteral("qrc:/qt/qml"));
        engine->rootContext()->setContextProperty(QStringLiteral("probe"), &*m_probe);
    }

    void cleanupTestCase() { m_probe.reset(); }

private:
    std::optional<cartloom::PageProbe> m_probe;
};

QUICK_TEST_MAIN_WITH_SETUP(Window, PageSetup)
#include "main.moc"
