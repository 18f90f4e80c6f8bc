// SPDX-License-Identifier: MIT
#include "platform/Preferences.h"

#include <QSettings>
#include <QStringList>

namespace cartloom::Preferences
{

bool boolean(const char* key)
{
    // A store that is a text file knows no types: what was written as one comes back as its text.
    const QVariant value = QSettings().value(QLatin1String(key));
    if (value.userType() == QMetaType::QString)
        return QStringList{QStringLiteral("true"), QStringLiteral("yes"), QStringLiteral("1")}.contains(
            value.toString(), Qt::CaseInsensitive);
    return value.typeId() != QMetaType::QStringList && value.toDouble() != 0;
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
