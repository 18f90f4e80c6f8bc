// SPDX-License-Identifier: MIT
#pragma once

#include "core/AppModel.h"
#include "platform/SingleInstance.h"

#include <QQmlApplicationEngine>

#include <memory>

namespace cartloom
{

/// The application: the one model for the life of the process, and the one window that shows it. Of all that
/// a user starts on one storage folder, only the first has a window. Main thread.
class CartloomApp
{
public:
    /// What must be settled before the application object is made: names, the way of drawing, signals.
    static void prepare();

    /// Opens the window, or has the first one bring its own to the front. Needs the application object.
    CartloomApp();

    [[nodiscard]] bool isFirst() const { return m_instance.isFirst(); }
    [[nodiscard]] AppModel& model() { return *m_model; }
    [[nodiscard]] QQmlApplicationEngine& engine() { return m_engine; }

    /// Runs the event loop until the last window is closed; returns the exit status. Work that is still under
    /// way ends there. Returns at once where this is not the first: a failure if the first did not answer.
    int run();

private:
    [[nodiscard]] int endAsSecond() const;
    void showWindow() const;

    SingleInstance m_instance;
    std::shared_ptr<AppModel> m_model = AppModel::create();
    QQmlApplicationEngine m_engine;
};

} // namespace cartloom
