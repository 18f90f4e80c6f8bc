// SPDX-License-Identifier: MIT
#include "core/AppModel.h"

#include "core/PreferenceKeys.h"
#include "platform/Preferences.h"
#include "storage/Paths.h"

namespace cartloom
{

void AppModel::reset()
{
    if (!canStart())
        return;
    for (const auto& entry :
         {Paths::ares(), Paths::aresOld(), Paths::aresNew(), Paths::gameFile(), Paths::aresVersion()})
        Paths::discard(entry);
    Preferences::remove(PreferenceKeys::externalAres);
    clearMessages();
    refreshState();
    notice = QStringLiteral("Everything was deleted. The next click downloads it again.");
}

} // namespace cartloom
