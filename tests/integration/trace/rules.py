# SPDX-License-Identifier: MIT
"""What a first play may do, and what in a thread's calls goes beyond it."""

import os
import re

from calls import Folder, text_of

# Calls that change the file at a path: the places of its folder's descriptor, if it has one, and of the path.
CHANGES = {
    "creat": [(None, 0)],
    "mkdir": [(None, 0)],
    "mkdirat": [(0, 1)],
    "rename": [(None, 0), (None, 1)],
    "renameat": [(0, 1), (2, 3)],
    "renameat2": [(0, 1), (2, 3)],
    "link": [(None, 0), (None, 1)],
    "linkat": [(0, 1), (2, 3)],
    "symlink": [(None, 1)],
    "symlinkat": [(1, 2)],
    "unlink": [(None, 0)],
    "unlinkat": [(0, 1)],
    "rmdir": [(None, 0)],
    "mknod": [(None, 0)],
    "mknodat": [(0, 1)],
    "truncate": [(None, 0)],
    "chmod": [(None, 0)],
    "fchmodat": [(0, 1)],
    "chown": [(None, 0)],
    "lchown": [(None, 0)],
    "fchownat": [(0, 1)],
    "setxattr": [(None, 0)],
    "lsetxattr": [(None, 0)],
    "utimensat": [(0, 1)],
}
# Calls that open one, and the place of their flags.
OPENS = {"open": (None, 0, 1), "openat": (0, 1, 2), "openat2": (0, 1, 2)}
WRITING = re.compile(r"O_(WRONLY|RDWR|CREAT|TRUNC|APPEND|TMPFILE)\b")
ADDRESS = re.compile(r'sin6?_port=htons\((\d+)\).*?"([^"]+)"')


class Permitted:
    """Trees and paths that may be written, and patterns of names: of files, and of this machine's sockets."""

    def __init__(self, trees, paths, patterns):
        self.trees, self.paths, self.patterns = trees, set(paths), patterns

    def allows(self, name):
        return (
            name in self.paths
            or any(name == tree or name.startswith(tree + "/") for tree in self.trees)
            or any(re.fullmatch(pattern, name) for pattern in self.patterns)
        )


def written(call, folder):
    """The paths that a call changes, or would if it could."""
    if call.name in OPENS:
        base, place, flags = OPENS[call.name]
        if not WRITING.search(call.arguments[flags]):
            return []
        places = [(base, place)]
    else:
        places = CHANGES.get(call.name, [])
    # Without a path, the call is about an open file, whose opening was seen.
    return [
        folder.of(call.arguments[place], None if base is None else call.arguments[base])
        for base, place in places
        if text_of(call.arguments[place]) is not None
    ]


class Thread:
    """One thread's calls: what they go beyond is in `complaints`, what they reach in the other lists."""

    def __init__(self, calls, permitted, start_folder):
        self.complaints, self.reached, self.own, self.started, self.changed = [], [], [], [], []
        self.connections = set()
        folder = Folder(start_folder)
        for call in calls:
            folder.follow(call)
            self._files(call, permitted, folder)
            self._network(call, permitted)
            if call.name == "execve" and call.result == "0":
                self.started.append(text_of(call.arguments[0]))

    def _files(self, call, permitted, folder):
        for path in written(call, folder):
            self.changed.append(path)
            if not permitted.allows(path):
                self.complaints.append(f"{call.name} {path}")

    def _network(self, call, permitted):
        if call.name == "getsockname" and "AF_INET" in (address := call.arguments[1]):
            self.own.append(ADDRESS.search(address).groups())
        if call.name not in ("bind", "connect", "sendto", "sendmsg", "sendmmsg"):
            return
        address = ", ".join(call.arguments)
        if "AF_UNIX" in address:
            name = os.path.normpath(re.search(r'sun_path=@?"([^"]*)"', address)[1])
            if not permitted.allows(name):
                self.complaints.append(f"{call.name} {name}")
        elif "AF_INET" in address and call.name == "bind":
            if ADDRESS.search(address)[2] not in ("127.0.0.1", "::1"):
                self.complaints.append("bind " + address)
        elif "AF_INET" in address:
            self.reached.append(ADDRESS.search(address).groups())
            self.connections.add(call.arguments[0])
        elif "sa_family=" in address and "AF_NETLINK" not in address:
            self.complaints.append(f"{call.name} {address}")
