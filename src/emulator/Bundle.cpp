// SPDX-License-Identifier: MIT
#include "emulator/Bundle.h"

#include "platform/Files.h"
#include "platform/PropertyList.h"
#include "platform/Text.h"

namespace cartloom::Bundle
{

namespace
{

/// What could lead out of the folder is no name; nor is what the system would read to its middle only.
bool isFileName(const QString& name)
{
    return !name.contains(u'/') && !name.contains(QLatin1String("..")) && !name.contains(QChar::Null);
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
