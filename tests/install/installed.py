"""What the tests of an installation share: where it is, how programs are built against it, and how they are run."""
import os
import pathlib
import plistlib
import shlex
import shutil
import subprocess
import tempfile
import unittest

PREFIX = pathlib.Path(os.environ["ROSTER_PREFIX"])
LIBRARIES = next(PREFIX.glob("lib/**/libroster.so")).parent
EXAMPLES = PREFIX / "share/doc/libroster-dev/examples"
SANITIZERS = os.environ.get("ROSTER_SANITIZE", "")
LONGEST_WAIT = 120

COMPILERS = {"cc": os.environ["CC"], "c++": os.environ["CXX"]}


class World(unittest.TestCase):
    """A directory of its own for each test, in which a user lives who has an empty roster."""

    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="roster-installed-")
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        (self.folder / "no helpers").mkdir()
        self.environment = {
            "PATH": f"{self.make_compilers()}:/usr/bin:/bin",
            "HOME": folder.name,
            "LANG": "C.UTF-8",
            "LD_LIBRARY_PATH": str(LIBRARIES),
            "PKG_CONFIG_PATH": str(LIBRARIES / "pkgconfig"),
            "ROSTER_HELPER_DIR": str(self.folder / "no helpers"),
            "TMPDIR": folder.name,
        }
        for name in ("DATA_HOME", "CONFIG_HOME", "CACHE_HOME", "RUNTIME_DIR"):
            self.environment[f"XDG_{name}"] = str(self.folder / name.lower())
        self.make_roster()

    def make_roster(self):
        """An empty roster that has had its sample cards: the library adds them on a thread beside its host's."""
        shutil.rmtree(self.environment["XDG_DATA_HOME"], ignore_errors=True)
        self.tool("init")
        preferences = self.folder / "config_home/org.quillon.Roster.plist"
        preferences.write_bytes(plistlib.dumps(plistlib.loads(preferences.read_bytes()) | {"ZRImportTipCards": True}))

    def make_compilers(self):
        """`cc` and `c++` that take every warning for an error, and sanitize what is to run with a sanitized library."""
        folder = self.folder / "compilers"
        folder.mkdir()
        flags = "-Wall -Wextra -pedantic -Werror" + (f" -fsanitize={SANITIZERS}" if SANITIZERS else "")
        for name, compiler in COMPILERS.items():
            (folder / name).write_text(f'#!/bin/sh\nexec {shlex.quote(compiler)} {flags} "$@"\n')
            (folder / name).chmod(0o700)
        return folder

    def run_program(self, *command, status=0, **more):
        """Runs it to its end, and answers its output. What leaks has another status than the one expected."""
        done = subprocess.run(command, cwd=self.folder, env=self.environment | more, timeout=LONGEST_WAIT, text=True,
                              stdout=subprocess.PIPE, stderr=subprocess.PIPE, check=False)
        self.assertEqual(done.returncode, status, f"{command}\n{done.stdout}{done.stderr}")
        return done.stdout

    def tool(self, *words):
        """Runs the installed tool, which finds its library by itself."""
        self.run_program(PREFIX / "bin/roster", *words, LD_LIBRARY_PATH="")

    def start(self, *command):
        """Starts a program that runs until its input ends."""
        program = subprocess.Popen(command, cwd=self.folder, env=self.environment, text=True, stdin=subprocess.PIPE,
                                   stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        self.addCleanup(self.end, program)
        return program

    def end(self, program):
        if program.poll() is None:
            program.kill()
        program.communicate()

    def stop(self, program):
        """Ends its input; answers what else it printed."""
        output, errors = program.communicate(timeout=LONGEST_WAIT)
        self.assertEqual(program.returncode, 0, errors)
        return output
