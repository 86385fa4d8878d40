#!/usr/bin/env python3
"""The programs in docs/languages.md, built and run by the commands that stand there: all print what stands there.

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


def extract(page, folder):
    """Writes the blocks of the page that are files, and gives those that are commands."""
    blocks = re.findall(r"^```(\w+)\n(.*?)^```$", page.read_text(encoding="utf-8"), flags=re.M | re.S)
    for language, text in blocks:
        if language != "sh":
            (folder / FILES[language]).write_text(text, encoding="utf-8")
    if sorted(language for language, _ in blocks if language != "sh") != sorted(FILES):
        sys.exit(f"{page} has other programs than it should: {[language for language, _ in blocks]}")
    return [text for language, text in blocks if language == "sh"]


def run(tree, libraries, chart):
    with tempfile.TemporaryDirectory() as name:
        folder = Path(name)
        environment, *programs = extract(tree / "docs/languages.md", folder)
        (folder / "out/linux").mkdir(parents=True)
        for link, target in [("python", tree / "python"), ("out/include", tree / "c_sdk/include"),
                             ("out/csharp", tree / "c_sdk/csharp"), ("out/linux/virtual", libraries),
                             ("out/chart.cgats", chart)]:
            (folder / link).symlink_to(target.resolve())
        expected = (folder / "expected.txt").read_text(encoding="utf-8")
        wrong = 0
        for commands in programs:
            result = subprocess.run(["sh", "-ec", environment + commands], cwd=folder, capture_output=True, text=True,
                                    timeout=120)
            if result.returncode != 0 or result.stdout != expected:
                print(f"{commands}ended with {result.returncode} and printed\n{result.stdout}{result.stderr}")
                wrong += 1
    if len(programs) != 4 or expected.count("\n") != 5:
        sys.exit("there should be four programs that measure five patches")
    return wrong


if __name__ == "__main__":
    if sys.argv[1] == "--extract":
        extract(*map(Path, sys.argv[2:]))
    else:
        sys.exit(run(*map(Path, sys.argv[1:])))
