"""Does each installed header compile alone, those of the plain functions in C too, and are they all that programs need?"""
import concurrent.futures
import pathlib
import re
import subprocess
import unittest

import installed

TOOL = pathlib.Path(__file__).parents[2] / "tools/roster"
INCLUDE = installed.PREFIX / "include"
DIALECTS = {"c": ["-x", "c", "-std=c11"], "c++": ["-x", "c++", "-std=c++20"]}


def closure(header, seen):
    """The header with all it includes of ours."""
    if header not in seen:
        seen.add(header)
        for included in re.findall(r"^#include <(roster/[^>]+)>", (INCLUDE / header).read_text(), re.M):
            closure(included, seen)
    return seen


def complaint(dialect, header):
    """What the compiler says against it; nothing when all is well."""
    compiler = installed.COMPILERS["cc" if dialect == "c" else "c++"]
    command = [compiler, *DIALECTS[dialect], "-Wall", "-Wextra", "-pedantic", "-Werror", "-fsyntax-only", f"-I{INCLUDE}"]
    done = subprocess.run([*command, "-"], input=f"#include <{header}>\ntypedef int something;\n", text=True,
                          stderr=subprocess.PIPE, check=False)
    return done.stderr


class HeadersTest(unittest.TestCase):
    def test_compile_alone(self):
        everything = {path.relative_to(INCLUDE).as_posix() for path in INCLUDE.rglob("*.h")}
        plain = {header for header in closure("roster/roster.h", set()) if header.endswith(".h")}
        self.assertLess(plain, everything)
        jobs = [("c", header) for header in sorted(plain)] + [("c++", header) for header in sorted(everything)]
        with concurrent.futures.ThreadPoolExecutor(2) as pool:
            for job, said in zip(jobs, pool.map(lambda job: complaint(*job), jobs)):
                with self.subTest(job):
                    self.assertEqual(said, "")

    def test_name_each_other_below_one_folder(self):
        for header in INCLUDE.rglob("*.h"):
            self.assertNotRegex(header.read_text(), r'(?m)^#include "')

    def test_are_all_that_the_tool_needs(self):
        for source in TOOL.iterdir():
            for header in re.findall(r'(?m)^#include "(\w+/[^"]+)"', source.read_text()):
                self.assertTrue((INCLUDE / "roster" / header).exists(), f"{source.name} includes {header}")


if __name__ == "__main__":
    unittest.main()
