#!/usr/bin/env python3
"""The programs in docs/languages.md and README.md, built and run by the commands that stand there: all print what stands
there. The README's way from a list of colours to a report works as often as it is copied.

usage: first_programs.py TREE LIBRARIES CHART     runs them in a folder that looks as after ./demo
       first_programs.py --extract PAGE FOLDER    writes the programs and their output (expected.txt) into a folder
"""
import re
import subprocess
import sys
import tempfile
from pathlib import Path

FILES = {"c": "first.c", "cpp": "first.cpp", "csharp": "first.cs", "python": "first.py", "cmake": "first.cmake",
         "text": "expected.txt"}


def extract(page, folder, languages=tuple(FILES)):
    """Writes the blocks of the page that are files, and gives those that are commands."""
    blocks = re.findall(r"^```(\w+)\n(.*?)^```$", page.read_text(encoding="utf-8"), flags=re.M | re.S)
    for language, text in blocks:
        if language != "sh":
            (folder / FILES[language]).write_text(text, encoding="utf-8")
    if sorted(language for language, _ in blocks if language != "sh") != sorted(languages):
        sys.exit(f"{page} has other programs than it should: {[language for language, _ in blocks]}")
    return [text for language, text in blocks if language == "sh"]


def run_commands(commands, folder, expected=None):
    """@return 1 if they fail or print something else, else 0"""
    result = subprocess.run(["sh", "-ec", commands], cwd=folder, capture_output=True, text=True, timeout=120)
    if result.returncode == 0 and expected in (None, result.stdout):
        return 0
    print(f"{commands}ended with {result.returncode} and printed\n{result.stdout}{result.stderr}")
    return 1


def run_languages(page, folder):
    environment, *programs = extract(page, folder)
    expected = (folder / "expected.txt").read_text(encoding="utf-8")
    if len(programs) != 4 or expected.count("\n") != 5:
        sys.exit("there should be four programs that measure five patches")
    return sum(run_commands(environment + commands, folder, expected) for commands in programs)


def run_readme(page, folder):
    program, road = extract(page, folder, ("c", "text"))
    expected = (folder / "expected.txt").read_text(encoding="utf-8")
    wrong = run_commands(program, folder, expected) + run_commands(road, folder) + run_commands(road, folder)
    if not (folder / "out/scan.html").exists():
        sys.exit("there should be a report")
    return wrong


def run(tree, libraries, chart):
    wrong = 0
    for page, run_page in ("docs/languages.md", run_languages), ("README.md", run_readme):
        with tempfile.TemporaryDirectory() as name:
            folder = Path(name)
            for link, target in [("python", tree / "python"), ("out/include", tree / "c_sdk/include"),
                                 ("out/csharp", tree / "c_sdk/csharp"), ("out/tolerances", tree / "tolerances"),
                                 ("out/linux/virtual", libraries), ("out/linux/j4tavla", libraries / "j4tavla"),
                                 ("out/chart.cgats", chart),
                                 ("out/demo/colours.cgats", tree / "examples/charts/colours.cgats")]:
                (folder / link).parent.mkdir(parents=True, exist_ok=True)
                (folder / link).symlink_to(target.resolve())
            wrong += run_page(tree / page, folder)
    return wrong


if __name__ == "__main__":
    if sys.argv[1] == "--extract":
        extract(*map(Path, sys.argv[2:]))
    else:
        sys.exit(run(*map(Path, sys.argv[1:])))
