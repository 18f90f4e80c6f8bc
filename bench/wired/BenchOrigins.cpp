// SPDX-License-Identifier: MIT
#include "emulator/SearchedFolders.h"
#include "network/Origins.h"

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
std::string certificateAuthorities()
{
    return qEnvironmentVariable("BENCH_CERTIFICATE").toStdString();
}

} // namespace cartloom::Origins

/// No copy of the emulator that is installed on this machine changes what is measured.
std::vector<std::filesystem::path> cartloom::AresInstaller::searchedFolders()
{
    return {};
}
