// SPDX-License-Identifier: MIT
#pragma once

#include <QtGlobal>

#include <filesystem>

/// What an archive from the network may not bring with it.
namespace cartloom::TreeInspection
{

/// More than any emulator needs, and less than does harm.
struct Bounds
{
    qint64 entries = 200'000;
    /// Of all files together, by the sizes that they show.
    qint64 bytes = 4'000'000'000;
};

/// Looks at everything under an unpacked folder, before anything of it is used. Drops set-user-id and
/// set-group-id bits and makes every folder one that its owner can list and remove. Throws AppError, with the
/// name of the offending entry in the details, for a link that leads out of the folder, for what is neither
/// file nor folder nor link, for what cannot be looked at and for more than the bounds allow. Nothing may
/// change the folder meanwhile. Any thread.
void inspect(const std::filesystem::path& folder, const Bounds& bounds = {});

/// Counts the entries and bytes of a folder that another process is filling, and changes nothing. Throws
/// AppError, as inspect does, for more than the bounds allow and for a path that is too long to be looked at.
/// Any thread.
void checkSize(const std::filesystem::path& folder, const Bounds& bounds);

} // namespace cartloom::TreeInspection
