#!/usr/bin/env python3
"""Charts from a list of colours to their measurement: the pages as others read them (qpdf, Ghostscript, Poppler), and each
of them scanned on the virtual table, with colours that are computed here from the device values.

usage: chart_test.py PROGRAM FOLDER [--sanitized]
"""
import glob
import json
import os
import re
import struct
import subprocess
import unittest

import tool_test
from tool_test import CHECK, DONE, FILE, ROOT, USAGE, a_few_of, content_of, tool, write

MM = 72 / 25.4  # points
RESOLUTION = 72  # dots per inch: a dot is a point
SPOTS = os.path.join(ROOT, "examples", "charts", "colours.cgats")


def run(*words):
    return subprocess.run(words, check=True, capture_output=True).stdout


def table(name):
    """The rows of a file, each a dictionary of its fields."""
    lines = [re.findall(r'"[^"]*"|\S+', line) for line in content_of(name).splitlines()]
    fields = lines[lines.index(["BEGIN_DATA_FORMAT"]) + 1]
    return [dict(zip(fields, (word.strip('"') for word in row)))
            for row in lines[lines.index(["BEGIN_DATA"]) + 1:lines.index(["END_DATA"])]]


def device_values(row):
    """R, G, B or C, M, Y, K and the spot ink, from 0 to 1."""
    if "RGB_R" in row:
        return [float(row["RGB_" + channel]) / 255 for channel in "RGB"]
    return [float(row[field]) / 100 for field in row if re.fullmatch("CMYK_.|SPOT_.", field)]


def printed(values):
    """A spectrum of its own for each mixture: every ink takes its part of the bands, linearly."""
    inks = [1 - value for value in values] + [0] if len(values) == 3 else values
    absorbed = [(12, 36), (0, 24), (0, 12), (0, 36), (18, 30)]
    bands = [0.86] * 36
    for ink, (first, end) in zip(inks, absorbed):
        for band in range(first, end):
            bands[band] *= 1 - (0.93 - 0.01 * (band % 12)) * ink
    return bands


def write_print(layout, name):
    """The chart file of what comes from the press."""
    rows = table(layout)
    fields = [f"SPECTRAL_NM{380 + 10 * band}" for band in range(36)]
    write(name, "\n".join(
        ["CGATS.17", 'PAPER_REFLECTANCE "0.86"', "BEGIN_DATA_FORMAT", " ".join([*rows[0], *fields]), "END_DATA_FORMAT",
         "BEGIN_DATA"] + [" ".join(f'"{word}"' for word in [*row.values(), *(f"{factor:.5f}" for factor in printed(device_values(row)))])
                          for row in rows] + ["END_DATA", ""]))


def picture(text):
    """Width and pixels of a PPM file, 3 bytes each."""
    head = re.match(rb"P6\s+(\d+)\s+(\d+)\s+255\s", text)
    return int(head[1]), text[head.end():]


def plate(name):
    """Width and bytes of an uncompressed TIFF of 8 bits: what an ink leaves of the paper."""
    with open(name, "rb") as file:
        data = file.read()
    order = "<" if data[:2] == b"II" else ">"
    start = struct.unpack(order + "I", data[4:8])[0]
    count = struct.unpack(order + "H", data[start:start + 2])[0]
    entries = {}
    for i in range(count):
        tag, kind, length, value = struct.unpack(order + "HHII", data[start + 2 + 12 * i:start + 14 + 12 * i])
        if kind == 3 and length == 1 and order == ">":
            value >>= 16
        entries[tag] = (kind, length, value & 0xffff if kind == 3 and length == 1 else value)
    assert entries[259][2] == 1 and entries[258][2] == 8, entries

    def numbers(tag):
        kind, length, value = entries[tag]
        size, form = (2, "H") if kind == 3 else (4, "I")
        return (value,) if length == 1 else struct.unpack(f"{order}{length}{form}", data[value:value + size * length])

    strips = zip(numbers(273), numbers(279))
    return entries[256][2], b"".join(data[offset:offset + length] for offset, length in strips)


class ChartTest(unittest.TestCase):
    setUp = tool_test.ToolTest.setUp
    assert_measured = tool_test.ToolTest.assert_measured

    def make(self, arguments):
        made = tool(f"chart {arguments} -o chart.pdf --layout chart.cgats --force --date 2026-03-01")
        self.assertEqual(made.returncode, DONE, made.stderr)
        run("qpdf", "--check", "chart.pdf")
        return table("chart.cgats")

    def assert_page(self, rows, number, size):
        """The page has each patch where the layout has it, in its device values and no others."""
        box = re.search(rf"Page\s+{number} size:\s+([\d.]+) x ([\d.]+)", run("pdfinfo", "-f", str(number), "-l", str(number), "chart.pdf").decode())
        for points, length in zip(box.groups(), size):
            self.assertAlmostEqual(float(points) / MM, length, delta=0.01)
        pixels = {}
        if "RGB_R" in rows[0]:
            width, dots = picture(run("pdftoppm", "-r", str(RESOLUTION), "-f", str(number), "-l", str(number), "chart.pdf"))
            for channel in range(3):
                pixels[channel] = (width, dots[channel::3], False)
        else:
            for old in glob.glob("plate*"):
                os.remove(old)
            run("gs", "-q", "-dNOPAUSE", "-dBATCH", "-dSAFER", "-sDEVICE=tiffsep", f"-r{RESOLUTION}", "-sCompression=none",
                f"-dFirstPage={number}", f"-dLastPage={number}", "-sOutputFile=plate.tif", "chart.pdf")
            names = ["Cyan", "Magenta", "Yellow", "Black"] + (["Sample Orange"] if "SPOT_1" in rows[0] else [])
            self.assertEqual(len(glob.glob("plate(*")), len(names), "no other ink")
            for channel, name in enumerate(names):
                pixels[channel] = (*plate(f"plate({name}).tif"), True)
        for row in rows:
            centre = [float(row[axis]) - 150 for axis in "XY"]
            sides = [float(row[side]) for side in ("WIDTH", "HEIGHT")]
            for channel, value in enumerate(device_values(row)):
                width, dots, is_ink = pixels[channel]
                for step in ((0, 0), (0.45, 0.45), (-0.45, 0.45), (0.45, -0.45), (-0.45, -0.45)):
                    x, y = (int((at + share * side) * MM) for at, share, side in zip(centre, step, sides))
                    seen = dots[y * width + x] / 255
                    self.assertAlmostEqual(1 - seen if is_ink else seen, value, delta=0.006,
                                           msg=f"{row['SAMPLE_NAME']}, channel {channel}, {step}")

    def test_pages_hold_the_device_values_and_are_scanned_one_by_one(self):
        write("list.cgats", "CGATS.17\nBEGIN_DATA_FORMAT\nSAMPLE_ID SAMPLE_NAME CMYK_C CMYK_M CMYK_Y CMYK_K\nEND_DATA_FORMAT\nBEGIN_DATA\n" +
              "".join(f'{140 - i} "patch {i}" {i * 37 % 101} {i * 53 % 101 * 0.5} {i * 71 % 101} {i % 7 * 5}\n' for i in range(140)) + "END_DATA\n")
        for arguments, size, patches, pages in a_few_of(
                (SPOTS, (297, 210), 82, 1),
                ("list.cgats --paper 200,130 --patch 8,7 --gap 1,2", (200, 130), 140, 2),
                ("--list rgb --paper letter --portrait --seed 7 --patch 5.5,5.5", (215.9, 279.4), 70, 1),
                ("--list rgb5 --paper A4 --keep-order --patch 14,12", (297, 210), 187, 2)):
            with self.subTest(arguments):
                rows = self.make(arguments)
                self.assertEqual((len(rows), len({row["SAMPLE_NAME"] for row in rows})), (patches, patches))
                own_ids = {row["SAMPLE_NAME"]: row["SAMPLE_ID"] for row in table("list.cgats")} if "list.cgats" in arguments else {}
                self.assertEqual([row["SAMPLE_ID"] for row in rows],
                                 [own_ids.get(row["SAMPLE_NAME"], str(i + 1)) for i, row in enumerate(rows)])
                self.assertEqual({row["PAGE"] for row in rows}, set(map(str, range(1, pages + 1))))
                write_print("chart.cgats", "print.cgats")
                names = []
                for page in range(1, pages + 1):
                    own = [row for row in rows if row["PAGE"] == str(page)]
                    self.assert_page(own, page, size)
                    words = run("pdftotext", "-f", str(page), "-l", str(page), "chart.pdf", "-").decode().split()
                    self.assertIn(f"page {page} of {pages}, 2026-03-01", " ".join(words))
                    boxes = run("pdftotext", "-bbox", "-f", str(page), "-l", str(page), "chart.pdf", "-").decode()
                    self.assertLess(max(float(right) for right in re.findall('xMax="(.*?)"', boxes)), (size[0] - 5) * MM)
                    self.assertLessEqual({re.match("[A-Z]+", row["SAMPLE_LOC"])[0] for row in own}, set(words))
                    scan = tool(f"--virtual --chart print.cgats scan chart.cgats -o m{page}.cgats --force"
                                f"{f' --page {page}' if pages > 1 else ''} --option Simulator.Noise=0.0005")
                    self.assertEqual(scan.returncode, DONE, scan.stderr)
                    measured = table(f"m{page}.cgats")
                    self.assertEqual(len(measured), len(own))
                    for row, found in zip(own, measured):
                        for band, should in enumerate(printed(device_values(row))):
                            self.assertAlmostEqual(float(found[f"SPECTRAL_NM{380 + 10 * band}"]), should, delta=0.003,
                                                   msg=row["SAMPLE_NAME"])
                        self.assertEqual(device_values(row), device_values(found))
                    names += [row["SAMPLE_NAME"] for row in measured]
                self.assertEqual(names, [row["SAMPLE_NAME"] for row in rows])
                pages = [f"m{page}.cgats" for page in range(1, pages + 1)]
                self.assertEqual(tool(["join", *pages, "-o", "all.cgats", "--force"]).returncode, DONE)
                dropped = ["SAMPLE_ID", "PAGE", "X", "Y", "WIDTH", "HEIGHT", "SCAN_ROW", "SCAN_COLUMN"]
                for i, (row, joined) in enumerate(zip((row for page in pages for row in table(page)), table("all.cgats"), strict=True)):
                    self.assertEqual(joined, {"SAMPLE_ID": rows[i]["SAMPLE_ID"], "PAGE": rows[i]["PAGE"]} |
                                     {field: value for field, value in row.items() if field not in dropped})

    def test_a_list_gives_the_same_chart_each_time(self):
        first = self.make(SPOTS + " --simulated-print print.cgats"), *map(content_of, ("chart.cgats", "print.cgats"))
        with open("chart.pdf", "rb") as file:
            page = file.read()
        again = self.make(SPOTS + " --simulated-print print.cgats"), *map(content_of, ("chart.cgats", "print.cgats"))
        self.assertEqual(first, again)
        with open("chart.pdf", "rb") as file:
            self.assertEqual(page, file.read())
        with open("out.pdf", "wb") as file:
            subprocess.run([*tool_test.RUNNER, tool_test.PROGRAM, *f"chart {SPOTS} -o - --layout chart.cgats --force --date 2026-03-01".split()],
                           stdout=file, check=True)
        with open("out.pdf", "rb") as file:
            self.assertEqual(page, file.read(), "also on standard output")
        # The sample chart in the packages is what this makes.
        self.assertEqual(content_of("chart.cgats").split("BEGIN_DATA_FORMAT")[1],
                         content_of(os.path.join(ROOT, "examples", "charts", "chart.cgats")).split("BEGIN_DATA_FORMAT")[1])
        self.assertNotEqual(first[0], self.make(SPOTS + " --seed 2"))
        self.assertEqual([row["SAMPLE_NAME"] for row in self.make(SPOTS + " --keep-order")],
                         [row["SAMPLE_NAME"] for row in table(SPOTS)])

    def test_the_page_keeps_a_title_in_its_place_and_tells_what_is_not_on_it(self):
        head, rows = content_of(SPOTS).split("BEGIN_DATA\n")
        write("more.cgats", head.replace(" SPOT_1\n", " SPOT_1 VARNISH\n").replace("FIELDS 6", "FIELDS 7") + "BEGIN_DATA\n" +
              re.sub(r"(\d)\n", r"\1 100\n", rows))
        made = tool(["chart", "more.cgats", "-o", "chart.pdf", "--layout", "chart.cgats", "--force", "--json", "--title",
                     70 * "W\u65e5 "])
        self.assertEqual(made.returncode, DONE, made.stderr)
        self.assertEqual(json.loads(made.stdout)["notices"],
                         ["VARNISH is not printed, only carried over into the layout",
                          'the page has "?" for letters of the title that its font lacks'])
        words = re.findall('<word xMin="(.*?)" .*?xMax="(.*?)" .*?>(.*?)</word>', run("pdftotext", "-bbox", "chart.pdf", "-").decode())
        title = [float(right) for _, right, word in words if word.startswith(("W?", "\u2026"))]
        count = [float(left) for left, _, word in words if word == "page"]
        self.assertTrue(count[0] - 100 < max(title) < count[0], (title, count))

    def test_the_simulated_print_is_scanned_where_it_lies(self):
        self.make(SPOTS + " --simulated-print print.cgats")
        scan = tool(["--virtual", "--chart", "print.cgats", "--option", "Simulator.ChartOffset=3 -4 1", "scan", "chart.cgats", "-o", "m.cgats", "--align"])
        self.assertEqual(scan.returncode, DONE, scan.stderr)
        self.assert_measured("m.cgats", "print.cgats", 1e-4)
        # The crosshairs of the layout, moved by 30 and 20 mm.
        marks = [float(word) for word in re.search('^LAYOUT_MARKS "(.*)"', content_of("chart.cgats"), re.M)[1].split()]
        corners = ",".join(str(at + (30, 20)[i % 2]) for i, at in enumerate(marks))
        scan = tool(["--virtual", "--chart", "print.cgats", "--option", "Simulator.ChartOffset=30 20 0", "scan", "chart.cgats",
                     "-o", "m.cgats", "--force", "--corners", corners])
        self.assertEqual(scan.returncode, DONE, scan.stderr)
        self.assert_measured("m.cgats", "print.cgats", 1e-4)
        self.assertIn('SPOT_1_NAME "Sample Orange"', content_of("m.cgats"))
        # By its edges the page could lie either way; the inks tell.
        for colours in ("rgb5 --keep-order", "cmyk"):
            self.assertEqual(tool(f"chart --list {colours} -o c.pdf --layout c.cgats --simulated-print p.cgats --force").returncode, DONE)
            scan = tool(["--virtual", "--chart", "p.cgats", "--option", "Simulator.ChartOffset=0 0 180", "scan", "c.cgats",
                         "-o", "n.cgats", "--restart"])
            self.assertEqual(scan.returncode, CHECK, scan.stdout)
            self.assertIn("the colours have little to do with the device values of the layout", scan.stderr)
            self.assertFalse(os.path.exists("n.cgats"))

    def test_refuses_with_the_reason(self):
        write("twice.cgats", content_of(SPOTS).replace("C10M0Y0K0 ", "C5M0Y0K0 "))
        write("two.cgats", content_of(SPOTS))
        one = "CGATS.17\nBEGIN_DATA_FORMAT\nSAMPLE_ID LAB_L LAB_A LAB_B\nEND_DATA_FORMAT\nBEGIN_DATA\na 1 2 3\nEND_DATA\n"
        write("one.cgats", one)
        write("other.cgats", one.replace("LAB_B", "LAB_B GRAY").replace("a 1 2 3", "b 1 2 3 4"))
        self.make("--list rgb6 --patch 12,12")
        out = " -o c.pdf --layout c.cgats"
        for arguments, code, complaint in (
                ("chart" + out, USAGE, "either COLOURS or --list is required"),
                ("chart --list rgb99" + out, USAGE, "there is no list 'rgb99'"),
                ("chart --list rgb -o c.pdf", USAGE, "--layout is required"),
                ("chart missing.cgats" + out, FILE, "colours 'missing.cgats': the file can't be opened"),
                ("chart twice.cgats" + out, FILE, "line 17: the colour of line 16 is called C5M0Y0K0 too"),
                ("chart --list rgb --paper A9" + out, USAGE, "--paper 'A9' is neither A4"),
                ("chart --list rgb --paper 90,50" + out, USAGE, "no patch fits on the page"),
                ("chart --list rgb --patch 5,9" + out, USAGE, "patches of 5 mm can't be measured"),
                ("chart --list rgb --gap -10,0" + out, USAGE, "patches -10 mm apart would overlap"),
                ("chart --list rgb -o c.pdf --layout ./c.pdf", USAGE, "'./c.pdf' is named for two files"),
                ("chart --list rgb --date 2026-02-30" + out, USAGE, "--date '2026-02-30'"),
                ("chart --list rgb -o chart.pdf --layout c.cgats", FILE, "--force"),
                ("chart two.cgats -o two.cgats --layout c.cgats --force", USAGE, "is read by this command"),
                ("join one.cgats one.cgats -o j.cgats", FILE, "one.cgats: line 6: patch a stands in 'one.cgats' too"),
                ("join one.cgats two.cgats -o j.cgats", FILE, "two.cgats: no patches with spectra, LAB or XYZ values"),
                ("join one.cgats other.cgats -o j.cgats", FILE, "other.cgats: line 3: the fields are not those of 'one.cgats'"),
                ("--virtual scan chart.cgats --dry-run", USAGE, "the layout has 2 pages, and one of them lies on the bed"),
                ("--virtual scan chart.cgats --dry-run --page 3", FILE, "there is no page 3; the pages are 1, 2")):
            with self.subTest(arguments):
                ended = tool(arguments)
                self.assertEqual(ended.returncode, code, ended.stderr)
                self.assertIn(complaint, ended.stderr)
                self.assertFalse(os.path.exists("j.cgats") or os.path.exists("c.cgats") or os.path.exists("c.pdf"))


if __name__ == "__main__":
    unittest.main(argv=["chart_test.py"])
