// SPDX-License-Identifier: MIT
#include "platform/ThreadLoops.h"

#include <QByteArray>

namespace cartloom::ThreadLoops
{

namespace
{

constexpr auto variable = "QT_NO_THREADED_GLIB";
bool isOurs = false;

} // namespace

void leaveOutGLib()
{
    if (qEnvironmentVariableIsSet(variable))
        return;
    qputenv(variable, "1");
    isOurs = true;
}

bool hasSet(std::string_view candidate)
{
    return isOurs && candidate.substr(0, candidate.find('=')) == variable;
}

} // namespace cartloom::ThreadLoops
