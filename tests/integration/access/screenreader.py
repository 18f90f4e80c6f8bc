# SPDX-License-Identifier: MIT
"""What a screen reader does with a program: finds its controls by role and name, reads them, presses them."""

import os
import re
import signal
import subprocess
import time

os.environ["NO_AT_BRIDGE"] = "1"  # this process is the reader and has nothing to show
import pyatspi  # noqa: E402
from gi.repository import Atspi, GLib  # noqa: E402

# How long each wait may take at most, in seconds.
PATIENCE = 20

# Newer versions of the bus call it by the second name.
BUTTON = ("push button", "button", "link")
CHECK_BOX = ("check box",)
LABEL = ("label", "text")
ALERT = ("alert", "dialog", "notification")
PROGRESS_BAR = ("progress bar",)


def wait_for(what, condition, limit=PATIENCE):
    """Returns the first true value of the condition; fails when there is none within the limit."""
    end = time.monotonic() + limit
    while True:
        try:
            value = condition()
        except (GLib.Error, LookupError):
            value = None  # what was being looked at is gone: look again
        if value:
            return value
        if time.monotonic() > end:
            raise AssertionError(f"not within {limit} s: {what}")
        time.sleep(0.02)


def is_in_state(node, state):
    return node.getState().contains(state)


def below(node):
    """All that is below a node and can be perceived, in the order in which it is read."""
    for i in range(node.childCount):
        child = node.getChildAtIndex(i)
        if child is None:
            continue
        if child.getRoleName() == "frame" or is_in_state(child, pyatspi.STATE_SHOWING):
            yield child
        yield from below(child)


class Announcements:
    """What is spoken because it appears, in the order in which it appeared."""

    def __init__(self):
        self._spoken = []
        pyatspi.Registry.registerEventListener(self._on_showing, "object:state-changed:showing")

    def _on_showing(self, event):
        if event.detail1 and event.source.getRoleName() in ALERT:
            self._spoken.append(event.source.name)

    @property
    def spoken(self):
        while GLib.MainContext.default().iteration(False):
            pass
        return self._spoken

    def wait_for(self, text):
        wait_for(f"'{text}' announced; there was {self._spoken}", lambda: text in self.spoken)

    def close(self):
        pyatspi.Registry.deregisterEventListener(self._on_showing, "object:state-changed:showing")


class Program:
    """A started program, as assistive technology knows it. Ends with `end` at the latest."""

    def __init__(self, command, environment, folder):
        self.process = subprocess.Popen(
            command, cwd=folder, env={**os.environ, "QT_LINUX_ACCESSIBILITY_ALWAYS_ON": "1",
                                      "QT_ACCESSIBILITY": "1", **environment})
        try:
            self._application = wait_for("the program's entry among the applications", self._find_application)
        except AssertionError:
            self.end()
            raise
        # Not every change is announced; what is remembered of a control would grow old.
        self._application.set_cache_mask(Atspi.Cache.NONE)

    def _find_application(self):
        if self.process.poll() is not None:
            raise AssertionError(f"the program ended with status {self.process.returncode}")
        desktop = pyatspi.Registry.getDesktop(0)
        applications = (desktop.getChildAtIndex(i) for i in range(desktop.childCount))
        return next((each for each in applications
                     if each and each.get_process_id() == self.process.pid), None)

    def end(self):
        if self.process.poll() is None:
            self.process.send_signal(signal.SIGTERM)
            try:
                self.process.wait(PATIENCE)
            except subprocess.TimeoutExpired:
                self.process.kill()
        self.process.wait()

    def outline(self):
        return "\n".join(f"  {node.getRoleName()} '{node.name}'" for node in below(self._application))

    def look_for(self, roles, name):
        """The control of that role and name, or None. An asterisk in the name stands for anything."""
        pattern = re.compile(".*".join(re.escape(part) for part in name.split("*")), re.DOTALL)
        return next((node for node in below(self._application)
                     if node.getRoleName() in roles and pattern.fullmatch(node.name)), None)

    def find(self, roles, name, limit=PATIENCE):
        try:
            return wait_for(f"{roles[0]} '{name}'", lambda: self.look_for(roles, name), limit)
        except AssertionError as failure:
            raise AssertionError(f"{failure}; there is:\n{self.outline()}") from None

    def wait_until_gone(self, roles, name):
        wait_for(f"{roles[0]} '{name}' gone", lambda: not self.look_for(roles, name))

    def press(self, name, roles=BUTTON):
        """Presses a control by its own action; returns when the program has dealt with it."""
        actions = self.find(roles, name).queryAction()
        names = [actions.getName(i) for i in range(actions.nActions)]
        chosen = next((each for each in ("Press", "Toggle") if each in names), None)
        if chosen is None:
            raise AssertionError(f"'{name}' offers only {names}")
        actions.doAction(names.index(chosen))
