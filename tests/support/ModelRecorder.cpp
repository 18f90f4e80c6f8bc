// SPDX-License-Identifier: MIT
#include "support/ModelRecorder.h"

#include "platform/Text.h"

namespace cartloom
{

namespace
{

QString text(bool value)
{
    return value ? QStringLiteral("true") : QStringLiteral("false");
}
QString text(const QString& value)
{
    return value;
}
QString text(const std::filesystem::path& value)
{
    return toText(value);
}
QString text(const AresRelease& value)
{
    return value.tagName;
}

template <typename T>
QString text(const std::optional<T>& value)
{
    return value ? text(*value) : QStringLiteral("none");
}

QString text(AppModel::Stage stage)
{
    return nameOf(stage);
}

} // namespace

ModelRecorder::ModelRecorder(AppModel& model)
    : m_model(model)
    , m_stages(text(model.stage()))
{
    connect(&model, &AppModel::objectWillChange, this, [this] { ++m_announcements; });
    connect(&model, &AppModel::stageChanged, this, [this] {
        m_stages.append(text(m_model.stage()));
        add("stage", text(m_model.stage()));
    });
    connect(&model, &AppModel::fractionChanged, this, [this] {
        if (!m_model.fraction())
            add("fraction", QStringLiteral("none"));
    });
    connect(&model, &AppModel::detailLineChanged, this, [this] {
        if (m_model.detailLine().isEmpty())
            add("detailLine", QString());
    });
    connect(&model, &AppModel::errorMessageChanged, this,
            [this] { add("errorMessage", text(m_model.errorMessage())); });
    connect(&model, &AppModel::errorDetailsChanged, this,
            [this] { add("errorDetails", m_model.errorDetails()); });
    connect(&model, &AppModel::gameDownloadFailedChanged, this,
            [this] { add("gameDownloadFailed", text(m_model.gameDownloadFailed())); });
    connect(&model, &AppModel::noticeChanged, this, [this] { add("notice", text(m_model.notice())); });
    connect(&model, &AppModel::offerExternalChanged, this,
            [this] { add("offerExternal", text(m_model.offerExternal())); });
    connect(&model, &AppModel::updateOfferChanged, this,
            [this] { add("updateOffer", text(m_model.updateOffer())); });
    connect(&model, &AppModel::confirmResetChanged, this,
            [this] { add("confirmReset", text(m_model.confirmReset())); });
    connect(&model, &AppModel::setupDoneChanged, this,
            [this] { add("setupDone", text(m_model.setupDone())); });
    connect(&model, &AppModel::aresVersionChanged, this,
            [this] { add("aresVersion", text(m_model.aresVersion())); });
    connect(&model, &AppModel::usingExternalAresChanged, this,
            [this] { add("usingExternalAres", text(m_model.usingExternalAres())); });
    connect(&model, &AppModel::fullscreenChanged, this,
            [this] { add("fullscreen", text(m_model.fullscreen())); });
}

void ModelRecorder::add(const char* field, const QString& value)
{
    m_changes.append((QString::fromLatin1(field) + u' ' + value).trimmed());
}

} // namespace cartloom
