// SPDX-License-Identifier: MIT
#pragma once

namespace cartloom::Signals
{

/// Ignores SIGPIPE, which the emulator inherits, so that it can write errors after this program has ended.
/// Ignores SIGXFSZ, so that a write past the limit on file sizes fails with EFBIG, in the archive tool as
/// well. Restores SIGCHLD, which whoever started this program may have ignored. Called before there is a
/// second thread.
void prepare();

} // namespace cartloom::Signals
