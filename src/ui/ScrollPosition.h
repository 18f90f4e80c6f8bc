// SPDX-License-Identifier: MIT
#pragma once

#include <QObject>
#include <QRectF>
#include <QtQmlIntegration>

namespace cartloom
{

/// Where to scroll to. Main thread.
class ScrollPosition : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON

public:
    /// The place nearest to the present one at which a view shows an area of its content, with a margin above
    /// and below as far as there is room for it. An area without a height is nowhere: the present place is
    /// the answer.
    Q_INVOKABLE [[nodiscard]] static qreal showing(const QRectF& area, qreal margin, qreal present,
                                                   qreal viewHeight, qreal contentHeight);
};

} // namespace cartloom
