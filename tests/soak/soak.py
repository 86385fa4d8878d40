#!/usr/bin/env python3
"""The long run: sessions of one process, whose memory and handles must stay as they are; and scans that are killed at
any moment and taken up again, of which each row that was reported must be in the result.

usage: soak.py BUILD FOLDER [SESSIONS] [KILLS]
"""
import json
import os
import random
import shutil
import subprocess
import sys
import time

ROOT = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..")
sys.path[:0] = [os.path.join(ROOT, "python"), os.path.join(ROOT, "tests", "support")]
import j4tavla  # noqa: E402  the one of this source tree
from chart_text import chart_text  # noqa: E402

BUILD, FOLDER = map(os.path.abspath, sys.argv[1:3])
SESSIONS, KILLS = [int(count) for count in sys.argv[3:5]] + [10000, 500][len(sys.argv) - 3:]
COLUMNS = 10


def write_chart(name, rows):
    patches = [(f"R{row + 1}C{column + 1}", 200 + 10 * column, 160 + 10 * row, 10, 10,
                [0.06 + 0.06 * (((row * 131 + column * 37) * (third + 3)) // 5 % 13)
                 for third in range(3) for _ in range(12)]) for row in range(rows) for column in range(COLUMNS)]
    with open(name, "w", encoding="ascii") as file:
        file.write(chart_text(patches))


def memory_and_handles():
    """Resident memory in KiB, and open files."""
    with open("/proc/self/statm", encoding="ascii") as file:
        return int(file.read().split()[1]) * os.sysconf("SC_PAGESIZE") // 1024, len(os.listdir("/proc/self/fd"))


def run_sessions():
    """Connect, scan, reset, again and again. @return whether memory and handles stayed"""
    # What is kept for each thread, file and locale is there after some rounds.
    settled = SESSIONS // 10
    before = (0, 0)
    with j4tavla.Table(library=os.path.join(BUILD, "bin", "libj4tavla64.so"), chart="chart.cgats") as table:
        for session in range(SESSIONS):
            if session == settled:
                before = memory_and_handles()
            table.connect()
            table.options["MeasurementMode"] = "ScanningReflectance"
            table.go_home()
            table.calibrate()
            row = session % 6
            found = len(table.scan((187, 160 + 10 * row), (303, 160 + 10 * row)))
            if found != COLUMNS:
                raise AssertionError(f"session {session}: {found} patches")
            table.options["Reset"] = "J4TAll"
        after = memory_and_handles()
    print(f"sessions: {SESSIONS}; memory {before[0]} KiB after {settled}, {after[0]} KiB at the end; "
          f"open files {before[1]} and {after[1]}")
    return after[0] <= before[0] + 512 and after[1] == before[1]


def patches_of(name):
    """Names of the patches whose rows are whole in a file that may be cut."""
    with open(name, encoding="ascii") as file:
        lines = file.read().split("\n")
    data = lines[lines.index("BEGIN_DATA") + 1:-1]
    return {line.split("\t")[1] for line in data if line.count("\t") > 36}


def run_kills():
    """Scans killed at any moment. @return whether each reported row was kept"""
    chance = random.Random(1)
    scan = [os.path.join(BUILD, "bin", "j4tavla"), "--virtual", "scan", "chart.cgats", "-o", "m.cgats", "--json",
            "--trust-place", "--option", "Simulator.TimeScale=0.05"]
    reported, lost, finished, kills = set(), 0, 0, 0
    while kills < KILLS:
        resume = ["--resume"] if os.path.exists("m.cgats.partial") else []
        with open("events", "w+", encoding="utf-8") as events:
            with subprocess.Popen(scan + resume, stdout=events, stderr=subprocess.DEVNULL) as process:
                try:
                    code = process.wait(chance.uniform(0.0, 1.5))
                except subprocess.TimeoutExpired:
                    process.kill()
                    code = None
            events.seek(0)
            for line in events:
                if line.endswith("\n") and (event := json.loads(line))["event"] == "row":
                    reported |= {f"R{event['row']}C{column + 1}" for column in range(COLUMNS)}
        kills += code is None
        if code not in (None, 0):
            raise AssertionError(f"exit code {code}: what was left is not taken up")
        result = "m.cgats" if os.path.exists("m.cgats") else "m.cgats.partial"
        lost += len(reported - (patches_of(result) if os.path.exists(result) else set()))
        if result == "m.cgats":
            finished += 1
            reported = set()
            for name in (result, "m.cgats.partial"):
                if os.path.exists(name):
                    os.remove(name)
    print(f"kills: {kills}; scans that were finished {finished}; patches reported and lost {lost}")
    return lost == 0


def main():
    shutil.rmtree(FOLDER, ignore_errors=True)
    os.makedirs(FOLDER)
    os.chdir(FOLDER)
    os.environ["XDG_STATE_HOME"] = FOLDER
    begin = time.monotonic()
    write_chart("chart.cgats", 6)
    good = [run_sessions(), run_kills()]
    print(f"{time.monotonic() - begin:.0f} s")
    return 0 if all(good) else 1


if __name__ == "__main__":
    sys.exit(main())
