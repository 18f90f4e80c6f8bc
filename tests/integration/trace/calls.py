# SPDX-License-Identifier: MIT
"""What strace has written of one thread, read as calls."""

import os
import re
from dataclasses import dataclass

LINE = re.compile(r"^(\w+)\((.*)\)\s+= (-?\w+|\?)(.*)$")
TEXT = re.compile(r'@?"((?:[^"\\]|\\.)*)"')
DESCRIPTOR = re.compile(r"^(?:\d+|AT_FDCWD)<([^>]*)>")


@dataclass(frozen=True)
class Call:
    name: str
    arguments: tuple
    result: str
    # What stands behind the result: the file of a descriptor, or the name of an error.
    remark: str


def split(text):
    """The arguments, at the commas that are in no text and no bracket."""
    parts, depth, quoted, escaped, start = [], 0, False, False, 0
    for i, c in enumerate(text):
        if quoted:
            quoted, escaped = escaped or c != '"', c == "\\" and not escaped
        elif c == '"':
            quoted = True
        elif c in "{[(":
            depth += 1
        elif c in "}])":
            depth -= 1
        elif c == "," and depth == 0:
            parts.append(text[start:i].strip())
            start = i + 1
    return tuple(parts + [text[start:].strip()])


def text_of(argument):
    """The text in quotes; none when the argument is no text."""
    match = TEXT.match(argument)
    return match and match[1].encode("latin-1", "replace").decode("unicode_escape").encode("latin-1").decode(
        "utf-8", "replace"
    )


def descriptor_path(argument):
    match = DESCRIPTOR.match(argument)
    return match and match[1]


def calls_in(lines):
    for line in lines:
        line = line.rstrip("\n")
        if line.startswith(("+++", "---")) or not line:
            continue
        match = LINE.match(line)
        if not match:
            # A process that ends in the middle of a call leaves it without a result.
            if re.match(r"^\w+\(.*(<unfinished \.\.\.>|= \?)$", line):
                continue
            raise ValueError("not a line of strace: " + line)
        yield Call(match[1], split(match[2]), match[3], match[4].strip())


class Folder:
    """The folder that a thread works in, as its calls change it."""

    def __init__(self, path):
        self.path = path

    def follow(self, call):
        if call.result != "0":
            return
        if call.name == "chdir":
            self.path = self.of(call.arguments[0])
        elif call.name == "fchdir":
            self.path = descriptor_path(call.arguments[0])

    def of(self, argument, folder=None):
        base = (folder and descriptor_path(folder)) or self.path
        return os.path.normpath(os.path.join(base, text_of(argument)))
