// SPDX-License-Identifier: MIT
#include "platform/Preferences.h"

#include <QSettings>

namespace cartloom::Preferences
{

bool boolean(const char* key)
{
    return QSettings().value(QLatin1String(key)).toBool();
}

void setBoolean(const char* key, bool value)
{
    QSettings().setValue(QLatin1String(key), value);
}

std::optional<QString> text(const char* key)
{
    const QString value = QSettings().value(QLatin1String(key)).toString();
    return value.isEmpty() ? std::nullopt : std::optional(value);
}

void setText(const char* key, const QString& value)
{
    QSettings().setValue(QLatin1String(key), value);
}

void remove(const char* key)
{
    QSettings().remove(QLatin1String(key));
}

} // namespace cartloom::Preferences
