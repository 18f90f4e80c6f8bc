// SPDX-License-Identifier: MIT
import QtQuick
import QtTest
import Cartloom

/// The alerts and the sheet as overlays: one at a time, and as often as asked for.
PageCase {
    name: "Overlays"

    readonly property var openers: ({
            externalOfferAlert: () => probe.put({ offerExternal: "/opt/ares.app" }),
            updateAlert: () => probe.put({ updateOffer: "v141" }),
            resetAlert: () => model.confirmReset = true,
            aboutView: () => page.showAbout = true
        })

    function open(name) {
        openers[name]();
        tryVerify(() => popup(name)?.opened);
    }

    /// The colour of the window at a point.
    function colourAt(x, y) {
        return String(grabImage(page.Window.window.contentItem).pixel(x, y));
    }

    function test_anOverlayIsDrawnEachTimeItIsOpened_data() {
        return Object.keys(openers).map(name => ({ tag: name }));
    }

    function test_anOverlayIsDrawnEachTimeItIsOpened(row) {
        for (let time = 0; time < 2; ++time) {
            open(row.tag);
            const y = popup(row.tag).y + 5;
            compare(colourAt(240, y), String(Theme.raised));
            keyClick(Qt.Key_Escape);
            tryCompare(item(row.tag), "item", null);
            verify(colourAt(240, y) !== String(Theme.raised));
        }
    }

    function test_whatAsksWaitsForWhatIsOpen_data() {
        return [{ tag: "update, about", asks: "updateAlert", opened: "aboutView" },
                { tag: "update, reset", asks: "updateAlert", opened: "resetAlert" },
                { tag: "offer, about", asks: "externalOfferAlert", opened: "aboutView" },
                { tag: "update, offer", asks: "updateAlert", opened: "externalOfferAlert" }];
    }

    function test_whatAsksWaitsForWhatIsOpen(row) {
        open(row.opened);
        openers[row.asks]();
        compare(popup(row.asks), null);
        keyClick(Qt.Key_Escape);
        tryVerify(() => popup(row.asks)?.opened);
        compare(popup(row.opened), null);
    }

    function test_theFilePanelOpensTwice() {
        for (let time = 0; time < 2; ++time) {
            model.openROM();
            tryVerify(() => item("filePanel").item?.visible);
            grabImage(page);
            item("filePanel").item.reject();
            tryCompare(item("filePanel"), "item", null);
        }
    }
}
