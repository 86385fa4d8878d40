#!/usr/bin/env python3
"""The tool in the hands of a person: Ctrl-C and going on, questions and the progress bar at a terminal, and what a
large chart costs.

usage: terminal_test.py PROGRAM FOLDER [--sanitized]
"""
import os
import pty
import resource
import shutil
import signal
import subprocess
import sys
import unittest

PROGRAM, FOLDER = os.path.abspath(sys.argv[1]), sys.argv[2]
SANITIZED = "--sanitized" in sys.argv
BANDS = 36
INTERRUPTED, NOT_CONFIRMED, LIBRARY, USAGE = 130, 10, 4, 2


def chart(rows, columns):
    fields = " ".join(f"SPECTRAL_NM{380 + 10 * band}" for band in range(BANDS))
    lines = ["CGATS.17", "BEGIN_DATA_FORMAT", "SAMPLE_NAME X Y WIDTH HEIGHT " + fields, "END_DATA_FORMAT", "BEGIN_DATA"]
    for row in range(rows):
        for column in range(columns):
            seed = row * 131 + column * 37
            values = [0.06 + 0.06 * ((seed * (band // 12 + 3) + band // 12 * 5 + seed // 7) % 11) for band in range(BANDS)]
            lines.append(f"R{row + 1}C{column + 1} {180 + 11 * column} {160 + 9 * row} 10 8 " +
                         " ".join(f"{value:.2f}" for value in values))
    return "\n".join(lines + ["END_DATA", ""])


def measured(file_name):
    """Name and first band of each patch of a file."""
    with open(file_name, encoding="utf-8") as file:
        lines = [line.rstrip("\n").split("\t") for line in file]
    fields = lines[lines.index(["BEGIN_DATA_FORMAT"]) + 1]
    rows = lines[lines.index(["BEGIN_DATA"]) + 1:lines.index(["END_DATA"])]
    name, band = fields.index("SAMPLE_NAME"), fields.index("SPECTRAL_NM380")
    return {row[name].strip('"'): float(row[band]) for row in rows}


def at_terminal(arguments, answers=()):
    """Runs the tool at a terminal of its own. @return exit code and all that it showed"""
    process, terminal = pty.fork()
    if process == 0:
        os.execv(PROGRAM, [PROGRAM] + arguments)
    shown = b""
    answers = list(answers)
    while True:
        try:
            part = os.read(terminal, 4096)
        except OSError:
            break
        if not part:
            break
        shown += part
        if answers and shown.rstrip().endswith(answers[0][0].encode()):
            os.write(terminal, answers.pop(0)[1].encode())
    os.close(terminal)
    return os.waitstatus_to_exitcode(os.waitpid(process, 0)[1]), shown.decode()


class ToolTest(unittest.TestCase):
    def setUp(self):
        shutil.rmtree(FOLDER, ignore_errors=True)
        os.makedirs(FOLDER)
        self.before = os.getcwd()
        os.chdir(FOLDER)
        with open("chart.cgats", "w", encoding="utf-8") as file:
            file.write(chart(6, 10))

    def tearDown(self):
        os.chdir(self.before)

    def scan_until_row(self, end):
        """A scan slow enough to be ended behind its second row. @return the process"""
        scan = subprocess.Popen([PROGRAM, "scan", "--virtual", "chart.cgats", "-o", "m.cgats", "--option",
                                 "Simulator.TimeScale=0.2"], stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
        for line in scan.stdout:
            if '"event":"row","rowsDone":2' in line:
                scan.send_signal(end)
                break
        self.rest = scan.communicate()[0]
        return scan

    def test_ctrl_c_keeps_what_was_measured_and_resume_goes_on(self):
        scan = self.scan_until_row(signal.SIGINT)
        self.assertEqual(scan.returncode, INTERRUPTED)
        self.assertIn('"result":"interrupted","file":"m.cgats.partial"', self.rest)
        self.assertFalse(os.path.exists("m.cgats"))
        kept = measured("m.cgats.partial")
        self.assertIn(len(kept), (20, 30), "whole rows: the row in hand is ended")

        run = subprocess.run([PROGRAM, "--virtual", "scan", "chart.cgats", "-o", "m.cgats", "--resume"],
                             capture_output=True, text=True, check=False)
        self.assertEqual(run.returncode, 0, run.stderr)
        self.assertIn(f'"event":"start","rowsDone":{len(kept) // 10},"rows":6', run.stdout)
        self.assertFalse(os.path.exists("m.cgats.partial"))
        with open("chart.cgats", encoding="utf-8") as file:
            wanted = {line.split()[0]: float(line.split()[5]) for line in file if line.startswith("R")}
        result = measured("m.cgats")
        self.assertEqual(list(result), list(wanted), "the order of the layout")
        for name, value in wanted.items():
            self.assertAlmostEqual(result[name], value, places=4, msg=name)

    def test_a_killed_scan_leaves_no_half_file(self):
        scan = self.scan_until_row(signal.SIGKILL)
        self.assertEqual(scan.returncode, -signal.SIGKILL)
        self.assertEqual([name for name in os.listdir() if name != "chart.cgats"], [])

    def test_progress_at_a_terminal(self):
        code, shown = at_terminal(["scan", "--virtual", "chart.cgats", "-o", "m.cgats"])
        self.assertEqual(code, 0, shown)
        self.assertIn("] 3/6 rows, 30/60 patches, 0:00 left", shown)
        self.assertIn("60 of 60 patches are measured: m.cgats", shown)
        self.assertNotIn("{", shown)

    def test_the_white_base_is_replaced_only_after_yes(self):
        subprocess.run([PROGRAM, "--virtual", "whitebase", "--save", "old.cgats"], capture_output=True, check=True)
        write = ["--virtual", "whitebase", "--write", "old.cgats"]
        question = "Replace the white base of table 640001? [yes/no]"
        code, shown = at_terminal(write, [(question, "no\n")])
        self.assertEqual(code, NOT_CONFIRMED, shown)
        code, shown = at_terminal(write, [(question, "yes\n")])
        self.assertEqual(code, 0, shown)
        self.assertIn("Home the arm and calibrate", shown)

    def test_corners_are_asked_for_one_by_one(self):
        answers = [(f"patch {name} and press Enter.", "\n") for name in ("R1C1", "R1C10", "R6C1")]
        code, shown = at_terminal(["scan", "chart.cgats", "-o", "m.cgats", "--virtual", "--corners"], answers)
        # Nobody moves the virtual arm by hand: all three places are the same.
        self.assertEqual(code, USAGE, shown)
        self.assertIn("the three corners lie in one line", shown)
        self.assertIn("R6C1 at ", shown)

    @unittest.skipIf(SANITIZED, "there the library's search path holds the simulation too")
    def test_without_the_instruments_library_every_command_says_so(self):
        library = os.path.join(os.path.dirname(PROGRAM), "..", "real")
        for command in (["info"], ["get", "J4TVersion"], ["home"]):
            run = subprocess.run([PROGRAM, "--library", library] + command, capture_output=True, text=True, check=False)
            self.assertEqual(run.returncode, LIBRARY, run.stderr)
            self.assertIn("status 104 (J4_ResultFrameFailure)", run.stderr)
            self.assertEqual(run.stdout, "")
        # Without the option no table may be simulated in place of a real one.
        run = subprocess.run([PROGRAM, "info"], capture_output=True, text=True, check=False)
        self.assertEqual(run.returncode, LIBRARY, run.stderr)

    @unittest.skipIf(SANITIZED, "the sanitizer needs memory of its own")
    def test_a_large_chart_costs_little_memory(self):
        with open("large.cgats", "w", encoding="utf-8") as file:
            file.write(chart(25, 40))
        subprocess.run([PROGRAM, "scan", "--virtual", "large.cgats", "-o", "m.cgats"], stdout=subprocess.DEVNULL,
                       check=True)
        self.assertEqual(len(measured("m.cgats")), 1000)
        self.assertLess(resource.getrusage(resource.RUSAGE_CHILDREN).ru_maxrss, 100 * 1024, "KiB")


unittest.main(argv=sys.argv[:1])
