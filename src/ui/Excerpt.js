// SPDX-License-Identifier: MIT
.pragma library

/// Longer than anything that this program puts together itself. More than that is no text for people, and laying it
/// out would stop the window for seconds.
const longest = 10000;

/// The text as it stands, or what can be shown of one that is too long.
function of(text) {
    // Not between the two halves of a character.
    return text.length <= longest ? text : text.slice(0, longest).replace(/[\ud800-\udbff]$/, "") + "…";
}
