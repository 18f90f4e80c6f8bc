// SPDX-License-Identifier: MIT
#include "StandInSites.h"

#include <QCoreApplication>
#include <QStringList>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>

namespace
{

std::filesystem::path path(const QString& argument)
{
    return argument.toStdString();
}

int serveUntilToldToStop(const QStringList& arguments)
{
    // Blocked before there are other threads, so that the signal comes to sigwait and to nobody else.
    sigset_t ends;
    sigemptyset(&ends);
    sigaddset(&ends, SIGINT);
    sigaddset(&ends, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &ends, nullptr);

    cartloom::StandInSites::Content content{path(arguments[2]), path(arguments[3])};
    content.port = arguments[1].toInt();
    const cartloom::StandInSites sites(std::move(content));
    std::printf("%s\n", qPrintable(sites.origin().toString()));
    std::fflush(stdout);
    int signal = 0;
    sigwait(&ends, &signal);
    std::printf("requests: %d\n", sites.requests());
    return EXIT_SUCCESS;
}

} // namespace

/// cartloom-sites PORT ZIP ROM: the stand-in for the two web sites, until it is told to stop.
int main(int argc, char* argv[])
{
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() != 4) {
        std::fputs("usage: cartloom-sites PORT ZIP ROM\n", stderr);
        return EXIT_FAILURE;
    }
    try {
        return serveUntilToldToStop(arguments);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "cartloom-sites: %s\n", error.what());
        return EXIT_FAILURE;
    }
}
