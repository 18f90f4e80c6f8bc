// SPDX-License-Identifier: MIT
#include "emulator/AresInstaller.h"

#include <QCoreApplication>
#include <QCoroTask>

#include <cstdio>
#include <cstdlib>

namespace
{

QCoro::Task<void> install()
{
    const auto release = co_await cartloom::AresInstaller::fetchLatest({});
    const auto app = co_await cartloom::AresInstaller::install(release, [](qint64, qint64) {}, {});
    std::printf("%s\n", app.c_str());
}

} // namespace

/// wired-install: looks up, downloads and installs the emulator as the launcher does.
int main(int argc, char* argv[])
{
    try {
        const QCoreApplication application(argc, argv);
        QCoro::waitFor(install());
        return EXIT_SUCCESS;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "wired-install: %s\n", error.what());
        return EXIT_FAILURE;
    }
}
