// SPDX-License-Identifier: MIT
.pragma library

/// More than the longest sentences have that are made of parts with a bound of their own. A longer one holds something
/// from elsewhere that is no text for people, and laying that out could stop the window for seconds.
const longestMessage = 10000;
/// More than a program's complaint is kept of. Details stand in plain lines, which take less time.
const longestDetails = 70000;

/// The text as it stands, or what can be shown of one that is too long.
function of(text, longest = longestMessage) {
    // Not between the two halves of a character.
    return text.length <= longest ? text : text.slice(0, longest).replace(/[\ud800-\udbff]$/, "") + "…";
}
