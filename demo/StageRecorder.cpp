// SPDX-License-Identifier: MIT
#include "StageRecorder.h"

#include "Say.h"
#include "platform/Text.h"

#include <QMetaEnum>

#include <algorithm>

namespace cartloom
{

namespace
{

/// When a download's picture is taken.
constexpr double middle = 0.5;

} // namespace

StageRecorder::StageRecorder(AppModel& model, QQuickWindow& window, std::filesystem::path pictures)
    : m_model(model)
    , m_window(window)
    , m_pictures(std::move(pictures))
    , m_stages(nameOf(model.stage()))
{
    std::filesystem::create_directories(m_pictures);
    const auto stages = QMetaEnum::fromType<AppModel::Stage>();
    for (int i = 0; i < stages.keyCount(); ++i)
        std::filesystem::remove(pictureFile(QString::fromLatin1(stages.key(i))));
    // The window's own bindings were connected before these, so it shows already what is announced here.
    connect(&model, &AppModel::detailLineChanged, this, &StageRecorder::detailChanged);
    connect(&model, &AppModel::stageChanged, this, &StageRecorder::stageChanged);
    connect(&model, &AppModel::objectWillChange, this, &StageRecorder::beforeChange);
}

std::filesystem::path StageRecorder::pictureFile(const QString& name) const
{
    return m_pictures / toPath(name + QStringLiteral(".png"));
}

void StageRecorder::takePicture(const QString& name) const
{
    savePicture(m_window.grabWindow(), name);
}

void StageRecorder::savePicture(const QImage& picture, const QString& name) const
{
    if (!picture.save(toText(pictureFile(name))))
        say(QStringLiteral("no picture of ") + name);
}

bool StageRecorder::hasAllPictures() const
{
    return std::ranges::all_of(
        m_stages, [this](const QString& stage) { return std::filesystem::exists(pictureFile(stage)); });
}

void StageRecorder::detailChanged()
{
    if (!m_model.detailLine().isEmpty())
        m_detail = m_model.detailLine();
    if (!m_pictureTaken && m_model.canCancel() && m_model.fraction().value_or(0) >= middle) {
        takePicture(m_stages.last());
        m_pictureTaken = true;
    }
}

void StageRecorder::beforeChange()
{
    // This stage passes within one turn of the event loop. The last picture of it is the one that stays.
    if (m_model.stage() == AppModel::Stage::starting)
        takePicture(m_stages.last());
}

void StageRecorder::stageChanged()
{
    const QString& ended = m_stages.last();
    say(QStringLiteral("stage ") + ended +
        (m_detail.isEmpty() ? QString() : QStringLiteral(": ") + m_detail));
    m_detail.clear();
    m_pictureTaken = false;
    m_stages.append(nameOf(m_model.stage()));
}

} // namespace cartloom
