// SPDX-License-Identifier: MIT
#include "core/AppModel.h"

#include "core/Paths.h"
#include "core/PreferenceKeys.h"
#include "platform/Preferences.h"

namespace cartloom
{

void AppModel::reset()
{
    if (!isAtRest())
        return;
    for (const auto& entry :
         {Paths::ares(), Paths::aresOld(), Paths::aresNew(), Paths::gameFile(), Paths::aresVersion()})
        Paths::discard(entry);
    Preferences::remove(PreferenceKeys::externalAres);
    clearMessages();
    refreshState();
    m_notice = QStringLiteral("Everything was deleted. The next click downloads it again.");
}

} // namespace cartloom
