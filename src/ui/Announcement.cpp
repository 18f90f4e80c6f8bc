// SPDX-License-Identifier: MIT
#include "ui/Announcement.h"

namespace cartloom
{

Announcement::Announcement(QQuickItem* parent)
    : QQuickItem(parent)
{
    // Without a size, it would count as not to be seen.
    setSize({1, 1});
    setVisible(false);
}

void Announcement::setText(const QString& text)
{
    if (text == m_text)
        return;
    m_text = text;
    // What is told of the item follows the text before the item appears.
    Q_EMIT textChanged();
    setVisible(false);
    setVisible(!m_text.isEmpty());
}

} // namespace cartloom
