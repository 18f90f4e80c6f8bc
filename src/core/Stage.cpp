// SPDX-License-Identifier: MIT
#include "core/AppModel.h"

namespace cartloom
{

namespace
{

/// The properties of a stage that the window reads.
struct StageTraits
{
    QString title;
    bool isAtRest;
    bool showsProgress;
    bool canCancel;
};

StageTraits traitsOf(AppModel::Stage stage)
{
    using Stage = AppModel::Stage;
    switch (stage) {
    case Stage::idle:
        return {.title = {}, .isAtRest = true, .showsProgress = false, .canCancel = false};
    case Stage::gettingAres:
        return {.title = QStringLiteral("Getting Ares"),
                .isAtRest = false,
                .showsProgress = true,
                .canCancel = true};
    case Stage::gettingGame:
        return {.title = QStringLiteral("Getting the game"),
                .isAtRest = false,
                .showsProgress = true,
                .canCancel = true};
    case Stage::starting:
        return {.title = QStringLiteral("Starting"),
                .isAtRest = false,
                .showsProgress = true,
                .canCancel = false};
    case Stage::playing:
        return {.title = QStringLiteral("Playing..."),
                .isAtRest = false,
                .showsProgress = false,
                .canCancel = false};
    }
    Q_UNREACHABLE();
}

} // namespace

QString AppModel::stageTitle() const
{
    return traitsOf(stage()).title;
}

bool AppModel::atRest() const
{
    return traitsOf(stage()).isAtRest;
}

bool AppModel::showsProgress() const
{
    return traitsOf(stage()).showsProgress;
}

bool AppModel::canCancel() const
{
    return traitsOf(stage()).canCancel;
}

} // namespace cartloom
