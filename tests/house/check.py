#!/usr/bin/env python3
"""Looks at the source tree as a newcomer would: rooms include only what they declare, each file says which question
it answers, and none has outgrown its subject.

usage: check.py SOURCE_DIR
"""
import pathlib
import re
import sys

LONGEST_FILE = 800
# The folders of one room that are built together.
SAME_ROOM = {"store": "model", "core": "model", "search": "model", "images": "model"}


def rooms(source):
    """Folder to the set of folders that its includes may name, from the CMake lists."""
    declared, folder_of = {}, {}
    for lists in (source / "src").rglob("CMakeLists.txt"):
        folder = lists.parent.relative_to(source / "src").as_posix()
        match = re.search(r"roster_room\((\w+)(.*?)\n?\)\s*$", lists.read_text(), re.S | re.M)
        if match:
            folder_of[match.group(1)] = folder
            below = re.search(r"\bROOMS\b([\w\s]*?)(LIBRARIES|$)", match.group(2))
            declared[match.group(1)] = below.group(1).split() if below else []

    def closure(room):
        seen = {room}
        for below in declared.get(room, []):
            seen |= closure(below)
        return seen

    return declared, folder_of, closure


def room_of(path, folder_of):
    """The room that a path such as core/ZRRecord.h is in: the longest folder that matches."""
    best = None
    for room, folder in folder_of.items():
        if path.startswith(folder + "/") and (best is None or len(folder) > len(folder_of[best])):
            best = room
    top = path.split("/")[0]
    return SAME_ROOM.get(top, best)


def check_includes(source):
    declared, folder_of, closure = rooms(source)
    for file in sorted((source / "src").rglob("*")):
        if file.suffix not in (".h", ".cpp"):
            continue
        name = file.relative_to(source / "src").as_posix()
        room = room_of(name, folder_of)
        if room is None:
            continue
        for included in re.findall(r'^#include "([^"]+)"', file.read_text(), re.M):
            target = room_of(included, folder_of)
            if target and target not in closure(room):
                yield f"src/{name}: includes {included}, but the room {room} does not declare {target}"


def check_files(source):
    for folder in ("src", "tools", "tests", "fuzz", "bench"):
        for file in sorted((source / folder).rglob("*")):
            if file.suffix not in (".h", ".cpp", ".c"):
                continue
            lines = file.read_text().splitlines()
            name = file.relative_to(source).as_posix()
            if not lines or not lines[0].startswith("//"):
                yield f"{name}: its first line does not say which question it answers"
            if len(lines) > LONGEST_FILE:
                yield f"{name}: {len(lines)} lines; two subjects in one file?"


def main():
    source = pathlib.Path(sys.argv[1])
    problems = [*check_includes(source), *check_files(source)]
    for problem in problems:
        print(problem)
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
