// SPDX-License-Identifier: MIT
#pragma once

#include "core/AppModel.h"

#include <QQmlApplicationEngine>

namespace cartloom
{

/// The application: the one model for the life of the process, and the one window that shows it. Main thread.
class CartloomApp
{
public:
    /// What must be settled before the application object is made: names, the way of drawing, signals.
    static void prepare();

    /// Opens the window. Needs the application object.
    CartloomApp();

    [[nodiscard]] AppModel& model() { return m_model; }
    [[nodiscard]] QQmlApplicationEngine& engine() { return m_engine; }

    /// Runs the event loop until the last window is closed; returns the exit status. Work that is still under
    /// way ends there.
    int run();

private:
    AppModel m_model;
    QQmlApplicationEngine m_engine;
};

} // namespace cartloom
