# SPDX-License-Identifier: MIT
"""Where everything is measured: a display, a message bus and a home folder that nothing else uses."""

import os
import shutil
import signal
import subprocess
import tempfile
import time
from contextlib import ExitStack, suppress
from pathlib import Path

BUS = """<busconfig>
  <type>session</type>
  <listen>unix:dir={folder}</listen>
  <auth>EXTERNAL</auth>
  <policy context="default">
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
  </policy>
</busconfig>
"""


class Surroundings(ExitStack):
    """Ends what it has started when its scope ends. No window manager: nobody else takes part in what is
    measured, except the X server and the bus, which every desktop program has."""

    def __init__(self, root):
        super().__init__()
        self.root = root
        self.programs = root / "build/release"
        # On the disk that everything is built on: what is written there is written as it would be at home.
        (root / "build/bench").mkdir(parents=True, exist_ok=True)
        self.work = Path(tempfile.mkdtemp(dir=root / "build/bench", prefix="work-"))
        self.callback(shutil.rmtree, self.work, ignore_errors=True)
        # Names of sockets are short, so these do not lie in there.
        self.sockets = Path(self.enter_context(tempfile.TemporaryDirectory(prefix="cartloom-bench-")))
        self.environment = {
            "PATH": os.environ["PATH"],
            "LC_ALL": "C.UTF-8",
            **self.home("home"),
        }
        self.environment["DISPLAY"] = self.display()
        self._start_bus()

    def home(self, name):
        """The variables of a home folder of its own."""
        home = self.work / name
        variables = {"HOME": home}
        for variable, folder in [("XDG_DATA_HOME", "data"), ("XDG_CONFIG_HOME", "config"),
                                 ("XDG_CACHE_HOME", "cache")]:
            variables[variable] = home / folder
        variables["XDG_RUNTIME_DIR"] = self.sockets / name
        for folder in variables.values():
            folder.mkdir(parents=True, exist_ok=True, mode=0o700)
        return {variable: str(folder) for variable, folder in variables.items()}

    def program(self, name):
        return str(self.programs / name)

    def run(self, *command, environment=None, **options):
        """What a command that must succeed prints."""
        return subprocess.run(command, env=self.environment | (environment or {}), check=True, text=True,
                              stdout=subprocess.PIPE, **options).stdout

    def start(self, *command, environment=None, **options):
        """A process that runs until the scope ends, unless it is ended before."""
        process = subprocess.Popen(command, env=self.environment | (environment or {}), **options)
        self.callback(self.end, process)
        return process

    @staticmethod
    def end(process):
        """Ends a process and what it has started."""
        children = children_of(process.pid) if process.poll() is None else []
        if process.poll() is None:
            process.terminate()
        process.wait()
        for child in children:
            with suppress(ProcessLookupError):
                os.kill(child, signal.SIGTERM)

    @staticmethod
    def wait_until(what, condition, seconds=30):
        end = time.monotonic() + seconds
        while not condition():
            if time.monotonic() > end:
                raise RuntimeError(f"waited in vain for {what}")
            time.sleep(0.02)

    def display(self):
        """The name of one more display."""
        process = self.start("Xvfb", "-displayfd", "1", "-screen", "0", "1280x1024x24", "-nolisten", "tcp",
                             "-noreset", stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
        return ":" + process.stdout.readline().strip()

    def _start_bus(self):
        configuration = self.work / "bus.conf"
        configuration.write_text(BUS.format(folder=self.sockets))
        process = self.start("dbus-daemon", f"--config-file={configuration}", "--nofork", "--print-address",
                             stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
        self.environment["DBUS_SESSION_BUS_ADDRESS"] = process.stdout.readline().strip()


def children_of(process):
    """The processes that any thread of a process has started and that have not ended."""
    found = []
    for task in Path(f"/proc/{process}/task").iterdir():
        with suppress(FileNotFoundError, ProcessLookupError):
            found += map(int, (task / "children").read_text().split())
    return found
