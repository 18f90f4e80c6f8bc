// SPDX-License-Identifier: MIT
#include "support/FlowTest.h"

#include "platform/Text.h"
#include "storage/Paths.h"
#include "support/AresBundle.h"
#include "support/EventLoopWait.h"
#include "support/ModelProbe.h"

#include <QTest>

#include <utility>

namespace cartloom
{

void FlowTest::addOnlyRow(const char* fault)
{
    QTest::addColumn<bool>("only");
    QTest::newRow(fault) << true;
}

void FlowTest::installAres(const QByteArray& tag)
{
    writeFile(makeAresApp(Paths::ares()) / "tag", tag);
    writeFile(Paths::aresVersion(), tag);
}

void FlowTest::saveGame()
{
    writeSparse(Paths::gameFile(), bigEndianHeader, 10'000'000);
}

void FlowTest::endFlow()
{
    m_recorder.reset();
    if (const auto model = std::exchange(m_model, nullptr)) {
        model->cancel();
        const auto& task = ModelProbe::task(*model);
        if (!comesTrue([&] { return !task || !task->isRunning(); }))
            qFatal("the flow does not end");
    }
}

void FlowTest::restart()
{
    endFlow();
    m_model = AppModel::create(std::chrono::steady_clock::now, m_timeouts);
    m_recorder = std::make_unique<ModelRecorder>(*m_model);
}

bool FlowTest::comesToRest()
{
    return comesTrue([this] {
        const auto& task = ModelProbe::task(*m_model);
        return m_model->stage() == AppModel::Stage::idle && task && task->hasBegun() &&
               !m_model->hasWorkUnderWay();
    });
}

bool FlowTest::goesThrough(AppModel::Stage stage)
{
    const auto name = nameOf(stage);
    const auto before = m_recorder->stages().size();
    return comesTrue([&] { return m_recorder->stages().mid(before).contains(name); }) && comesToRest();
}

bool FlowTest::comesTo(AppModel::Stage stage)
{
    return comesTrue([this, stage] { return m_model->stage() == stage; });
}

void FlowTest::init()
{
    scriptChild({});
    m_sandbox = std::make_unique<Sandbox>();
    m_sites = std::make_unique<ScriptedSites>(m_sandbox->scratch());
    restart();
}

void FlowTest::cleanup()
{
    endFlow();
    m_timeouts = {};
    m_sites.reset();
    m_sandbox.reset();
}

} // namespace cartloom
