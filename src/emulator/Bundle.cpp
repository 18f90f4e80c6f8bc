// SPDX-License-Identifier: MIT
#include "emulator/Bundle.h"

#include "platform/Files.h"
#include "platform/PropertyList.h"
#include "platform/Text.h"

namespace cartloom::Bundle
{

namespace
{

/// A name with a separator would lead out of the bundle.
bool isFileName(const QString& name)
{
    return !name.contains(u'/') && name != QLatin1String("..") && name != QLatin1String(".");
}

} // namespace

std::optional<std::filesystem::path> executable(const std::filesystem::path& app)
{
    const auto named = PropertyList::text(app / "Contents/Info.plist", "CFBundleExecutable");
    const QString name = named && !named->isEmpty() ? *named : QStringLiteral("ares");
    const auto candidate = app / "Contents/MacOS" / toPath(name);
    return isFileName(name) && Files::isExecutable(candidate) ? std::optional(candidate) : std::nullopt;
}

} // namespace cartloom::Bundle
