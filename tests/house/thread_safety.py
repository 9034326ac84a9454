#!/usr/bin/env python3
"""Has clang check, file by file, that guarded data and `nts_` operations are used under their locks.

It also checks itself: UnlockedCall.cpp, which breaks the rule on purpose, must be refused, and for that reason.
usage: thread_safety.py BUILD [PATH-PREFIX…]   BUILD holds a compile_commands.json made with clang
"""
import concurrent.futures
import json
import os
import shlex
import subprocess
import sys

CHECKS = ["-fsyntax-only", "-Wthread-safety", "-Werror", "-fno-caret-diagnostics"]
ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
VIOLATION = os.path.join(ROOT, "tests", "house", "UnlockedCall.cpp")


def without_output(command):
    words = [word for word in shlex.split(command) if os.path.basename(word) != "ccache"]
    at = words.index("-o")
    return words[:at] + words[at + 2:]


def check(entry):
    command = without_output(entry["command"]) + CHECKS
    done = subprocess.run(command, cwd=entry["directory"], capture_output=True, text=True, check=False)
    return done.returncode, done.stderr


def main():
    with open(os.path.join(sys.argv[1], "compile_commands.json"), encoding="utf-8") as file:
        commands = json.load(file)
    prefixes = [os.path.join(ROOT, prefix) for prefix in sys.argv[2:] or ["src", "tools"]]
    ours = [entry for entry in commands if any(entry["file"].startswith(prefix) for prefix in prefixes)]
    failed = 0
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        for status, complaints in pool.map(check, ours):
            if status != 0:
                failed += 1
                sys.stderr.write(complaints)

    model = next(entry for entry in ours if entry["file"].endswith("ZRRoster+Save.cpp"))
    broken = dict(model, command=model["command"].replace(model["file"], VIOLATION))
    status, complaints = check(broken)
    if status == 0 or "requires holding global lock 'zrGlobalLock'" not in complaints:
        failed += 1
        sys.stderr.write(f"{VIOLATION} should have been refused:\n{complaints}")
    print(f"{len(ours)} files, {failed} failed")
    return failed != 0


if __name__ == "__main__":
    sys.exit(main())
