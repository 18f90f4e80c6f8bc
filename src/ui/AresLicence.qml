// SPDX-License-Identifier: MIT
pragma Singleton
import QtQml

/// The licence of the emulator, as it is published with it.
QtObject {
    readonly property string text:
        "Copyright (c) 2004-2025 ares team, Near et al\n\n"
        + "Permission to use, copy, modify, and/or distribute this software for any purpose with or without "
        + "fee is hereby granted, provided that the above copyright notice and this permission notice appear "
        + "in all copies.\n\n"
        + "THE SOFTWARE IS PROVIDED \"AS IS\" AND THE AUTHOR DISCLAIMS ALL WARRANTIES WITH REGARD TO THIS "
        + "SOFTWARE INCLUDING ALL IMPLIED WARRANTIES OF MERCHANTABILITY AND FITNESS. IN NO EVENT SHALL THE "
        + "AUTHOR BE LIABLE FOR ANY SPECIAL, DIRECT, INDIRECT, OR CONSEQUENTIAL DAMAGES OR ANY DAMAGES "
        + "WHATSOEVER RESULTING FROM LOSS OF USE, DATA OR PROFITS, WHETHER IN AN ACTION OF CONTRACT, "
        + "NEGLIGENCE OR OTHER TORTIOUS ACTION, ARISING OUT OF OR IN CONNECTION WITH THE USE OR PERFORMANCE "
        + "OF THIS SOFTWARE."
}
