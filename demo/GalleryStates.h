// SPDX-License-Identifier: MIT
#pragma once

#include "core/AppModel.h"

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
    /// The texts of the buttons to press then, in this order.
    QStringList presses = {};
    /// A text that must be seen before the picture is taken; none when it is empty.
    QString shows = {};
    /// In points.
    QSize window = {480, 640};
};

/// Every state of the window that is worth a look.
[[nodiscard]] std::vector<GalleryState> galleryStates();

} // namespace cartloom
