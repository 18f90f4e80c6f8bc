# SPDX-License-Identifier: MIT
"""tools/check-layers, on a small project with one fault at a time."""

import os
import pathlib
import subprocess
import tempfile
import unittest

TOOL = os.environ["CARTLOOM_CHECK_LAYERS"]
PICTURE = """# Layers

```
main.cpp              the program
ui/                   a window
core/                 a model
emulator/ game/       Launcher and/or Game
network/              HTTP/1.1
platform/
```
"""
# Everything that is allowed.
CLEAN = {
    "main.cpp": '#include "core/Model.h"\n',
    "ui/Dot.h": '#include "core/Model.h"\n',
    "ui/Window.qml": 'import QtQuick\nPage {}\n',
    "ui/Page.qml": '// Lies in the Window.\nItem {\n    T.Window {}\n    text: "the Window"\n}\n',
    "core/Model.h": '#include "emulator/Launcher.h"\n#include "game/Game.h"\n',
    "core/Model.cpp": '#include "core/Model.h"\n',
    "core/Flow.cpp": '#include "core/Model.h"\n',
    "emulator/Launcher.h": "#include <string>\n",
    "game/Game.h": '#include "network/Request.h"\n',
    "network/Request.h": "#include <curl/curl.h>\n",
    "platform/Places.h": "#include <string>\n/* no QNetworkReply */\n",
    "platform/Places_macos.cpp": '#include "platform/Places.h"\n#include <unistd.h>\n#include <plist/plist.h>\n',
    "platform/Places_freedesktop.cpp": '#include "platform/Places.h"\n#ifdef Q_OS_LINUX\n#endif\n',
}


class CheckLayers(unittest.TestCase):
    def faults(self, files, picture=PICTURE):
        """The lines that the tool reports on the clean project with these files in it."""
        with tempfile.TemporaryDirectory() as folder:
            contents = {f"src/{path}": text for path, text in {**CLEAN, **files}.items()}
            for path, text in {**contents, "docs/architecture.md": picture}.items():
                file = pathlib.Path(folder, path)
                file.parent.mkdir(parents=True, exist_ok=True)
                file.write_text(text)
            result = subprocess.run(["/usr/bin/python3", "-B", TOOL, folder], capture_output=True, text=True,
                                    check=False)
        self.assertEqual(result.stderr, "")
        *lines, summary = result.stdout.splitlines()
        self.assertEqual(summary, f"{len(contents)} files, {len(lines)} to mend")
        self.assertEqual(result.returncode, 1 if lines else 0)
        return lines

    def test_a_clean_project_passes(self):
        self.assertEqual(self.faults({}), [])

    def test_an_include_that_goes_up_is_reported(self):
        self.assertEqual(self.faults({"game/Store.cpp": '\n#include "core/Model.h"\n'}),
                         ["src/game/Store.cpp:2: uses core/Model.h, but core is above game in the layers"])

    def test_an_include_from_the_layer_below_the_window_is_reported(self):
        self.assertEqual(self.faults({"core/App.cpp": '#include "ui/Dot.h"\n'}),
                         ["src/core/App.cpp:1: uses ui/Dot.h, but ui is above core in the layers"])

    def test_an_include_that_goes_sideways_is_reported(self):
        self.assertEqual(self.faults({"emulator/Launcher.cpp": '#include <string>\n#include "game/Game.h"\n'}),
                         ["src/emulator/Launcher.cpp:2: uses game/Game.h, but game is beside emulator in the layers"])

    def test_an_include_without_its_folder_or_by_a_relative_path_is_followed(self):
        for spelling in ('"Model.h"', '"../core/Model.h"', "<core/Model.h>"):
            with self.subTest(spelling):
                self.assertEqual(self.faults({"game/Store.cpp": f"#include {spelling}\n"}),
                                 ["src/game/Store.cpp:1: uses core/Model.h, but core is above game in the layers"])

    def test_a_circle_of_two_files_is_reported_once(self):
        self.assertEqual(self.faults({"core/A.h": "#pragma once\n",
                                      "core/A.cpp": '#include "core/A.h"\n#include "core/B.h"\n',
                                      "core/B.h": '#include "core/A.h"\n'}),
                         ["src/core/A.cpp:2: circle: core/A -> core/B -> core/A"])

    def test_a_circle_through_the_files_of_one_system_is_reported(self):
        self.assertEqual(self.faults({"platform/Text.cpp": '#include "platform/Home.h"\n',
                                      "platform/Text.h": "#pragma once\n",
                                      "platform/Home.h": "#pragma once\n",
                                      "platform/Home_macos.cpp": '#include "platform/Text.h"\n'}),
                         ["src/platform/Home_macos.cpp:1: circle: platform/Home -> platform/Text -> platform/Home"])

    def test_two_circles_are_two_faults(self):
        files = {f"core/{here}.h": f'#include "core/{there}.h"\n' for here, there in ("AB", "BC", "CA", "DE", "ED")}
        self.assertEqual(self.faults(files),
                         ["src/core/A.h:1: circle: core/A -> core/B -> core/C -> core/A",
                          "src/core/D.h:1: circle: core/D -> core/E -> core/D"])

    def test_a_circle_of_components_is_reported(self):
        for use in ("Window {}", "property Window window", "function f(a) { return a as Window }",
                    "property list<Window> windows", 'component: "Window"', 'source: "Window.qml"'):
            with self.subTest(use):
                self.assertEqual(self.faults({"ui/Page.qml": f"Item {{\n    {use}\n}}\n"}),
                                 ["src/ui/Page.qml:2: circle: ui/Page.qml -> ui/Window.qml -> ui/Page.qml"])

    def test_a_header_of_the_system_outside_platform_is_reported(self):
        for header in ("unistd.h", "fcntl.h", "poll.h", "spawn.h", "signal.h", "csignal", "cerrno", "errno.h",
                       "dirent.h", "pwd.h", "dlfcn.h", "sys/stat.h", "netinet/in.h", "arpa/inet.h", "netdb.h",
                       "termios.h", "plist/plist.h"):
            with self.subTest(header):
                self.assertEqual(self.faults({"network/Socket.cpp": f"#include <{header}>\n"}),
                                 [f"src/network/Socket.cpp:1: includes {header} outside platform/"])

    def test_a_platform_condition_outside_platform_is_reported(self):
        for condition, name in (("#ifdef Q_OS_MACOS", "Q_OS_MACOS"), ("#ifndef Q_OS_LINUX", "Q_OS_LINUX"),
                                ("#if defined(__APPLE__)", "__APPLE__"), ("# if defined __linux__", "__linux__"),
                                ("#elif defined Q_OS_UNIX", "Q_OS_UNIX")):
            with self.subTest(condition):
                self.assertEqual(self.faults({"core/Flow.cpp": f"// a flow\n{condition}\n#endif\n"}),
                                 [f"src/core/Flow.cpp:2: tests {name} outside platform/"])

    def test_libcurl_outside_network_is_reported(self):
        self.assertEqual(self.faults({"platform/Transfer.cpp": "#include <curl/multi.h>\n"}),
                         ["src/platform/Transfer.cpp:1: includes curl/multi.h outside network/"])

    def test_the_http_classes_of_qt_are_reported_anywhere(self):
        for name in ("QNetworkRequest", "QNetworkReply", "QNetworkAccessManager"):
            with self.subTest(name):
                self.assertEqual(self.faults({"network/Get.h": f"\n\nclass {name};\n"}),
                                 [f"src/network/Get.h:3: names {name}; HTTP goes through libcurl"])

    def test_a_folder_that_the_picture_lacks_is_reported(self):
        self.assertEqual(self.faults({"extra/Thing.h": ""}),
                         ["src/extra: missing in the layers of docs/architecture.md"])

    def test_a_folder_that_only_the_picture_has_is_reported(self):
        self.assertEqual(self.faults({}, PICTURE.replace("network/", "network/ storage/")),
                         ["docs/architecture.md: the layers show storage, which src/ lacks"])


if __name__ == "__main__":
    unittest.main()
