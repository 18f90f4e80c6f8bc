// SPDX-License-Identifier: MIT
#include "platform/Appearance.h"

#include <QGuiApplication>
#include <QStyleHints>

namespace cartloom
{

void Appearance::askForDark()
{
#if QT_VERSION >= QT_VERSION_CHECK(6, 8, 0)
    QGuiApplication::styleHints()->setColorScheme(Qt::ColorScheme::Dark);
#endif
}

} // namespace cartloom
