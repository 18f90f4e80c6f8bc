# SPDX-License-Identifier: MIT
"""Downloads over loopback: the launcher's own downloader in a program that does nothing else, and curl."""

import json
from statistics import median

from harness import content
from harness.report import Row, compared
from harness.server import Server

ROWS = ("download", "download-memory")

MEGABYTES = 500
SIZES = (50, 500, 2000)
PROTOCOLS = ("HTTP", "TLS", "HTTP/2")
WALL_BOUND = 1.05
PROCESSOR_BOUND = 1.10
GROWTH_MIB = 8


def measure(place, wanted, pairs):
    for megabytes in SIZES:
        content.make_file(place, megabytes)
    server = Server(place, "download")
    rows = []
    if wanted("download"):
        for protocol in PROTOCOLS:
            rows += compare(place, server, protocol, pairs)
    if wanted("download-memory"):
        rows += [growth(place, server, megabytes, pairs) for megabytes in SIZES]
    server.stop()
    return rows


def compare(place, server, protocol, pairs):
    address = server.address(f"{MEGABYTES}.bin", protocol)
    ours = [place.program("bench/wired-fetch"), address, str(place.work / "ours.bin")]
    curl = ["curl", "--silent", "--fail", "--cacert", str(server.certificate), "--output",
            str(place.work / "curl.bin"), address]
    taken = alternate(place, {"ours": ours, "curl": curl}, pairs, server.variables())
    what = f"download of {MEGABYTES} MB over {protocol}"
    return [compared(f"{what}: wall time", taken["ours"]["wall"], taken["curl"]["wall"],
                     WALL_BOUND, "ms", "curl", 0),
            compared(f"{what}: processor time", taken["ours"]["processor"], taken["curl"]["processor"],
                     PROCESSOR_BOUND, "ms", "curl", 0)]


def alternate(place, commands, pairs, variables, prepare=None):
    """Runs the commands in turn, each as a process of its own, and takes what hyperfine says of them."""
    taken = {name: {"wall": [], "processor": []} for name in commands}
    result = place.work / "hyperfine.json"
    for turn in range(pairs + 1):
        options = [option for name in commands for option in ("--prepare", prepare[name])] if prepare else []
        place.run("hyperfine", "--shell=none", "--runs=1", "--style=none", f"--export-json={result}",
                  *options, *(" ".join(command) for command in commands.values()), environment=variables)
        if turn == 0:
            continue
        for name, seen in zip(commands, json.loads(result.read_text())["results"]):
            taken[name]["wall"].append(seen["times"][0] * 1000)
            taken[name]["processor"].append((seen["user"] + seen["system"]) * 1000)
    return taken


def growth(place, server, megabytes, pairs):
    """The protocol that takes more decides."""
    kib = {protocol: [int(place.run(place.program("bench/wired-fetch"),
                                    server.address(f"{megabytes}.bin", protocol),
                                    str(place.work / "grown.bin"), environment=server.variables()))
                      for _ in range(pairs)] for protocol in PROTOCOLS}
    most = max(median(values) for values in kib.values()) / 1024
    return Row(f"growth of resident memory in a download of {megabytes} MB", f"{most:.1f} MiB", "zero", None,
               f"≤ {GROWTH_MIB} MiB", most <= GROWTH_MIB, kib)
