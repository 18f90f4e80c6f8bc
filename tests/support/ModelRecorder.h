// SPDX-License-Identifier: MIT
#pragma once

#include "core/AppModel.h"

#include <QStringList>

namespace cartloom
{

/// Writes down every change of a model's published fields, in order: "stage playing", "notice none". What a
/// download reports of its progress is left out, because how often it does is the network's business.
class ModelRecorder : public QObject
{
    Q_OBJECT

public:
    explicit ModelRecorder(AppModel& model);

    [[nodiscard]] const QStringList& changes() const { return m_changes; }
    /// The stages alone, from the one at the beginning.
    [[nodiscard]] const QStringList& stages() const { return m_stages; }
    /// How many writes were announced before they were made.
    [[nodiscard]] int announcements() const { return m_announcements; }
    void clear() { m_changes.clear(); }

private:
    void add(const char* field, const QString& value);

    AppModel& m_model;
    QStringList m_changes;
    QStringList m_stages;
    int m_announcements = 0;
};

} // namespace cartloom
