// SPDX-License-Identifier: MIT
#include "platform/Places.h"

#include <QByteArray>

#include <array>

#include <pwd.h>
#include <unistd.h>

std::filesystem::path cartloom::Places::homeFolder()
{
    std::filesystem::path configured(qgetenv("HOME").toStdString());
    if (configured.is_absolute())
        return configured;
    passwd entry = {};
    passwd* found = nullptr;
    std::array<char, 16 * 1024> texts;
    ::getpwuid_r(::getuid(), &entry, texts.data(), texts.size(), &found);
    const std::filesystem::path registered(found && found->pw_dir ? found->pw_dir : "");
    return registered.is_absolute() ? registered : "/";
}
