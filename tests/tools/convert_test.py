#!/usr/bin/env python3
"""The tool's files in the hands of other software: CxF3 against a schema and its source, CSV, the choice of forms.

usage: convert_test.py PROGRAM FOLDER [TEST...]
"""
import csv
import json
import os
import subprocess
import sys
import unittest
import xml.etree.ElementTree as ElementTree

import tool_test
from tool_test import DONE, FILE, USAGE, content_of, tool, write

SCHEMA = os.path.join(os.path.dirname(os.path.abspath(__file__)), "cxf3.xsd")
CXF = "{http://colorexchangeformat.com/CxF3-core}"
BANDS = range(36)


def measured(device="CMYK_C CMYK_M CMYK_Y CMYK_K", values=("0 33.3 100 0", "0 0 0 100"), names=('"a <b>\t&"', "Grün")):
    """A measured file with noise below 0 in its black."""
    spectra = [[0.5 + 0.4 * (band % 7) / 7 for band in BANDS], [-0.00004 if band % 3 else 0.00001 for band in BANDS]]
    lines = ["CGATS.17", 'DESCRIPTOR "ink <&> paper"', 'CREATED "2026-03-01T12:00:00Z"', "INSTRUMENT_SERIAL 240118",
             "TABLE_SERIAL 640001", 'MEASUREMENT_SOURCE "MeasurementCondition=M1"', "BEGIN_DATA_FORMAT",
             f"SAMPLE_ID SAMPLE_NAME {device} X Y WIDTH HEIGHT SCAN_WAY " + " ".join(f"SPECTRAL_NM{380 + 10 * band}" for band in BANDS),
             "END_DATA_FORMAT", "BEGIN_DATA"]
    for index, (name, inks, spectrum) in enumerate(zip(names, values, spectra)):
        lines.append(f"{index + 1} {name} {inks} {200 + 12 * index} 200 10 8 SPOT " + " ".join(f"{value:.6f}" for value in spectrum))
    return "\n".join(lines + ["END_DATA", ""]), spectra


def rows_of(name):
    with open(name, encoding="utf-8", newline="") as file:
        return list(csv.DictReader(file, strict=True))


def texts(element, *names):
    return [element.find(CXF + name).text for name in names]


class ConvertTest(unittest.TestCase):
    setUp = tool_test.ToolTest.setUp

    def convert(self, arguments, code=DONE):
        run = tool("convert " + arguments)
        self.assertEqual(run.returncode, code, run.stderr)
        return run

    def test_cxf3_keeps_its_schema_and_every_value(self):
        rgb = measured("RGB_R RGB_G RGB_B", ("255 127.5 0", "0 0 0"))[0]
        inks = measured("CMYK_C SPOT_1", ("1 2", "3 4"))[0]
        both = measured("CMYK_C CMYK_M CMYK_Y CMYK_K RGB_R RGB_G RGB_B", ("1 2 3 4 5 6.5 7", "1 2 3 4 5 6 7"))[0]
        lists = "CGATS.17\nBEGIN_DATA_FORMAT\nSAMPLE_ID CMYK_C CMYK_M CMYK_Y CMYK_K\nEND_DATA_FORMAT\nBEGIN_DATA\n1 1e1 2 3 4\nEND_DATA\n"
        dense = measured("D_RED D_GREEN D_BLUE D_VIS CMYK_C CMYK_M CMYK_Y CMYK_K", ("0.1 1.5 0.02 0.9 0 0 0 0", "0 0 0 -0.01 1 2 3 4"))[0]
        for text, arguments in ((measured()[0], ""), (dense, "--density-status T"), (dense, ""), (measured()[0], "--illuminant D65 --observer 10"),
                                (measured()[0], "--bands 31 --plain"), (rgb, "--illuminant A"), (inks, "--illuminant F11"), (both, ""), (lists, "")):
            write("in.cgats", text)
            self.convert("in.cgats -o out.cxf --force " + arguments)
            self.convert("in.cgats -o out.csv --force " + arguments)
            valid = subprocess.run(["xmllint", "--noout", "--schema", SCHEMA, "out.cxf"], capture_output=True, text=True, check=False)
            self.assertEqual(valid.returncode, 0, valid.stderr)
            root, rows = ElementTree.parse("out.cxf").getroot(), rows_of("out.csv")
            objects = root.findall(f"{CXF}Resources/{CXF}ObjectCollection/{CXF}Object")
            self.assertEqual(len(objects), len(rows))
            for patch, row in zip(objects, rows):
                self.assert_same(patch, row)

    def assert_same(self, patch, row):
        """An object of CxF3 and the row of the same patch as comma-separated values."""
        row = dict(row)
        self.assertEqual(patch.get("Name"), row.pop("SAMPLE_NAME", None) or row.pop("SAMPLE_ID"))
        spectrum = patch.find(f"{CXF}ColorValues/{CXF}ReflectanceSpectrum")
        fields = [field for field in row if field.startswith("SPECTRAL_NM")]
        if fields:
            self.assertEqual(spectrum.get("StartWL"), fields[0].removeprefix("SPECTRAL_NM"))
            self.assertEqual([float(value) for value in spectrum.text.split()], [float(row.pop(field)) for field in fields])
        for path, names, fields in (("ColorValues/ColorCIELab", "LAB", "LAB_L LAB_A LAB_B"),
                                    ("ColorValues/ColorCIEXYZ", "XYZ", "XYZ_X XYZ_Y XYZ_Z")):
            if fields.split()[0] in row:
                element = patch.find(CXF + path.replace("/", "/" + CXF))
                for found, field in zip(texts(element, *names), fields.split()):
                    value = float(row.pop(field))
                    self.assertEqual(float(found), max(value, 0.0) if field in "LAB_L XYZ_X XYZ_Y XYZ_Z" else value)
        if "CMYK_K" in row:
            element = patch.find(f"{CXF}DeviceColorValues/{CXF}ColorCMYK")
            for found, ink in zip(texts(element, "Cyan", "Magenta", "Yellow", "Black"), "CMYK"):
                self.assertEqual(float(found), float(row.pop("CMYK_" + ink)))
        elif "RGB_R" in row:
            element = patch.find(f"{CXF}DeviceColorValues/{CXF}ColorRGB")
            full = int(texts(element, "MaxRange")[0])
            for found, channel in zip(texts(element, *"RGB"), "RGB"):
                self.assertEqual(int(found) * 255, float(row.pop("RGB_" + channel)) * full)
        for density in patch.iter(CXF + "ColorDensity"):
            value, status, filtered = texts(density, "Density", "Status", "Filter")
            field = {"Visual": "D_VIS"}.get(filtered, "D_" + filtered.upper())
            self.assertEqual((float(value), status), (float(row.pop(field)), "T"))
        tags = {tag.get("Name"): tag.get("Value") for tag in patch.iter(CXF + "Tag")}
        self.assertEqual(tags, row, "everything else is a tag")

    def test_cxf3_tells_how_it_was_measured(self):
        write("in.cgats", measured()[0])
        self.convert("in.cgats -o out.xml --observer 10")
        root = ElementTree.parse("out.xml").getroot()
        information = root.find(CXF + "FileInformation")
        self.assertEqual(texts(information, "Description"), ["ink <&> paper"])
        tags = {tag.get("Name"): tag.get("Value") for tag in information.findall(CXF + "Tag")}
        self.assertEqual((tags["TABLE_SERIAL"], tags["WEIGHTING_FUNCTION"]), ("640001", "ILLUMINANT,D50;OBSERVER,10 degree"))
        specification = root.find(f".//{CXF}ColorSpecification")
        self.assertEqual(texts(specification.find(CXF + "TristimulusSpec"), "Illuminant", "Observer"), ["D50", "10_Degree"])
        self.assertEqual(specification.find(f".//{CXF}WavelengthRange").attrib, {"StartWL": "380", "Increment": "10"})
        self.assertEqual(texts(specification.find(f".//{CXF}Device"), "SerialNumber", "DeviceClass", "DeviceIllumination"),
                         ["240118", "DeviceClass_Scanning", "M1_Daylight"])
        self.assertEqual(root.find(f".//{CXF}Object/{CXF}CreationDate").text, "2026-03-01T12:00:00Z")

    def test_forms_follow_the_name_and_what_is_asked(self):
        text, spectra = measured()
        write("in.cgats", text)
        for arguments, begin in (("-o a.cgats", "CGATS.17\n"), ("-o b.CSV", "SAMPLE_ID,"), ("-o c.txt --format csv", "SAMPLE_ID,"),
                                 ("-o d.cxf3", "<?xml"), ("-o - --format cxf3", "<?xml"), ("-o e.csv --format cgats", "CGATS.17\n")):
            run = self.convert("in.cgats " + arguments)
            name = arguments.split()[1]
            shown = run.stdout if name == "-" else content_of(name)
            self.assertTrue(shown.startswith(begin), arguments)
        told = json.loads(self.convert("in.cgats -o f.cgats --json --spectral-scale 100 --spectral-names nm --separator blank").stdout)
        self.assertEqual((told["file"], told["format"], told["patches"]), ("f.cgats", "cgats", 2))
        row = content_of("f.cgats").split("BEGIN_DATA\n")[1].splitlines()[0].split(" SPOT ")[1].split(" ")
        self.assertEqual([float(value) for value in row[6:]], [round(100 * value, 4) for value in spectra[0]])
        # What was written is a chart again: the same values come out of any form, but for noise that CxF3 has not.
        for again in ("a.cgats", "f.cgats", "b.CSV", "d.cxf3"):
            self.convert(f"{again} -o again.csv --force")
            for row, wanted in zip(rows_of("again.csv"), rows_of("b.CSV"), strict=True):
                if again == "d.cxf3" and float(wanted["XYZ_Y"]) <= 0:
                    wanted.update({field: "0" for field in ("XYZ_X", "XYZ_Y", "XYZ_Z", "LAB_L")})
                self.assertEqual(row, wanted, again)

    def test_cxf3_is_a_layout_and_a_reference(self):
        self.convert("chart.cgats -o layout.cxf")
        run = tool("scan layout.cxf -o m.cgats --virtual --chart chart.cgats")
        self.assertEqual(run.returncode, DONE, run.stderr)
        run = tool("report m.cgats --reference layout.cxf -o r.html")
        self.assertIn("CIEDE2000: mean 0.00", run.stdout, run.stderr)
        # One of 31 bands is a reference as well; a conversion keeps what it has.
        self.convert("chart.cgats -o visible.cxf --bands 31")
        run = tool("report m.cgats --reference visible.cxf -o r.html --force")
        self.assertRegex(run.stdout, r"CIEDE2000: mean 0\.0\d", run.stderr)
        self.assertIn("The spectra of the reference are of 400 to 700 nm: beyond that", run.stdout)
        self.assertEqual(content_of("r.html").count('"spectrum":[null,null,0.'), 40, "what the reference has not is no figure")
        self.assertIn("400 to 700 nm", self.convert("visible.cxf -o o.cgats --bands 36", FILE).stderr)

    def test_what_no_file_of_the_form_can_hold_is_refused(self):
        text = measured()[0]
        for name, content, arguments, code, reason in (
                ("in.cgats", text.replace("33.3", "133"), "-o o.cxf", FILE, "in.cgats: line 11: CMYK_M '133' is not a percentage from 0 to 100"),
                ("in.cgats", text.replace("Grün", '"\x02"'), "-o o.cxf", FILE, "in.cgats: line 12: no XML file can hold a text with the control character 0x02"),
                ("in.cgats", text.replace("33.3", "33,3"), "-o o.csv", FILE, "in.cgats: line 11: CMYK_M '33,3' is not a number"),
                ("in.csv", "SAMPLE_ID,SAMPLE_NAME\r\n1,\"a\nb\"\r\n", "-o o.cgats", FILE, "line 2: no file can hold the text 'a?b': it has more than one line"),
                ("in.csv", "SAMPLE_ID,A\n1\n", "-o o.cgats", FILE, "in.csv: line 2: 1 values instead of 2"),
                ("in.csv", "SAMPLE_ID\n", "-o o.cgats", FILE, "in.csv: there are no patches"),
                ("in.cgats", text, "-o o.cxf --spectral-scale 100", USAGE, "spectra in CxF3 are 0 to 1"),
                ("in.cgats", text, "-o in.cgats", USAGE, "is read by this command"),
                ("in.cgats", text, "-o o.cgats --illuminant C", USAGE, "--illuminant"),
                ("in.cgats", text, "-o o.cgats --bands 30", USAGE, "--bands")):
            write(name, content)
            self.assertIn(reason, self.convert(f"{name} {arguments}", code).stderr)
            self.assertFalse(os.path.exists(arguments.split()[1]) and "in." not in arguments, arguments)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1] + sys.argv[3:])
