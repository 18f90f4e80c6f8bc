// SPDX-License-Identifier: MIT
#include "platform/Preferences.h"

#include <QSettings>

namespace cartloom::Preferences
{

bool boolean(const char* key)
{
    // A store that is a text file knows no types: what was written as one comes back as its text.
    const QVariant value = QSettings().value(QLatin1String(key));
    const bool isBoolean = value.userType() == QMetaType::Bool || value.userType() == QMetaType::QString;
    return isBoolean && value.toString() == QLatin1String("true");
}

void setBoolean(const char* key, bool value)
{
    QSettings().setValue(QLatin1String(key), value);
}

std::optional<QString> text(const char* key)
{
    const QVariant value = QSettings().value(QLatin1String(key));
    const QString text = value.userType() == QMetaType::QString ? value.toString() : QString();
    return text.isEmpty() ? std::nullopt : std::optional(text);
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
