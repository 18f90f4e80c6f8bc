// SPDX-License-Identifier: MIT
#include "UnattendedRun.h"

#include "EmulatorWindow.h"
#include "Say.h"
#include "TitlePicture.h"
#include "platform/Text.h"
#include "storage/Paths.h"

#include <QQuickItem>
#include <QScreen>
#include <QTest>

#include <chrono>
#include <stdexcept>

using namespace std::chrono_literals;

namespace cartloom
{

namespace
{

// How long each wait may take at most.
constexpr std::chrono::milliseconds windowLimit = 30s;
constexpr std::chrono::milliseconds reactionLimit = 10s;
constexpr std::chrono::milliseconds setUpLimit = 180s;
constexpr std::chrono::milliseconds emulatorWindowLimit = 60s;
constexpr std::chrono::milliseconds closingLimit = 30s;

/// Longer than the shortest run that counts as a good one.
constexpr std::chrono::milliseconds playingTime = 5s;

/// Why a run is not a good one.
struct RunFailed : std::runtime_error
{
    explicit RunFailed(const QString& reason)
        : std::runtime_error(reason.toStdString())
    {
    }
};

template <typename Condition>
bool holdsWithin(std::chrono::milliseconds limit, Condition condition)
{
    return QTest::qWaitFor(condition, static_cast<int>(limit.count()));
}

template <typename Condition>
void require(std::chrono::milliseconds limit, const QString& failure, Condition condition)
{
    if (!holdsWithin(limit, condition))
        throw RunFailed(failure + QStringLiteral(" within %1 s").arg(limit.count() / 1000));
}

QQuickItem* itemNamed(QQuickItem* item, const QString& name)
{
    if (item->objectName() == name)
        return item;
    const auto children = item->childItems();
    for (QQuickItem* child : children) {
        if (QQuickItem* found = itemNamed(child, name))
            return found;
    }
    return nullptr;
}

QQuickWindow& windowOf(CartloomApp& cartloom)
{
    const auto roots = cartloom.engine().rootObjects();
    auto* window = roots.isEmpty() ? nullptr : qobject_cast<QQuickWindow*>(roots.first());
    if (!window)
        throw RunFailed(QStringLiteral("the launcher's window could not be made"));
    return *window;
}

} // namespace

UnattendedRun::UnattendedRun(CartloomApp& cartloom, const std::filesystem::path& pictures)
    : m_model(cartloom.model())
    , m_window(windowOf(cartloom))
    , m_recorder(m_model, m_window, pictures)
{
}

bool UnattendedRun::execute()
{
    QString failure;
    try {
        playOnce();
    } catch (const std::exception& error) {
        failure = QString::fromStdString(error.what());
    }
    say(failure.isEmpty() ? QStringLiteral("run: good") : QStringLiteral("run: failed: ") + failure);
    say(QStringLiteral("stages: ") + m_recorder.stages().join(u' '));
    return failure.isEmpty();
}

void UnattendedRun::playOnce()
{
    require(windowLimit, QStringLiteral("the launcher's window was not shown"),
            [this] { return m_window.isExposed(); });
    m_recorder.takePicture(m_recorder.stages().last());
    pressMainButton();
    waitUntilPlaying();
    playAndClose();
    m_recorder.takePicture(QStringLiteral("ended"));
    if (m_model.errorMessage())
        throw RunFailed(*m_model.errorMessage());
    if (!m_recorder.hasAllPictures())
        throw RunFailed(QStringLiteral("not every stage could be pictured"));
}

void UnattendedRun::pressMainButton()
{
    QQuickItem* const button = itemNamed(m_window.contentItem(), QStringLiteral("mainButton"));
    if (!button)
        throw RunFailed(QStringLiteral("the window has no main button"));
    const QPointF centre = button->mapToScene(QPointF(button->width() / 2, button->height() / 2));
    QTest::mouseClick(&m_window, Qt::LeftButton, {}, centre.toPoint());
    require(reactionLimit, QStringLiteral("pressing the main button did nothing"), [this] {
        return m_model.stage() != AppModel::Stage::idle || m_model.errorMessage() || m_model.offerExternal();
    });
    if (const auto& found = m_model.offerExternal())
        throw RunFailed(QStringLiteral("the launcher asks whether to use the Ares in ") + toText(*found));
}

void UnattendedRun::waitUntilPlaying()
{
    require(setUpLimit, QStringLiteral("the game was not started"), [this] {
        return m_model.stage() == AppModel::Stage::playing || m_model.stage() == AppModel::Stage::idle;
    });
    if (m_model.stage() == AppModel::Stage::idle)
        throw RunFailed(m_model.errorMessage().value_or(QStringLiteral("the game was not started")));
}

void UnattendedRun::playAndClose()
{
    const auto isOver = [this] { return m_model.stage() != AppModel::Stage::playing; };
    const QString title = toText(Paths::gameFile().stem());
    std::optional<EmulatorWindow> emulator;
    require(emulatorWindowLimit, QStringLiteral("the emulator did not open a window named ") + title, [&] {
        emulator = EmulatorWindow::find(title);
        return emulator || isOver();
    });
    if (isOver() || holdsWithin(playingTime, isOver))
        throw RunFailed(m_model.errorMessage().value_or(QStringLiteral("the emulator ended by itself")));

    m_recorder.savePicture(m_window.screen()->grabWindow(0).toImage(), m_recorder.stages().last());
    const bool gameShown = showsRobot(emulator->picture());
    if (!emulator->close())
        throw RunFailed(QStringLiteral("the window manager could not be asked to close the emulator"));
    require(closingLimit, QStringLiteral("the emulator did not end when its window was closed"), isOver);
    if (!gameShown)
        throw RunFailed(QStringLiteral("the emulator did not show the game"));
}

} // namespace cartloom
