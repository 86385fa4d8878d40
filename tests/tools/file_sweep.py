#!/usr/bin/env python3
"""Fails each call by which a scan works on its files, once and from then on, as the system would (strace injects it).
The scan either ends with the whole file, or says that it failed and leaves no wrong one; another scan then goes on.

usage: file_sweep.py PROGRAM FOLDER [STRIDE]
"""
import json
import os
import shutil
import subprocess
import sys

sys.path.append(os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "support"))
from chart_text import chart_text  # noqa: E402  the tests are no package

PROGRAM, FOLDER = map(os.path.abspath, sys.argv[1:3])
STRIDE = int(sys.argv[3]) if len(sys.argv) > 3 else 1
ROWS, COLUMNS, DONE, FILE = 3, 8, 0, 3
OUTPUT, PARTIAL = "m.cgats", "m.cgats.partial"
CALLS = {"openat": "EACCES", "write": "ENOSPC", "fsync": "EIO", "rename": "EIO", "ftruncate": "EIO", "close": "EIO",
         "unlink": "EACCES", "flock": "ENOLCK", "read": "EIO"}


def wanted():
    return {f"R{row}C{column}": 0.06 + 0.06 * ((row * 5 + column * 4) % 13)
            for row in range(ROWS) for column in range(COLUMNS)}


def write_chart():
    patches = []
    for name, value in wanted().items():
        row, column = map(int, name[1:].split("C"))
        patches.append((name, 200 + 12 * column, 160 + 12 * row, 12, 12, [value] * 36))
    with open("chart.cgats", "w", encoding="ascii") as file:
        file.write(chart_text(patches))


def measured(name):
    """The last band of each patch whose row is whole."""
    with open(name, encoding="ascii") as file:
        lines = file.read().split("\n")
    rows = [line.split("\t") for line in lines[lines.index("BEGIN_DATA") + 1:-1]]
    return {row[1]: float(row[-1]) for row in rows if len(row) > 36}


def is_right(name):
    found, should = measured(name), wanted()
    return found.keys() == should.keys() and all(abs(found[patch] - should[patch]) < 1e-3 for patch in should)


def scan(*more, inject=None):
    """@return exit code, events, and whether the call was reached"""
    files = [OUTPUT, PARTIAL, OUTPUT + ".lock", OUTPUT + ".1.tmp", PARTIAL + ".1.tmp"]
    command = [PROGRAM, "--virtual", "--json", "scan", "chart.cgats", "-o", OUTPUT, "--trust-place", *more]
    if inject:
        call, when = inject
        paths = [word for file in files for word in ("-P", file, "-P", os.path.abspath(file))]
        command = ["strace", "-f", "-o", "trace", *paths, "-e", "trace=" + call, "-e", f"inject={call}:error={CALLS[call]}:when={when}"] + command
    run = subprocess.run(command, capture_output=True, text=True, check=False, stdin=subprocess.DEVNULL)
    reached = False
    if inject:
        with open("trace", encoding="utf-8", errors="replace") as trace:
            reached = "(INJECTED)" in trace.read()
        os.remove("trace")
    return run.returncode, [json.loads(line) for line in (run.stdout + run.stderr).splitlines()], reached


def findings_of(call, code, events):
    """What is wrong behind a scan in which the call failed."""
    kinds = [event.get("event") for event in events]
    if code not in (DONE, FILE):
        yield f"exit code {code}"
    if os.path.exists(OUTPUT) and not is_right(OUTPUT):
        yield "a file that is not right"
    if code == DONE and not os.path.exists(OUTPUT):
        yield "done without a file"
    if code != DONE and not any("error" in event for event in events):
        yield "it does not say why"
    if "notice" not in kinds and code == FILE and not os.path.exists(OUTPUT):
        reported = {f"R{event['row'] - 1}C{column}" for event in events if event.get("event") == "row"
                    for column in range(COLUMNS)}
        if reported - (measured(PARTIAL).keys() if os.path.exists(PARTIAL) else set()):
            yield "rows that were reported are lost"
    resume = "--resume" if os.path.exists(PARTIAL) else "--restart"
    code, events, _ = scan(resume, *(["--force"] if os.path.exists(OUTPUT) else []))
    if code != DONE or not is_right(OUTPUT):
        yield f"{resume} ends with {code}: {events[-1:]}"
    left = set(os.listdir()) - {"chart.cgats", OUTPUT}
    if left and call != "unlink":
        yield f"left behind: {left}"


def main():
    runs = findings = 0
    for call in CALLS:
        for lasting in ("", "+"):
            number, reached = 1, True
            while reached:
                shutil.rmtree(FOLDER, ignore_errors=True)
                os.makedirs(FOLDER)
                os.chdir(FOLDER)
                os.environ["XDG_STATE_HOME"] = FOLDER + "-state"
                write_chart()
                code, events, reached = scan(inject=(call, f"{number}{lasting}"))
                for finding in findings_of(call, code, events) if reached else ():
                    print(f"{call} {number}{lasting}: {finding}")
                    findings += 1
                runs += reached
                number += STRIDE
    print(f"{runs} scans in which a call failed, {findings} findings")
    return 0 if findings == 0 and runs > 0 else 1


if __name__ == "__main__":
    sys.exit(main())
