#!/usr/bin/env python3
"""Runs an example program that scans rows on the virtual table: what it prints, and how it fails.

usage: scan_rows_test.py PROGRAM [ARGUMENT...]
"""
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

BANDS = range(380, 731, 10)
PAPER = 0.88


def ramp(start, step):
    return [start + step * band for band in range(len(BANDS))]


# Patches of 20 mm side by side, two rows; by name, with place of the middle and reflectance.
CHART = {
    "A1": (210, 250, ramp(0.10, 0.01)),
    "A2": (232, 250, ramp(0.60, -0.01)),
    "A3": (254, 250, ramp(0.30, 0.0)),
    "B1": (210, 300, ramp(0.05, 0.02)),
    "B2": (232, 300, ramp(0.70, -0.015)),
}
ROW_A = "190,250,274,250,3"
ROW_B = "190,300,252,300,2"


def write_chart(path):
    fields = ["SAMPLE_NAME", "X", "Y", "WIDTH", "HEIGHT"] + [f"SPECTRAL_NM{band}" for band in BANDS]
    rows = [" ".join([name, str(x), str(y), "20", "20"] + [f"{value:.4f}" for value in spectrum])
            for name, (x, y, spectrum) in CHART.items()]
    path.write_text("\n".join([
        "CGATS.17", f'PAPER_REFLECTANCE "{PAPER}"', f"NUMBER_OF_FIELDS {len(fields)}", "BEGIN_DATA_FORMAT",
        " ".join(fields), "END_DATA_FORMAT", f"NUMBER_OF_SETS {len(rows)}", "BEGIN_DATA", *rows, "END_DATA", ""]))


class ExampleTest(unittest.TestCase):
    program = []

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.chart = Path(folder.name) / "chart.cgats"
        write_chart(self.chart)

    def run_program(self, *arguments, options=()):
        """The program's exit code, its lines of output, and its messages."""
        given = [f"Simulator.ChartFile={self.chart}", *options]
        command = [*self.program, *(word for option in given for word in ("-o", option)), *arguments]
        result = subprocess.run(command, capture_output=True, text=True, timeout=60)
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
    ExampleTest.program = sys.argv[1:]
    unittest.main(argv=sys.argv[:1])
