// SPDX-License-Identifier: MIT
#include "core/Step.h"

namespace cartloom
{

QString phraseFor(Step step)
{
    switch (step) {
    case Step::gettingAres:
        return QStringLiteral("Getting Ares");
    case Step::gettingGame:
        return QStringLiteral("Getting the game");
    case Step::startingAres:
        return QStringLiteral("Starting Ares");
    case Step::checkingForUpdate:
        return QStringLiteral("Checking for a newer Ares");
    case Step::updatingAres:
        return QStringLiteral("Updating Ares");
    case Step::checkingROM:
        return QStringLiteral("Checking the ROM");
    case Step::addingGameFile:
        return QStringLiteral("Adding the game file");
    }
    Q_UNREACHABLE();
}

} // namespace cartloom
