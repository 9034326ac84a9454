#!/usr/bin/env python3
"""Compares what the library shows with docs/exports.txt, so that nothing is shown, and nothing withdrawn, unawares.

usage: exports.py LIBRARY LIST           says how they differ; status 1 when they do
       exports.py --write LIBRARY LIST   writes the list anew
"""
import difflib
import re
import subprocess
import sys

HEADINGS = {
    "ROSTER_1.0": """The plain functions and the words of the system, for C: binary compatible within the major version. A program that
was linked against one of these runs with every later release, so none of them ever goes or changes.""",
    "ROSTER_CXX_1.0": """The object interface, for C++: source compatible within the major version. A program is compiled anew for a new
release; symbols come and go with it. Type information comes with the classes.""",
}
# How programmers write what the compiler spells out.
SHORTER = [("std::__cxx11::basic_string<char, std::char_traits<char>, std::allocator<char> >", "std::string"),
           ("std::basic_string_view<char, std::char_traits<char> >", "std::string_view"), ("[abi:cxx11]", "")]
# What the compiler makes for a class beside what we write; where it puts that is its own choice.
OF_CLASSES = re.compile(r"^((construction )?vtable|VTT|typeinfo( name)?|(non-)?virtual( override)? thunk) (for|to) ")
# Whose code never shows: that of the standard library and of what the library is built from.
FOREIGN = re.compile(r"^(std|__gnu_cxx|fmt|icu(_\d+)?|nlohmann|__asan|__ubsan)::|^(sqlite3|XML|u|ucnv|ubidi)_")
# What belongs to the host of a library: where it stands, its locale, its signals, its environment, its end, its output.
FORBIDDEN = {"chdir", "fchdir", "umask", "setlocale", "uselocale", "signal", "sigaction", "setenv", "putenv", "unsetenv",
             "exit", "_exit", "quick_exit", "printf", "puts", "putchar", "setrlimit", "system", "popen", "fork", "alarm"}


def symbols(library, *options):
    """(symbol, version) of each dynamic symbol; compiler-made data of the sanitizers has no version and is left out."""
    lines = subprocess.check_output(["nm", "-D", *options, library], text=True).splitlines()
    for line in lines:
        name, _, version = line[19:].partition("@")
        for long, short in SHORTER:
            name = name.replace(long, short)
        if line[17] != "A":
            yield name, version.lstrip("@")


def written(exported):
    """The text of docs/exports.txt."""
    text = "Which symbols libroster shows. Made by `tests/install/exports.py --write`; a test compares.\n"
    for version, heading in HEADINGS.items():
        names = sorted({name for name, of in exported if of == version and not OF_CLASSES.match(name)})
        text += f"\n{heading}\n\n[{version}] {len(names)} symbols\n" + "".join(f"{name}\n" for name in names)
    return text


def problems(library, exported):
    for name, version in exported:
        if version not in HEADINGS:
            yield f"{name} is shown without a version of ours; see src/exports.map"
        if FOREIGN.search(OF_CLASSES.sub("", name)):
            yield f"{name} is not ours to show; see src/exports.map"
    for name in sorted({name for name, _ in symbols(library, "--undefined-only")} & FORBIDDEN):
        yield f"the library calls {name}, which is the host's to call"


def main():
    arguments = sys.argv[1:]
    writes = arguments[:1] == ["--write"]
    library, path = arguments[writes:]
    exported = list(symbols(library, "--defined-only", "--demangle"))
    found = list(problems(library, exported))
    text = written(exported)
    if writes:
        with open(path, "w", encoding="utf-8") as file:
            file.write(text)
    else:
        with open(path, encoding="utf-8") as file:
            listed = file.read()
        difference = list(difflib.unified_diff(listed.splitlines(), text.splitlines(), path, library, lineterm="", n=0))
        if difference:
            found += [*difference, f"When this is meant: tests/install/exports.py --write {library} {path}"]
    print("\n".join(found))
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
