// SPDX-License-Identifier: MIT
#include "platform/JustInTime.h"

#include <QRegularExpression>

namespace cartloom
{

void JustInTime::forbidForPatterns()
{
    constexpr auto variable = "QT_ENABLE_REGEXP_JIT";
    const bool wasSet = qEnvironmentVariableIsSet(variable);
    const QByteArray before = qgetenv(variable);
    qputenv(variable, "0");
    // The variable is read once, when a pattern is first made ready.
    QRegularExpression(QStringLiteral(".")).optimize();
    // Programs that are started from here are to have it as we had it.
    if (wasSet)
        qputenv(variable, before);
    else
        qunsetenv(variable);
}

} // namespace cartloom
