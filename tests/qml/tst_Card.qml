// SPDX-License-Identifier: MIT
import QtQuick
import QtTest
import Cartloom

/// The card with the controls of the game.
PageCase {
    name: "Card"

    function test_words() {
        compare(itemsBelow(item("controlsCard"), child => child instanceof Text).map(text => text.text), [
            "Controls",
            "A: jump. Press A against a wall to wall jump.",
            "C-Up / C-Down: change camera distance.",
            "Torso: hold A for double and triple jumps.",
            "Arms: B spin attack; spin in the air to hover.",
            "Fullbody: Z crouch; Z + C-Left kick.",
            "Ares does not come with preset keyboard keys. In Ares, open Settings, then Input, to assign "
            + "keys to the N64 buttons once. A USB or Bluetooth game controller works too: map it in the "
            + "same place."
        ]);
    }

    function test_paddingSpacingAndBackground() {
        const card = place("controlsCard");
        const column = place("cardColumn");
        compare([column.x - card.x, column.y - card.y], [12, 12]);
        compare([card.width - column.width, card.height - column.height], [24, 24]);
        compare(item("cardBackground").radius, 10);
        compareColor(item("cardBackground").fillColor, "#ffffff", 0.06);
        const parts = Array.from(item("cardColumn").children).filter(child => child.height > 0)
            .sort((a, b) => a.y - b.y);
        const lines = item("controlsCard").lines.length;
        compare(parts.length, lines + 3);
        compare(parts[lines + 1].objectName, "cardDivider");
        parts.slice(1).forEach((part, i) => compare(part.y - parts[i].y - parts[i].height, 6));
    }

    function test_fonts() {
        compare(item("cardTitle").font.pixelSize, 13);
        verify(item("cardTitle").font.bold);
        compare(item("cardLine").font.pixelSize, 10);
        compare(item("keyboardNote").font.pixelSize, 10);
        compareColor(item("keyboardNote").color, "#ffffff", 0.7);
        page.width = 300;
        verify(item("keyboardNote").lineCount > 3);
        verify(!item("keyboardNote").truncated);
    }

    function test_linesAreWhite() {
        const lines = itemsBelow(item("controlsCard"), child => child.objectName === "cardLine");
        compare(lines.length, 5);
        for (const line of lines) {
            compareColor(line.color, "#ffffff", 1);
            compare(line.opacity, 1);
        }
    }

    function test_theDividerCanBeSeen() {
        const image = grabImage(page);
        const divider = place("cardDivider");
        const at = dy => String(image.pixel(Math.round(divider.x + 50), Math.round(divider.y) + dy));
        verify([-1, 0, 1].some(dy => at(dy) !== at(-3)));
    }
}
