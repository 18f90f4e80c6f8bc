// SPDX-License-Identifier: MIT
#pragma once

#include "core/AppModel.h"

#include <QQuickWindow>
#include <QSize>
#include <QString>

#include <functional>
#include <vector>

namespace cartloom
{

/// One picture of the gallery.
struct GalleryState
{
    /// The picture's file name, without its ending.
    QString name;
    /// Puts a model that has just been made into the state.
    std::function<void(AppModel&)> put;
    /// A text that must be seen; none when it is empty.
    QString shows = {};
    /// What is then done with the window; nothing when it is empty.
    std::function<void(QQuickWindow&)> act = {};
    /// In points.
    QSize window = {480, 640};
    /// How much larger than usual the player wants all texts.
    qreal textScale = 1;
};

/// Every state of the window that is worth a look.
[[nodiscard]] std::vector<GalleryState> galleryStates();

} // namespace cartloom
