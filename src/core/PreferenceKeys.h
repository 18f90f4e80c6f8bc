// SPDX-License-Identifier: MIT
#pragma once

/// The two values that outlive the program in the user's preference store.
namespace cartloom::PreferenceKeys
{

/// Whether the emulator starts in full-screen mode.
inline constexpr auto fullscreen = "fullscreen";
/// The path of the emulator that the player chose.
inline constexpr auto externalAres = "externalAresPath";

} // namespace cartloom::PreferenceKeys
