// SPDX-License-Identifier: MIT
#include "support/FlowTest.h"

#include "core/Paths.h"
#include "platform/Text.h"
#include "support/AresBundle.h"
#include "support/ModelProbe.h"

#include <QtTest>

namespace cartloom
{

using namespace std::chrono_literals;

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
    return QTest::qWaitFor(
        [this] {
            const auto& task = ModelProbe::task(*m_model);
            return m_model->stage() == AppModel::Stage::idle && task && task->hasBegun();
        },
        30'000);
}

bool FlowTest::goesThrough(AppModel::Stage stage)
{
    const auto name = nameOf(stage);
    const auto before = m_recorder->stages().size();
    return QTest::qWaitFor([&] { return m_recorder->stages().mid(before).contains(name); }, 30'000) &&
           comesToRest();
}

bool FlowTest::comesTo(AppModel::Stage stage)
{
    return QTest::qWaitFor([this, stage] { return m_model->stage() == stage; }, 30'000);
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
