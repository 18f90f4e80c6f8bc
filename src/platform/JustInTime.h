// SPDX-License-Identifier: MIT
#pragma once

namespace cartloom::JustInTime
{

/// Has Qt interpret regular expressions instead of compiling them into memory that stays both writable and
/// executable. The environment is as before when it returns. Must be called before any of them is used and
/// before there is a second thread.
void forbidForPatterns();

} // namespace cartloom::JustInTime
