// SPDX-License-Identifier: MIT
#include "game/Origins.h"

/// The addresses of the servers that bench/run has started on this machine.
namespace cartloom::Origins
{

QUrl releaseApi()
{
    return QUrl(qEnvironmentVariable("BENCH_ORIGIN"));
}
QUrl store()
{
    return releaseApi();
}
QString emulatorSite()
{
    return QStringLiteral("ares-emu.net");
}

} // namespace cartloom::Origins
