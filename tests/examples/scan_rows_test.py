#!/usr/bin/env python3
"""Runs an example program that scans rows on the virtual table: what it prints, and how it fails.

usage: scan_rows_test.py [--environment] PROGRAM [ARGUMENT...]
  --environment  the program takes no options: those of the virtual table stand in the environment
"""
import os
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

sys.path.append(str(Path(__file__).parent.parent / "support"))
from printed_rows import CHART, write_chart

ROW_A = "190,250,274,250,3"
ROW_B = "190,300,252,300,2"


class ExampleTest(unittest.TestCase):
    program = []
    takes_options = True

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.chart = Path(folder.name) / "chart.cgats"
        write_chart(self.chart)

    def run_program(self, *arguments, options=()):
        """The program's exit code, its lines of output, and its messages."""
        given = [f"Simulator.ChartFile={self.chart}", *options]
        environment = dict(os.environ)
        command = [*self.program]
        if self.takes_options:
            command += [word for option in given for word in ("-o", option)]
        else:
            environment["J4TAVLA_OPTIONS"] = ";".join(given)
        result = subprocess.run([*command, *arguments], capture_output=True, text=True, timeout=60, env=environment)
        return result.returncode, [line.split("\t") for line in result.stdout.splitlines()], result.stderr

    def test_prints_what_lies_on_the_chart(self):
        code, lines, messages = self.run_program(ROW_B, ROW_A)
        self.assertEqual(code, 0, messages)
        self.assertIn("Table 640001 with instrument 240118", messages)
        self.assertEqual([line[:2] for line in lines], [["1", "1"], ["1", "2"], ["2", "1"], ["2", "2"], ["2", "3"]])
        for name, line in zip(["B1", "B2", "A1", "A2", "A3"], lines):
            expected = CHART[name][2]
            self.assertEqual(len(line) - 2, len(expected))
            for value, reflectance in zip(line[2:], expected):
                self.assertAlmostEqual(float(value), reflectance, delta=2e-4, msg=name)

    def test_tells_of_a_row_with_another_number_of_patches(self):
        code, lines, messages = self.run_program("190,250,274,250,4", ROW_B)
        self.assertEqual(code, 1)
        self.assertIn("Row 1 has 4 patches, but 3 were found.", messages)
        self.assertEqual(len(lines), 5)

    def test_ends_with_the_text_of_the_failure(self):
        for option, text in [
            ("Simulator.Tables=0", "J4_IsTableConnected failed with status 2: No device connected."),
            ("Simulator.SeatedInstrument=none",
             "J4_IsTableConnected failed with status 100: No j4 device connected to table"),
            ("Simulator.DirtyTile=yes", "J4_Calibrate failed with status 3: White base is dirty."),
            ("J4TScanSpeed=fast", "J4_SetOption failed with status 9: lexical_cast(): fail to convert 'fast'"),
        ]:
            if not self.takes_options and not option.startswith("Simulator."):
                continue
            with self.subTest(option):
                code, lines, messages = self.run_program(ROW_A, options=[option])
                self.assertEqual(code, 1)
                self.assertEqual(lines, [])
                self.assertIn(text, messages)

    def test_refuses_a_row_that_is_none(self):
        code, lines, messages = self.run_program("190,250,274")
        self.assertEqual(code, 2)
        self.assertEqual(lines, [])
        self.assertIn("usage:", messages)


if __name__ == "__main__":
    ExampleTest.takes_options = sys.argv[1] != "--environment"
    ExampleTest.program = sys.argv[1 if ExampleTest.takes_options else 2:]
    unittest.main(argv=sys.argv[:1])
