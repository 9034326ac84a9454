"""Do the installed examples build as their first lines say, and do what those promise, without leaving anything?"""
import pathlib
import re
import shutil
import subprocess
import sys
import unittest

import installed

BUILD_LINE = re.compile(r"^//   (c(?:c|\+\+) .*)$", re.M)


class ExamplesTest(installed.World):
    def setUp(self):
        super().setUp()
        shutil.copytree(installed.EXAMPLES, self.folder, dirs_exist_ok=True)

    def build(self, source):
        """Builds an example with the command in its comment; answers the program."""
        source = self.folder / source
        command = BUILD_LINE.search(source.read_text()).group(1)
        subprocess.run(command, shell=True, cwd=source.parent, env=self.environment, check=True)
        return source.with_suffix("")

    def test_adding_is_seen_by_those_who_look_up_and_watch(self):
        for folder, ending, told in (("c", "c", "new {}\n"), ("cpp", "cpp", "{} is Ana Lima\n")):
            with self.subTest(folder):
                add, lookup, watch = (self.build(f"{folder}/{name}.{ending}") for name in ("add", "lookup", "watch"))
                self.run_program(lookup, "lima", status=1)
                watcher = self.start(watch)
                self.assertEqual(watcher.stdout.readline(), "watching\n")
                person = self.run_program(add, "Ana", "Lima", "ana@lima.example").strip()
                self.assertEqual(self.run_program(lookup, "lima"),
                                 "Ana Lima <ana@lima.example>\nAna Lima <sales@example.org>\n")
                while told.format(person) != (line := watcher.stdout.readline()):
                    self.assertTrue(line, f"{watch} ended without having told of {person}")
                self.stop(watcher)
                self.run_program(add, "too few", status=2)
                self.make_roster()

    def test_loops_of_toolkits_serve_the_contacts(self):
        for people, source in enumerate(("loops/glib.c", "loops/qt.cpp")):
            with self.subTest(source):
                loop = self.start(self.build(source))
                self.assertEqual(loop.stdout.readline(), f"{people} people\n")
                self.tool("add", "--set", "First=Ana")
                self.assertEqual(loop.stdout.readline(), f"{people + 1} people\n")
                self.stop(loop)

    @unittest.skipIf(installed.SANITIZERS == "thread", "the interpreter does not run with that runtime")
    def test_python_calls_the_plain_functions(self):
        self.tool("add", "--set", "Last=Øster", "--set", "Email;home=o@x.example")
        more = {}
        if installed.SANITIZERS:  # the interpreter is not built with it, and keeps what it has until its end
            compiler = installed.COMPILERS["cc"]
            runtimes = [subprocess.check_output([compiler, f"-print-file-name={name}"], text=True).strip()
                        for name in ("libasan.so", "libstdc++.so")]
            more = {"LD_PRELOAD": " ".join(runtimes), "ASAN_OPTIONS": "detect_leaks=0"}
        script = self.folder / "python/lookup.py"
        self.assertEqual(self.run_program(sys.executable, script, "øst", **more), "Øster <o@x.example>\n")

    def test_a_project_of_all_builds(self):
        build = self.folder / "build"
        self.run_program("cmake", "-S", self.folder, "-B", build, f"-DCMAKE_PREFIX_PATH={installed.PREFIX}")
        targets = self.run_program("cmake", "--build", build, "--target", "help")
        for target in ("lookup", "add", "watch", "lookup-cpp", "add-cpp", "watch-cpp", "glib", "qt"):
            self.assertIn(f"... {target}\n", targets)
        self.run_program("cmake", "--build", build, "--target", "lookup")
        self.run_program(build / "lookup", "nobody", status=1)


if __name__ == "__main__":
    unittest.main()
