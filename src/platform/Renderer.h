// SPDX-License-Identifier: MIT
#pragma once

namespace cartloom::Renderer
{

/// Chooses how this system draws the window. Called before the application object is created.
void choose();

} // namespace cartloom::Renderer
