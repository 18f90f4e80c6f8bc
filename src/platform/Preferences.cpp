// SPDX-License-Identifier: MIT
#include "platform/Preferences.h"

#include "platform/PreferenceStore.h"
#include "platform/Text.h"

#include <QStringList>

namespace cartloom::Preferences
{

namespace
{

QVariant value(const char* key)
{
    const auto store = PreferenceStore::open(PreferenceStore::Access::reading);
    return store.settings ? store.settings->value(QLatin1String(key)) : QVariant();
}

void setValue(const char* key, const QVariant& value)
{
    const auto store = PreferenceStore::open(PreferenceStore::Access::writing);
    if (store.settings)
        store.settings->setValue(QLatin1String(key), value);
}

/// A text as the store takes it: the bytes of a path that is not UTF-8.
QVariant stored(const QString& text)
{
    const auto bytes = QByteArray::fromStdString(toPath(text).native());
    return decodeUtf8(bytes) ? QVariant(text) : QVariant(bytes);
}

/// The text that a value of the store stands for.
QString textOf(const QVariant& value)
{
    if (value.userType() == QMetaType::QByteArray && !decodeUtf8(value.toByteArray()))
        return toText(value.toByteArray().toStdString());
    return value.userType() == QMetaType::QString ? value.toString() : QString();
}

} // namespace

bool boolean(const char* key)
{
    // A store that is a text file knows no types: what was written as one comes back as its text.
    const QVariant stored = value(key);
    if (stored.userType() == QMetaType::QString)
        return QStringList{QStringLiteral("true"), QStringLiteral("yes"), QStringLiteral("1")}.contains(
            stored.toString(), Qt::CaseInsensitive);
    return stored.typeId() != QMetaType::QStringList && stored.toDouble() != 0;
}

void setBoolean(const char* key, bool value)
{
    setValue(key, value);
}

std::optional<QString> text(const char* key)
{
    const QString text = textOf(value(key));
    return text.isEmpty() ? std::nullopt : std::optional(text);
}

void setText(const char* key, const QString& value)
{
    setValue(key, stored(value));
}

void remove(const char* key)
{
    const auto store = PreferenceStore::open(PreferenceStore::Access::writing);
    if (store.settings)
        store.settings->remove(QLatin1String(key));
}

} // namespace cartloom::Preferences
