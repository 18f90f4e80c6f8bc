// SPDX-License-Identifier: MIT
#include "platform/Appearance.h"

#include <QGuiApplication>
#include <QWindow>
#include <QtTest>

#include <xcb/xcb.h>

#include <cstdlib>
#include <memory>

using namespace cartloom;

template <typename T>
using Reply = std::unique_ptr<T, decltype(&std::free)>;

/// Runs on an X11 display.
class AppearanceFreedesktopTest : public QObject
{
    Q_OBJECT

    static xcb_connection_t* connection()
    {
        return qGuiApp->nativeInterface<QNativeInterface::QX11Application>()->connection();
    }

    static QByteArray themeVariant(const QWindow& window)
    {
        const QByteArray name = "_GTK_THEME_VARIANT";
        const auto request =
            xcb_intern_atom(connection(), 0, static_cast<uint16_t>(name.size()), name.constData());
        const Reply<xcb_intern_atom_reply_t> atom(xcb_intern_atom_reply(connection(), request, nullptr),
                                                  &std::free);
        const auto question = xcb_get_property(connection(), 0, static_cast<xcb_window_t>(window.winId()),
                                               atom->atom, XCB_GET_PROPERTY_TYPE_ANY, 0, 100);
        const Reply<xcb_get_property_reply_t> answer(xcb_get_property_reply(connection(), question, nullptr),
                                                     &std::free);
        return {static_cast<const char*>(xcb_get_property_value(answer.get())),
                xcb_get_property_value_length(answer.get())};
    }

private Q_SLOTS:
    void initTestCase() { QCOMPARE(QGuiApplication::platformName(), QStringLiteral("xcb")); }

    void everyNewWindowAsksForADarkFrame()
    {
        QWindow before;
        before.create();
        QCOMPARE(themeVariant(before), QByteArray());
        Appearance::askForDark();
        for (int i = 0; i < 2; ++i) {
            QWindow after;
            after.create();
            QCOMPARE(themeVariant(after), QByteArray("dark"));
        }
    }
};

QTEST_MAIN(AppearanceFreedesktopTest)
#include "tst_AppearanceFreedesktop.moc"
