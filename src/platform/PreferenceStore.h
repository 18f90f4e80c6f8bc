// SPDX-License-Identifier: MIT
#pragma once

#include "platform/FileDescriptor.h"

#include <QSettings>

#include <memory>

namespace cartloom
{

/// The user's preference store, opened. Part of Preferences.
struct PreferenceStore
{
    enum class Access { reading, writing };

    /// Opens the store without waiting for anyone.
    [[nodiscard]] static PreferenceStore open(Access access);

    /// The settings may be named through it.
    FileDescriptor folder;
    /// None if there is no store, or something else in its place.
    std::unique_ptr<QSettings> settings;
};

} // namespace cartloom
