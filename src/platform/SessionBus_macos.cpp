// SPDX-License-Identifier: MIT
#include "platform/SessionBus.h"

namespace cartloom
{

// There is no such bus.
void SessionBus::leaveIfHung() {}

std::vector<std::string> SessionBus::inheritedSettings()
{
    return {};
}

} // namespace cartloom
