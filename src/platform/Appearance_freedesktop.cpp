// SPDX-License-Identifier: MIT
#include "platform/Appearance.h"

#include <QGuiApplication>
#include <QPlatformSurfaceEvent>
#include <QStyleHints>
#include <QWindow>

#include <xcb/xcb.h>

#include <cstdlib>
#include <memory>
#include <string_view>

namespace cartloom
{

namespace
{

constexpr std::string_view dark = "dark";

xcb_atom_t atom(xcb_connection_t* connection, std::string_view name)
{
    const auto request = xcb_intern_atom(connection, 0, static_cast<uint16_t>(name.size()), name.data());
    const std::unique_ptr<xcb_intern_atom_reply_t, decltype(&std::free)> reply(
        xcb_intern_atom_reply(connection, request, nullptr), &std::free);
    return reply ? reply->atom : xcb_atom_t(XCB_ATOM_NONE);
}

/// Window managers read the property for the windows of all toolkits.
void askForDarkFrame(xcb_connection_t* connection, const QWindow& window)
{
    xcb_change_property(connection, XCB_PROP_MODE_REPLACE, static_cast<xcb_window_t>(window.winId()),
                        atom(connection, "_GTK_THEME_VARIANT"), atom(connection, "UTF8_STRING"), 8,
                        static_cast<uint32_t>(dark.size()), dark.data());
}

/// Asks for each window before it is mapped.
class DarkFrames : public QObject
{
public:
    DarkFrames(QObject* parent, xcb_connection_t* connection)
        : QObject(parent)
        , m_connection(connection)
    {
    }

    bool eventFilter(QObject* watched, QEvent* event) override
    {
        const auto* const window = qobject_cast<QWindow*>(watched);
        if (window && window->isTopLevel() && event->type() == QEvent::PlatformSurface &&
            static_cast<QPlatformSurfaceEvent*>(event)->surfaceEventType() ==
                QPlatformSurfaceEvent::SurfaceCreated)
            askForDarkFrame(m_connection, *window);
        return false;
    }

private:
    xcb_connection_t* m_connection;
};

} // namespace

void Appearance::askForDark()
{
#if QT_VERSION >= QT_VERSION_CHECK(6, 8, 0)
    QGuiApplication::styleHints()->setColorScheme(Qt::ColorScheme::Dark);
#endif
    // The offscreen platform has the interface, too, and no X11 windows.
    if (QGuiApplication::platformName() != QLatin1String("xcb"))
        return;
    if (const auto* const x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>())
        qGuiApp->installEventFilter(new DarkFrames(qGuiApp, x11->connection()));
}

} // namespace cartloom
