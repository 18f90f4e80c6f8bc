// SPDX-License-Identifier: MIT
#include "platform/Signals.h"

#include <csignal>

void cartloom::Signals::prepare()
{
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    std::signal(SIGCHLD, SIG_DFL);
}
