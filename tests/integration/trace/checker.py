# SPDX-License-Identifier: MIT
"""checker.py WORK_FOLDER: whether the first play traced there did what it needs and nothing else."""

import os
import pathlib
import re
import sys

from calls import calls_in
from rules import Permitted, Thread


def permitted_in(work):
    home = work + "/home"
    return Permitted(
        trees=[
            # The storage folder and the preferences.
            home + "/data/Quillet64 Player",
            home + "/config/Cartloom",
            # Which fonts there are, is noted by the system's font library.
            home + "/cache/fontconfig",
            # The demo's own.
            work + "/pictures",
        ],
        # The folders of a home that has none yet; the demo makes them.
        paths=[home, home + "/data", home + "/config", home + "/cache", work + "/runtime", "/dev/null"],
        patterns=[
            # What keeps a user's second start from being a second launcher.
            re.escape(work) + r"/runtime/cartloom-[0-9a-f]+\.(lock|socket)",
            r"/tmp/\.X11-unix/X\d+",
            # The system's own services on this machine.
            r"/(var/)?run/(dbus/system_bus_socket|nscd/socket)",
        ],
    )


def complaints_about(work):
    permitted = permitted_in(work)
    threads = []
    for file in sorted(pathlib.Path(work, "trace").iterdir()):
        with open(file, encoding="latin-1") as lines:
            threads.append(Thread(calls_in(lines), permitted, work))

    complaints = [complaint for t in threads for complaint in t.complaints]
    reached = {address for t in threads for address in t.reached}
    own = {address for t in threads for address in t.own}
    complaints += [f"reached {host}, port {port}" for port, host in reached - own]

    # The trace shows what there must have been; else it was not a trace of a first play.
    requests = int(re.search(r"^requests: (\d+)$", pathlib.Path(work, "output").read_text(), re.M)[1])
    connections = sum(len(t.connections) for t in threads)
    if not 0 < connections <= requests:
        complaints.append(f"{connections} connections for {requests} requests")
    started = {os.path.basename(program) for t in threads for program in t.started}
    needed = {"cartloom-demo", "setpriv", "bsdtar", "ares"}
    # The demo closes the emulator's window with wmctrl.
    complaints += [f"{program} was started" for program in started - needed - {"wmctrl"}]
    complaints += [f"{program} was not started" for program in needed - started]
    changed = {path for t in threads for path in t.changed}
    for name in ("Ares", "ares-version.txt", "Quillet64.z64"):
        if f"{work}/home/data/Quillet64 Player/{name}" not in changed:
            complaints.append(f"{name} was not seen to be written")
    print(f"{len(threads)} threads, {len(changed)} paths, {connections} connections, {requests} requests")
    return complaints


if __name__ == "__main__":
    found = complaints_about(os.path.realpath(sys.argv[1]))
    for complaint in sorted(set(found)):
        print("not permitted: " + complaint)
    sys.exit(1 if found else 0)
