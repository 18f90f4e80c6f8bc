// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

namespace cartloom
{

/// The operations that can fail in front of the player.
enum class Step {
    gettingAres,
    gettingGame,
    startingAres,
    checkingForUpdate,
    updatingAres,
    checkingROM,
    addingGameFile,
};

/// The phrase that names the step in an error message.
[[nodiscard]] QString phraseFor(Step step);

} // namespace cartloom
