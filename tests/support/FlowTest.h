// SPDX-License-Identifier: MIT
#pragma once

#include "core/AppModel.h"
#include "support/ModelRecorder.h"
#include "support/Sandbox.h"
#include "support/ScriptedSites.h"

#include <QObject>

#include <memory>

namespace cartloom
{

/// A test of whole flows: for each case a home of its own, the two sites, and a model that is watched. The
/// emulator is the scripted child and ends at once unless the case says otherwise.
class FlowTest : public QObject
{
    Q_OBJECT

protected:
    /// One row, which gives the fault its number and name.
    static void addOnlyRow(const char* fault);

    /// Puts a bundle with the scripted child where the launcher installs it.
    static void installAres(const QByteArray& tag = "v146");
    static void saveGame();

    /// Makes a new model, as a restart of the program does.
    void restart();

    /// Whether the model is at rest again after whatever was started.
    [[nodiscard]] bool comesToRest();
    /// Whether the model, from now on, goes through a stage and then comes to rest.
    [[nodiscard]] bool goesThrough(AppModel::Stage stage);
    /// Whether the model comes to a stage and stays there long enough to be seen.
    [[nodiscard]] bool comesTo(AppModel::Stage stage);

    std::unique_ptr<Sandbox> m_sandbox;
    std::unique_ptr<ScriptedSites> m_sites;
    std::shared_ptr<AppModel> m_model;
    std::unique_ptr<ModelRecorder> m_recorder;
    /// Of the next model.
    Timeouts m_timeouts;

protected Q_SLOTS:
    void init();
    void cleanup();

private:
    /// Lets go of the model. A running flow would keep it alive into the next case.
    void endFlow();
};

} // namespace cartloom
