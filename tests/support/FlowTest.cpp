// SPDX-License-Identifier: MIT
#include "support/FlowTest.h"

#include "core/Paths.h"
#include "platform/Text.h"
#include "support/AresBundle.h"
#include "support/EventLoopWait.h"
#include "support/ModelProbe.h"

#include <QTest>

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

void FlowTest::restart()
{
    m_recorder.reset();
    m_model = std::make_unique<AppModel>();
    m_recorder = std::make_unique<ModelRecorder>(*m_model);
}

bool FlowTest::comesToRest()
{
    return comesTrue([this] {
        const auto& task = ModelProbe::task(*m_model);
        return m_model->stage() == AppModel::Stage::idle && task && task->hasBegun();
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
    m_recorder.reset();
    m_model.reset();
    m_sites.reset();
    m_sandbox.reset();
}

} // namespace cartloom
