// SPDX-License-Identifier: MIT
#include "game/Origins.h"

namespace cartloom::Origins
{

QUrl releaseApi()
{
    return QUrl(QStringLiteral(CARTLOOM_API_ORIGIN));
}

QUrl store()
{
    return QUrl(QStringLiteral(CARTLOOM_STORE_ORIGIN));
}

QString emulatorSite()
{
    return QStringLiteral(CARTLOOM_EMULATOR_SITE);
}

} // namespace cartloom::Origins
