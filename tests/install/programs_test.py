"""Can a stranger's program be built against the installation, by pkg-config and by CMake, and does it work?"""
import pathlib
import shutil
import time
import unittest

import installed

TESTS = pathlib.Path(__file__).parents[1]
LANGUAGES = {"C": ("cc -std=c11", "api/round_trip.c"), "CXX": ("c++ -std=c++20", "install/round_trip.cpp")}


class ProgramsTest(installed.World):
    def copied(self, source):
        """A copy of a program of ours as a stranger writes it, who has no folder of that name."""
        text = (TESTS / source).read_text().replace('#include "api/roster.h"', "#include <roster/roster.h>")
        copy = self.folder / pathlib.Path(source).name
        copy.write_text(text)
        return copy.name

    def check_round_trip(self, program):
        """What one process writes the next one reads."""
        written = self.run_program(program, "write").split()
        self.run_program(program, "read", *written)
        self.make_roster()

    def test_links_with_what_pkg_config_says(self):
        for compiler, source in LANGUAGES.values():
            with self.subTest(source=source):
                command = f"{compiler} {self.copied(source)} -o round_trip $(pkg-config --cflags --libs roster)"
                self.run_program("sh", "-c", command)
                self.check_round_trip(self.folder / "round_trip")

    def configure(self, language, source, wanted, status=0):
        build = self.folder / f"{language}-{wanted}"
        self.run_program("cmake", "-S", self.folder, "-B", build, f"-DLANGUAGE={language}", f"-DSOURCE={source}",
                         f"-DWANTED={wanted}", f"-DCMAKE_PREFIX_PATH={installed.PREFIX}", status=status)
        return build

    def test_links_with_what_find_package_finds(self):
        shutil.copy(TESTS / "install/stranger.cmake", self.folder / "CMakeLists.txt")
        for language, (_, source) in LANGUAGES.items():
            with self.subTest(language=language):
                build = self.configure(language, self.copied(source), "1.0")
                self.run_program("cmake", "--build", build)
                self.check_round_trip(build / "round_trip")
        self.configure("C", "round_trip.c", "2.0", status=1)

    def test_pages_and_completions_lie_where_they_are_looked_for(self):
        share = installed.PREFIX / "share"
        for file in ("man/man1/roster.1", "man/man5/roster-files.5", "man/man7/roster-query.7",
                     "bash-completion/completions/roster", "zsh/vendor-completions/_roster",
                     "fish/vendor_completions.d/roster.fish", "doc/libroster1/copyright"):
            self.assertTrue((share / file).is_file(), file)

    def test_the_library_finds_its_helpers(self):
        del self.environment["ROSTER_HELPER_DIR"]
        self.tool("add", "--set", "First=Ana")
        log = self.folder / "cache_home/org.quillon.Roster/RosterSync.log"
        deadline = time.monotonic() + installed.LONGEST_WAIT
        while not log.exists() and time.monotonic() < deadline:
            time.sleep(0.01)
        self.assertTrue(log.exists(), "a save starts RosterSync, which lies where the installation puts it")


if __name__ == "__main__":
    unittest.main()
