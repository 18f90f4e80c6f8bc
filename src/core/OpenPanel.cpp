// SPDX-License-Identifier: MIT
#include "core/OpenPanel.h"

#include "platform/Text.h"

#include <utility>

namespace cartloom
{

void OpenPanel::open(const Request& request, Confirmed confirmed)
{
    if (isOpen())
        return;
    m_request = request;
    m_confirmed = std::move(confirmed);
    Q_EMIT isOpenChanged();
}

QStringList OpenPanel::nameFilters() const
{
    if (m_request.extensions.isEmpty())
        return {};
    // Not every system ignores the case of an extension.
    QStringList patterns;
    for (const auto& extension : m_request.extensions)
        patterns << QStringLiteral("*.") + extension << QStringLiteral("*.") + extension.toUpper();
    return {QStringLiteral("%1 (%2)").arg(m_request.message, patterns.join(u' '))};
}

void OpenPanel::confirm(const QUrl& file)
{
    const auto confirmed = close();
    const auto path = toPath(file);
    if (confirmed && path)
        confirmed(*path);
}

void OpenPanel::dismiss()
{
    close();
}

OpenPanel::Confirmed OpenPanel::close()
{
    auto confirmed = std::exchange(m_confirmed, nullptr);
    if (confirmed)
        Q_EMIT isOpenChanged();
    return confirmed;
}

} // namespace cartloom
