// SPDX-License-Identifier: MIT
#pragma once

#include "core/AppModel.h"

#include <QObject>
#include <QQuickWindow>
#include <QStringList>

#include <filesystem>

namespace cartloom
{

/// Writes down which stages a model goes through, prints each as it ends, and takes pictures of those that
/// come and go by themselves. Main thread; the model and its window must outlive it.
class StageRecorder : public QObject
{
    Q_OBJECT

public:
    /// The picture folder is made if need be, and the pictures of an earlier run are removed from it; throws
    /// std::filesystem::filesystem_error when that is not possible.
    StageRecorder(AppModel& model, QQuickWindow& window, std::filesystem::path pictures);

    /// The names of the stages so far, the first and the present one included.
    [[nodiscard]] const QStringList& stages() const { return m_stages; }

    /// Saves a picture of the window, or another one, under a name. What could not be saved is missing
    /// afterwards.
    void takePicture(const QString& name) const;
    void savePicture(const QImage& picture, const QString& name) const;

    /// Whether the picture of each stage so far has been saved.
    [[nodiscard]] bool hasAllPictures() const;

private:
    void detailChanged();
    void stageChanged();
    void beforeChange();
    [[nodiscard]] std::filesystem::path pictureFile(const QString& name) const;

    AppModel& m_model;
    QQuickWindow& m_window;
    const std::filesystem::path m_pictures;
    QStringList m_stages;
    /// What the present stage has told about itself last.
    QString m_detail;
    bool m_pictureTaken = false;
};

} // namespace cartloom
