// SPDX-License-Identifier: MIT
#pragma once

#include <QMetaType>
#include <QStringList>

namespace cartloom
{

/// The contents that a loss of power may leave of a file whose bytes were not flushed.
enum class Remains { nothing, zeros, half };

/// Makes of the files that these calls have changed and not flushed what remains of them. The calls are those
/// that an interrupter has counted, all of them done.
void loseUnflushed(const QStringList& calls, Remains remains);

} // namespace cartloom

Q_DECLARE_METATYPE(cartloom::Remains)
