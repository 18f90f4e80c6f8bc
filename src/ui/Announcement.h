// SPDX-License-Identifier: MIT
#pragma once

#include <QQuickItem>
#include <QtQmlIntegration>

namespace cartloom
{

/// Stands for a text that assistive technology shall speak. A screen reader speaks what appears, so that each
/// new text appears anew. Nothing is drawn. Main thread.
class Announcement : public QQuickItem
{
    Q_OBJECT
    QML_ELEMENT

    /// What is spoken when it changes; nothing while it is empty.
    Q_PROPERTY(QString text READ text WRITE setText NOTIFY textChanged)

public:
    explicit Announcement(QQuickItem* parent = nullptr);

    [[nodiscard]] const QString& text() const { return m_text; }
    void setText(const QString& text);

Q_SIGNALS:
    void textChanged();

private:
    QString m_text;
};

} // namespace cartloom
