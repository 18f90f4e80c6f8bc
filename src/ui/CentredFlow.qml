// SPDX-License-Identifier: MIT
import QtQuick

/// Items from left to right, in as many lines as they need, each line centred.
Item {
    id: flow

    property real spacing: 0

    readonly property var lines: Array.from(children).reduce(withItem, [])

    /// The lines with one more item, which begins a new line if the last one is full.
    function withItem(lines: var, item: Item): var {
        const last = lines.length - 1;
        return last >= 0 && widthOf(lines[last].concat([item])) <= width
               ? lines.slice(0, last).concat([lines[last].concat([item])]) : lines.concat([[item]]);
    }

    function widthOf(line: var): real {
        return line.reduce((sum, item) => sum + item.width + spacing, -spacing);
    }

    /// The top of a line; one past the last gives the bottom with the spacing below.
    function topOf(index: int): real {
        return lines.slice(0, index).reduce((y, line) => y + line[0].height + spacing, 0);
    }

    function placeLine(line: var, index: int) {
        line.reduce((x, item) => placeItem(item, x, topOf(index)), Math.round((width - widthOf(line)) / 2));
    }

    /// Returns where the next item begins.
    function placeItem(item: Item, x: real, y: real): real {
        item.x = x;
        item.y = y;
        return x + item.width + spacing;
    }

    implicitHeight: topOf(lines.length) - spacing
    onLinesChanged: lines.forEach(placeLine)
}
