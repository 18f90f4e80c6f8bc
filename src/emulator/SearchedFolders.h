// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>
#include <vector>

namespace cartloom::AresInstaller
{

/// The folders in which a copy of the emulator is looked for that the user has installed, in their order.
/// Which ones is decided by what is linked, as Origins are: the program links this system's application
/// folders; tests and the demo link folders of their own, so that nothing on the machine changes their
/// course.
[[nodiscard]] std::vector<std::filesystem::path> searchedFolders();

} // namespace cartloom::AresInstaller
