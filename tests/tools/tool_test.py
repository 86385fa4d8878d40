#!/usr/bin/env python3
"""The tool on the virtual table, from its arguments to files and exit codes, and in the hands of a person: Ctrl-C,
questions and the progress bar at a terminal.

usage: tool_test.py PROGRAM FOLDER [--sanitized] [[--without] TEST...]
"""
import cmath
import json
import math
import os
import re
import select
import shutil
import signal
import struct
import subprocess
import sys
import tempfile
import time
import unittest

PROGRAM, FOLDER = map(os.path.abspath, sys.argv[1:3])
SANITIZED = "--sanitized" in sys.argv
BUILD = os.path.dirname(os.path.dirname(PROGRAM))
ROOT = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..")
sys.path.append(os.path.join(ROOT, "tests", "support"))
from chart_text import chart_text  # noqa: E402  the tests are no package
WINDOWS = PROGRAM.endswith(".exe")
if WINDOWS:
    RUNNER, LIBRARY_NAME = [os.path.join(ROOT, "scripts", "wine.sh")], "{}.dll"
    os.environ["J4T_WINE_PREFIX"] = os.path.join(BUILD, "wine")
else:
    import pty
    import resource
    RUNNER, LIBRARY_NAME = [], "lib{}.so"
STATE = os.environ["XDG_STATE_HOME"] = FOLDER + "-state"
SAMPLES = "/usr/share/colord/ref/CIE-TCS.sp"
DONE, USAGE, FILE, LIBRARY, NOT_CONNECTED, CALIBRATION, POSITION, DEVICE, CHECK, NOT_CONFIRMED, REFUSED, TOLERANCE = 0, *range(2, 13)
INTERRUPTED = 130


def chart(rows, columns, order=None):
    """Rows of vivid patches of 10 by 8 mm with gaps of 1 mm, named "R1C1" and so on; the order tells where each lies."""
    patches = []
    for row, place in enumerate(order or range(rows)):
        for column in range(columns):
            seed = row * 131 + column * 37
            patches.append((f"R{row + 1}C{column + 1}", 180 + 11 * column, 160 + 9 * place, 10, 8,
                            [0.06 + 0.06 * ((seed * (third + 3) + third * 5 + seed // 7) % 11)
                             for third in range(3) for _ in range(12)]))
    return chart_text(patches)


def write(name, content):
    with open(name, "wb") as file:
        file.write(content if isinstance(content, bytes) else content.encode())


def content_of(name):
    with open(name, encoding="utf-8") as file:
        return file.read()


def column(name, field):
    """The texts of a field of a file, one for each patch."""
    lines = [line.split() for line in content_of(name).splitlines()]
    index = lines[lines.index(["BEGIN_DATA_FORMAT"]) + 1].index(field)
    return [row[index] for row in lines[lines.index(["BEGIN_DATA"]) + 1:lines.index(["END_DATA"])]]


def bytes_of(name):
    with open(name, "rb") as file:
        return file.read()


def spectra(name):
    """The spectrum of each patch of a file."""
    lines = [line.split() for line in content_of(name).splitlines()]
    fields = lines[lines.index(["BEGIN_DATA_FORMAT"]) + 1]
    bands = [fields.index(f"SPECTRAL_NM{380 + 10 * band}") for band in range(36)]
    return {row[fields.index("SAMPLE_NAME")].strip('"'): [float(row[band]) for band in bands]
            for row in lines[lines.index(["BEGIN_DATA"]) + 1:lines.index(["END_DATA"])]}


def ciede2000(first, second):
    """Of two CIELab colours, by the formulas of Sharma, Wu and Dalal (2005)."""
    half = (math.hypot(*first[1:]) + math.hypot(*second[1:])) / 2
    turn = lambda chroma: math.sqrt(chroma ** 7 / (chroma ** 7 + 25 ** 7))
    (c1, h1), (c2, h2) = (cmath.polar(complex(a * (1.5 - turn(half) / 2), b)) for _, a, b in (first, second))
    h1, h2 = (math.degrees(hue) % 360 for hue in (h1, h2))
    between = 0 if c1 * c2 == 0 else (h2 - h1 + 180) % 360 - 180
    chroma, hue = (c1 + c2) / 2, h1 + h2 if c1 * c2 == 0 else h1 + between / 2
    cosine = lambda factor, shift: math.cos(math.radians(factor * hue + shift))
    t = 1 - 0.17 * cosine(1, -30) + 0.24 * cosine(2, 0) + 0.32 * cosine(3, 6) - 0.2 * cosine(4, -63)
    light = (first[0] + second[0]) / 2 - 50
    l = (second[0] - first[0]) / (1 + 0.015 * light ** 2 / math.sqrt(20 + light ** 2))
    c = (c2 - c1) / (1 + 0.045 * chroma)
    h = 2 * math.sqrt(c1 * c2) * math.sin(math.radians(between / 2)) / (1 + 0.015 * chroma * t)
    blue = math.radians(60 * math.exp(-((hue % 360 - 275) / 25) ** 2))
    return math.sqrt(l * l + c * c + h * h - 2 * turn(chroma) * math.sin(blue) * c * h)


def labs(rows, name="LAB_L LAB_A LAB_B", head=""):
    """A file of patches with CIELab colours alone, or with the device values of further fields behind them."""
    return "\n".join(["CGATS.17"] + head.splitlines() + ["BEGIN_DATA_FORMAT", "SAMPLE_NAME " + name, "END_DATA_FORMAT", "BEGIN_DATA"] +
                     [" ".join(map(str, row)) for row in rows] + ["END_DATA", ""])


def usb_capture(events, link, order, ends=()):
    """What usbmon would have seen of a trace: pcap bytes with this link type and byte order. Another device talks too, and
    transfers end in other ways: kind, transfer, endpoint and status of each."""
    capture = struct.pack(order + "IHHiIII", 0xa1b2c3d4, 2, 4, 0, 0, 262144, link)

    def record(time, kind, transfer, endpoint, device, data, setup=b"", status=0):
        seconds, rest = divmod(time + 1700000000000000, 1000000)
        packet = struct.pack(order + "QcBBBHcc", 7, kind, transfer, endpoint, device, 3, b"\0" if setup else b"-", b"\0")
        packet += struct.pack(order + "qiiII", seconds, rest, status, len(data), len(data)) + (setup or bytes(8))
        packet += bytes(16 if link == 220 else 0) + data
        return struct.pack(order + "IIII", seconds, rest, len(packet), len(packet)) + packet

    for number, event in enumerate(events):
        time, name = event["time"], event["name"].encode() + b"\r"
        capture += record(time, b"C", 3, 0x81, 9, b";a034\r") + record(time, b"S", 3, 0x81, 5, b"")
        if event["kind"] == "usb":
            request, value = map(int, event["name"].split()[1:])
            capture += record(time, b"S", 2, 0x00, 5, b"", struct.pack("<BBHHH", 0x40, request, value, 0, 0))
            capture += record(time, b"C", 2, 0x00, 5, b"")
        elif event["kind"] == "sent":
            capture += record(time, b"S", 3, 0x02, 5, name) + record(time, b"C", 3, 0x02, 5, b"")
        else:
            # The bytes fall into transfers as they come: here the first stands alone, and packets are filled.
            status = b"\x01\x60"
            packets = b"".join(status + name[at:at + 62] for at in range(number % 3, len(name), 62))
            capture += record(time, b"C", 3, 0x81, 5, status + name[:number % 3]) + record(time, b"C", 3, 0x81, 5, packets)
    for kind, transfer, endpoint, status in ends:
        capture += record(events[-1]["time"], kind, transfer, endpoint, 5, b"", status=status)
    return capture


WAYS = ("RECOGNISED", "FITTED", "SPOT")


def a_few_of(*cases):
    """Under the sanitizers every third: what they look for does not depend on which chart it is."""
    return cases[::3] if SANITIZED else cases


def tool(arguments, program=PROGRAM, **options):
    # Not into pipes: what Wine starts in the background would hold them open for seconds.
    with tempfile.TemporaryFile() as output, tempfile.TemporaryFile() as errors:
        run = subprocess.run(RUNNER + [program] + (arguments.split() if isinstance(arguments, str) else arguments), stdin=subprocess.DEVNULL, stdout=output,
                             stderr=errors, check=False, **options)
        for name, file in (("stdout", output), ("stderr", errors)):
            file.seek(0)
            setattr(run, name, file.read().decode("utf-8", "surrogateescape").replace("\r\n", "\n"))
    return run


def at_terminal(arguments, answers=()):
    """Runs the tool at a terminal of its own. @return exit code and all that it showed"""
    process, terminal = pty.fork()
    if process == 0:
        os.execv(PROGRAM, [PROGRAM] + arguments.split())
    shown = b""
    answers = list(answers)
    while True:
        if not select.select([terminal], [], [], 120)[0]:
            os.kill(process, signal.SIGKILL)  # it waits for what nobody will press
        try:
            part = os.read(terminal, 4096)
        except OSError:
            break
        if not part:
            break
        shown += part
        if answers and shown.rstrip().endswith(answers[0][0].encode()):
            answer = answers.pop(0)[1]
            os.write(terminal, (answer() if callable(answer) else answer).encode())
    os.close(terminal)
    return os.waitstatus_to_exitcode(os.waitpid(process, 0)[1]), shown.decode()


class ToolTest(unittest.TestCase):
    def setUp(self):
        # Wine may hold a file for a moment after the program that had it has ended.
        for _ in range(100):
            shutil.rmtree(FOLDER, ignore_errors=True)
            if not os.path.exists(FOLDER):
                break
            time.sleep(0.1)
        os.makedirs(FOLDER)
        shutil.rmtree(STATE, ignore_errors=True)
        os.chdir(FOLDER)
        write("chart.cgats", chart(4, 10))

    def assert_measured(self, measured, wanted, delta=1e-5):
        measured, wanted = spectra(measured), spectra(wanted)
        self.assertEqual(list(measured), list(wanted), "the order of the layout")
        for name, spectrum in wanted.items():
            for value, should in zip(measured[name], spectrum):
                self.assertAlmostEqual(value, should, delta=delta, msg=name)

    def test_tells_about_table_and_places(self):
        for arguments, said in (
                ("info --virtual", "Table's serial number         640001"),
                ("--virtual info --json", '"instrumentModes":["SingleReflectance","ScanningReflectance"'),
                ("--virtual info --json --unit inch", '"xMax":31.49'),
                ("--virtual info --json", '"tableSerial":"640001"'),
                ("--virtual calibrate --json", '"instrumentSerial":"240118","tileDifference":'),
                ("--virtual scan chart.cgats --dry-run", "row 4, 10 patches: by recognition at 160 mm/s"),
                ("--virtual scan chart.cgats --dry-run --spots --json", '"way":"SPOT","speed":null'),
                ("--virtual home", "x 100.0 mm, y 80.0 mm"),
                ("--virtual move 254 254 --unit mm", "x 254.0 mm, y 254.0 mm"),
                ("--virtual move 10 10 --unit inch", "x 10.000 inch, y 10.000 inch"),
                ("--virtual position --json", '{"x":200.0,"y":200.0,"unit":"mm"}'),
                ("--virtual calibrate", "Instrument 240118 is calibrated."),
                ("--virtual get J4TScanSpeed", "160\n"),
                ("--virtual set J4TScanSpeed 120 --json", '{"key":"J4TScanSpeed","value":"120"}'),
                ("--virtual get J4TScanSpeed --option J4TScanSpeed=99", "99\n"),
                ("spot 180 160 --virtual chart.cgats --json", '"lab":[67.614'),
                ("--virtual whitebase", "380 nm  0.86000"),
                ("--help", "130  ended by Ctrl-C"),
                ("--version", "j4tavla 1.")):
            with self.subTest(arguments):
                run = tool(arguments)
                self.assertEqual(run.returncode, DONE, run.stderr)
                self.assertIn(said, run.stdout)

    def test_an_unchanged_program_gets_its_options_from_the_environment(self):
        os.rename("chart.cgats", "ch\u00e4rt;1 a.cgats")
        spot = "--virtual spot 180 160 --json"
        for options, arguments, code, said in (
                ("Simulator.ChartFile=ch\u00e4rt;;1 a.cgats;Simulator.Noise=0", spot, DONE, '"lab":[67.614'),
                ("Simulator.Noise=0;Simulator.Noice=1", spot, NOT_CONNECTED,
                 "J4TAVLA_OPTIONS: There is no option 'Simulator.Noice'."),
                ("Simulator.ChartFile=none.cgats", "--virtual rescue", NOT_CONNECTED,
                 "J4TAVLA_OPTIONS: Simulator.ChartFile: Chart file 'none.cgats': the file can't be opened."),
                ("Simulator.Noise=2", "--virtual set Recognition yes", REFUSED, "'2' is not a number from 0 to 1.")):
            with self.subTest(options):
                run = tool(arguments, env={**os.environ, "J4TAVLA_OPTIONS": options})
                self.assertEqual(run.returncode, code, run.stderr)
                self.assertIn(said, run.stdout + run.stderr)

    def test_a_table_lives_longer_than_the_program(self):
        table = "--virtual --option Simulator.StateFile=t\u00e4ble.state "
        self.assertIn("x 333.0 mm, y 222.0 mm", tool(table + "move 333 222").stdout)
        self.assertIn("x 333.0 mm, y 222.0 mm", tool(table + "position").stdout)
        kept = content_of("t\u00e4ble.state")
        for damaged, said in ((kept[:-40], ": the checksum is not that"), ("", "line 1: this is no state"),
                              (kept.replace("arm 3330", "arm 3331"), ": the checksum is not that")):
            write("t\u00e4ble.state", damaged)
            run = tool(table + "position")
            self.assertEqual(run.returncode, REFUSED, run.stderr)
            self.assertIn(said, run.stderr)
            self.assertEqual(content_of("t\u00e4ble.state"), damaged)
        write("t\u00e4ble.state", kept)
        if not RUNNER:
            os.mkfifo("pipe")
            os.symlink("t\u00e4ble.state", "link")
            for name in ("pipe", "link", "/dev/full"):
                run = tool(f"--virtual --option Simulator.StateFile={name} position")
                self.assertEqual(run.returncode, REFUSED, run.stderr)
                self.assertIn("it is no regular file.", run.stderr)
            self.assertTrue(os.path.islink("link"))
        command = [PROGRAM] + (table + "move 100 100").split()
        programs = [subprocess.Popen(RUNNER + command, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL) for _ in range(8)]
        self.assertEqual([program.wait() for program in programs], [DONE] * 8)
        self.assertEqual([name for name in os.listdir() if name.endswith(".tmp")], [])

    def test_a_trace_and_a_capture_say_the_same(self):
        run = tool("--virtual --option Simulator.TraceFile=t.jsonl scan chart.cgats -o m.cgats --trust-place")
        self.assertEqual(run.returncode, DONE, run.stderr)
        text = tool("trace t.jsonl").stdout
        for said in ("  J4_Scan(", "MoveStart: move the sensor, as a scan, x ", " samples of Sorvane1 since ",
                     "USB control 3 52: baud-rate divisor 52", "\n!", " calls like it"):
            self.assertIn(said, text)
        self.assertGreater(len(tool("trace t.jsonl --all").stdout), len(text))
        traced = [json.loads(line) for line in tool("trace t.jsonl --json").stdout.splitlines()]
        events = [event for event in traced if event["table"] and event["name"] not in ("open 0", "close")]
        wanted = [(event["time"] - events[0]["time"], event["kind"], event["name"], event["text"]) for event in events]
        self.assertGreater(len(wanted), 100)
        for link, order in ((189, "<"), (220, "<"), (220, ">")):
            with self.subTest(link=link, order=order):
                write("t.pcap", usb_capture(events, link, order))
                run = tool("trace t.pcap --json")
                self.assertEqual(run.returncode, DONE, run.stderr)
                seen = [json.loads(line) for line in run.stdout.splitlines()]
                self.assertEqual([(one["time"], one["kind"], one["name"], one["text"]) for one in seen], wanted)
                self.assertEqual({one["table"] for one in seen}, {"3.5"})
        pages = [json.loads(tool(f"trace {name} -o {name}.html --json").stdout) for name in ("t.jsonl", "t.pcap")]
        for count in ("motions", "scans"):
            self.assertEqual(pages[0][count], pages[1][count])
        self.assertEqual(pages[0]["scans"], 4)

        shown = tool("trace t.jsonl -o t.html").stdout
        self.assertIn(" (some are part of the procedure", shown)
        for name, place in (("t.jsonl", f"line {len(traced) + 1}"), ("t.pcap", "record ")):
            write("cut", bytes_of(name)[:-5])
            self.assertIn(f"\nThe file ends within {place}", tool("trace cut").stdout)
            self.assertIn(place, json.loads(tool("trace cut --json").stdout.splitlines()[-1])["cut"])
            cut = json.loads(tool("trace cut -o cut.html --force --json").stdout)
            self.assertIn(place, cut["cut"])
            self.assertEqual(cut["scans"], 4)
        write("t.pcap", usb_capture(events, 220, "<", ((b"C", 3, 0x81, -108), (b"C", 3, 0x02, -71), (b"E", 3, 0x02, -19),
                                                       (b"C", 3, 0x81, -2), (b"C", 3, 0x81, -121), (b"C", 2, 0x00, -32))))
        said = [(one["text"], one["failure"]) for one in map(json.loads, tool("trace t.pcap --json").stdout.splitlines())]
        self.assertEqual(said[len(wanted):], [
            ("USB in = -108: the device was pulled out or switched off", True),
            ("USB out = -71: error on the cable, or the device was pulled out", True),
            ("USB out = -19: the device is gone", True), ("USB in = cancelled by the program", False)])

        write("t.pcap", usb_capture(events, 220, ">"))
        good = bytes_of("t.pcap")
        lines = bytes_of("t.jsonl").split(b"\n")[:3]
        for content, complaint in (
                (b"", "it is empty"), (b"CGATS.17\n", "neither a trace nor a pcap file"),
                (b"\x0a\x0d\x0d\x0a" + bytes(40), "save it as pcap"),
                (good[:32] + struct.pack(">II", 1 << 30, 20) + good[40:], "record 1: it has 1073741824 bytes"),
                (good[:20] + struct.pack(">I", 1) + good[24:], "its link type is 1 and not"),
                (good[:32] + struct.pack(">II", 20, 20) + good[40:], "record 1: it is shorter than its header"),
                (lines[1], "line 1: this is no trace"), (lines[0][:-1], "line 1: parse error"),
                (b"\n".join(lines) + b"\n{\"time\":1}", "line 4: key 'kind' not found"),
                (b"\n".join(lines[:2]) + b"\n{\"time\":1,\n", "line 3: parse error at column 11: "),
                (lines[0] + b'\n{"time":1,"kind":"samples","name":"a","count":99999999999}', "the count 99999999999 is not"),
                (b"\n".join(lines).replace(b"library", b"yell"), "line 2: there is no kind 'yell'"),
                (b"\n".join(lines).replace(b'"version":1', b'"version":2'), "line 1: this is no trace, or one of a later")):
            with self.subTest(complaint):
                write("bad", content)
                run = tool("trace bad")
                self.assertEqual(run.returncode, FILE, run.stderr)
                self.assertIn("bad: ", run.stderr)
                self.assertIn(complaint, run.stderr)
        os.mkdir("no.trace")
        for arguments, code, complaint in (("trace missing", FILE, "missing: it can't be opened"),
                                           ("trace no.trace", FILE, "no.trace: it is a folder"),
                                           ("trace t.jsonl -o t.jsonl --force", USAGE, "is read by this command"),
                                           ("trace t.jsonl -o m.cgats", FILE, "exists")):
            run = tool(arguments)
            self.assertEqual(run.returncode, code, run.stderr)
            self.assertIn(complaint, run.stderr)

    def test_ends_with_a_code_for_each_kind_of_failure(self):
        head = b"CGATS.17\nBEGIN_DATA_FORMAT\nSAMPLE_ID X\nEND_DATA_FORMAT\nBEGIN_DATA\n"
        write("broken.cgats", head + b"a 1 2\nEND_DATA\n")
        write("colour.cgats", head.replace(b" X", b" LAB_L LAB_A LAB_B") + b"R1C1 1e200 0 0\nEND_DATA\n")
        write("latin1.cgats", head + b"a \xe4\nEND_DATA\n")
        write("old.cgats", "old")
        write("limits.toml", "[[rule]]\nname = 'all'\nmax = 3\n")
        place = "LAYOUT_COLUMNS 5\nLAYOUT_START 200 200\nPATCH_SIZE "
        for name, size, patches in (("small", "4 8", "a b c d e"), ("twice", "8 8", "a b c d a"),
                                    ("over", "8 8\nPATCH_GAP -2 0", "a b c d e"), ("far", "200 8", "a b c d e")):
            write(f"{name}.cgats", "CGATS.17\n" + place + size + "\nBEGIN_DATA_FORMAT\nSAMPLE_ID\nEND_DATA_FORMAT\n"
                  "BEGIN_DATA\n" + patches.replace(" ", "\n") + "\nEND_DATA\n")
        write("field.cgats", content_of("far.cgats").replace("SAMPLE_ID", 'SAMPLE_ID "CMYK_C x"').replace("200 8", "8 8")
              .replace("\na\nb\nc\nd\ne\n", "\na 1\nb 1\nc 1\nd 1\ne 1\n"))
        os.mkdir("folder")
        before = sorted(os.listdir())
        scan = "--virtual scan chart.cgats -o m.cgats "
        layout = "--virtual --chart chart.cgats scan -o m.cgats "
        for arguments, code, complaint in (
                ("", USAGE, "subcommand is required"),
                ("fly", USAGE, ""),
                ("--virtual move 1", USAGE, "Y is required"),
                ("--virtual info --unit yard", USAGE, "--unit"),
                ("--virtual info --option nothing", USAGE, "KEY=VALUE"),
                ("--virtual scan -o m.cgats", USAGE, "LAYOUT is required"),
                ("--virtual scan broken.cgats -o m.cgats", FILE, "line 6: 3 values instead of 2"),
                ("--virtual scan missing.cgats -o m.cgats", FILE, "can't be opened"),
                (scan + "--resume", FILE, "no file 'm.cgats.partial'"),
                ("--virtual scan chart.cgats -o missing/m.cgats", FILE, "writing 'missing/m.cgats' failed"),
                ("--virtual whitebase --write broken.cgats --yes", FILE, "line 6: 3 values instead of 2"),
                ("report broken.cgats -o r.html", FILE, "broken.cgats: line 6: 3 values instead of 2"),
                ("report chart.cgats --reference colour.cgats -o r.html", FILE, "line 6: LAB_L '1e200' is not a colour"),
                ("judge chart.cgats --reference chart.cgats --tolerances limits.toml", FILE, "limits.toml: line 3: 'max' is not known"),
                ("judge chart.cgats --reference chart.cgats --tolerances none.toml", FILE, "none.toml: the file can't be read"),
                ("judge chart.cgats --tolerances limits.toml", USAGE, "--reference is required"),
                ("info --library missing.so", LIBRARY, "was not found"),
                ("--virtual info --option Simulator.TableUnplugged=yes", NOT_CONNECTED, "J4_ResultDeviceNotConnected"),
                ("rescue", NOT_CONNECTED, "looking for tables failed: "),
                ("rescue --option Simulator.Tables=1", USAGE, "works on the table without the library"),
                ("--virtual rescue --option J4TMoveSpeed=9", USAGE, "can't be given with rescue"),
                ("--virtual home --option Simulator.SeatedInstrument=none", NOT_CONNECTED, "status 100"),
                ("--virtual calibrate --option Simulator.DirtyTile=yes", CALIBRATION, "J4_ResultNotCalibrated"),
                ("--virtual move 2000 0", POSITION, "status 102 (J4_ResultIllegalPosition)"),
                ("--virtual home --option Simulator.TableBusy=yes", DEVICE, "status"),
                ("--virtual get NoSuchOption", DEVICE, "no such option"),
                ("--virtual set J4TScanSpeed fast", REFUSED, "failed: 'fast' is not a value that it takes\n"),
                (scan + "--margin 300", POSITION, "row 1 can't be measured: with its margin of 300 mm x -125 mm lies before"),
                (layout + "far.cgats", POSITION, "row 1 can't be measured: patch d: x 804.5 mm lies beyond the work area, which ends at 800 mm"),
                (layout + "small.cgats", FILE, "patch a is 4 mm long or wide"),
                (layout + "twice.cgats", FILE, "line 13: patch a has the name of the patch of line 9"),
                (layout + "over.cgats", FILE, "line 11: patch b overlaps patch a"),
                (layout + "field.cgats", FILE, "line 6: no field can be called 'CMYK_C x'"),
                (scan + "--patch inf,5", USAGE, "'inf' is no number"),
                ("--virtual move nan 0", USAGE, "'nan' is no number"),
                ("--virtual scan chart.cgats -o old.cgats", FILE, "--force"),
                ("--virtual scan chart.cgats -o folder --force", FILE, "is a folder and is not replaced"),
                ("--virtual scan chart.cgats -o chart.cgats --force", USAGE, "is read by this command"),
                ("report old.cgats -o old.cgats --force", USAGE, "is read by this command"),
                ("--virtual whitebase --save folder --force", FILE, "is a folder"),
                ("--virtual info --option J4TScanDelay=70000", USAGE, "can't take 70000"),
                (scan + "--option J4TScanSpeed=9999", USAGE, "--speed"),
                (scan + "--option 5012=300", USAGE, "can't be given with scan"),
                (scan + "--speed 9999", REFUSED, "J4_ResultResourceFault"),
                (scan + "--corners", NOT_CONFIRMED, "nobody is at the")):
            with self.subTest(arguments):
                run = tool(arguments)
                self.assertEqual(run.returncode, code, run.stderr)
                self.assertIn(complaint, run.stderr)
        for arguments, members in (
                ("--virtual move 2000 0", {"exitCode": 7, "status": 102, "statusName": "J4_ResultIllegalPosition"}),
                ("--virtual scan latin1.cgats -o m.cgats", {"exitCode": 3}),
                ("fly", {"exitCode": 2})):
            run = tool(arguments + " --json")
            self.assertLessEqual(members.items(), json.loads(run.stderr.encode("utf-8", "strict")).items())
        self.assertEqual(sorted(os.listdir()), before)

    @unittest.skipUnless(os.path.exists(SAMPLES), "no colour samples on this machine")
    def test_scans_the_colour_samples_on_a_grid(self):
        with open("samples.cgats", "wb") as file:
            subprocess.run([os.path.join(ROOT, "scripts", "make_tcs_chart.sh"), SAMPLES], stdout=file, check=True)
        for place in ("--patch 25,25 --gap 4,4 --start 220,250", "--corners 220,250,336,250,220,308"):
            run = tool(f"--virtual --chart samples.cgats scan {SAMPLES} -o m.cgats --force --columns 5 {place}")
            self.assertEqual(run.returncode, DONE, run.stderr)
            self.assert_measured("m.cgats", "samples.cgats")

    @unittest.skipIf(SANITIZED, "the sanitizers take memory of their own")
    def test_scans_a_thousand_patches_and_reports_ten_thousand_in_little_memory(self):
        write("large.cgats", chart(25, 40))
        run = tool("scan --virtual large.cgats -o m.cgats --json")
        self.assertEqual(run.returncode, DONE, run.stderr)
        self.assertIn('{"event":"start","rowsDone":0,"rows":25,"patchesDone":0,"patches":1000}', run.stdout)
        self.assertIn('"patchesDone":1000,"patches":1000,"result":"done","file":"m.cgats"', run.stdout)
        self.assert_measured("m.cgats", "large.cgats")
        write("larger.cgats", chart(100, 100))
        write("limits.toml", "[[rule]]\nname = 'all'\nmaximum = 0.001\n")
        run = tool("report larger.cgats --reference larger.cgats --tolerances limits.toml -o r.html")
        self.assertEqual(run.returncode, DONE, run.stderr)
        if not WINDOWS:
            self.assertLess(resource.getrusage(resource.RUSAGE_CHILDREN).ru_maxrss, 100 * 1024, "KiB")

    def test_rows_that_fail_are_tried_again_and_left_to_a_resume(self):
        # The layout has two rows in the wrong order: what is read there fits the other row.
        write("layout.cgats", chart(4, 10, [0, 2, 1, 3]))
        scan = "scan layout.cgats -o m.cgats --virtual --chart "
        run = tool(scan + "chart.cgats --retries 1 --json")
        self.assertEqual(run.returncode, CHECK, run.stderr)
        self.assertIn('"event":"retry"', run.stdout)
        self.assertRegex(run.stdout, r'"row":2,"attempt":2,"reason":"row 3 was read instead"')
        self.assertIn("2 rows failed in every attempt", run.stderr)
        self.assertFalse(os.path.exists("m.cgats"))

        run = tool(scan + "chart.cgats")
        self.assertEqual(run.returncode, FILE, "an earlier scan must not be lost without a word")
        write("other.cgats", chart(4, 10, [1, 3, 0, 2]))
        run = tool(scan + "other.cgats --resume")
        self.assertEqual(run.returncode, CHECK, "rows of another chart are not mixed in")
        self.assertIn("are not of what lies there now", run.stderr)
        run = tool(scan + "layout.cgats --resume --json")
        self.assertEqual(run.returncode, DONE, run.stderr)
        self.assertIn('"event":"start","rowsDone":2,"rows":4,"patchesDone":20', run.stdout)
        self.assert_measured("m.cgats", "layout.cgats")
        self.assertFalse(os.path.exists("m.cgats.partial"))

    def test_rows_are_scanned_several_times_where_that_is_wanted(self):
        scan = "--virtual --option Simulator.Noise=0.0005 scan chart.cgats -o m.cgats --json "
        run = tool(scan + "--repeat 4")
        self.assertEqual(run.returncode, DONE, run.stderr)
        events = [json.loads(line) for line in run.stdout.splitlines()]
        self.assertEqual([event["repeat"] for event in events if event["event"] == "rowBegins"], [1, 2, 3, 4] * 4)
        told = next(event for event in events if event["event"] == "repeats")
        spreads = [float(value) for value in column("m.cgats", "REPEAT_SPREAD")]
        self.assertEqual(told["repeats"], 4)
        self.assertAlmostEqual(told["mean"], sum(spreads) / len(spreads), delta=1e-4)
        self.assertAlmostEqual(told["maximum"], max(spreads), delta=1e-4)
        self.assertGreater(min(spreads), 0)
        self.assertIn('REPEATS "4"', content_of("m.cgats"))
        self.assertEqual(tool("report m.cgats -o r.html").returncode, DONE)
        self.assertIn('"repeatSpread":', content_of("r.html"))

        # What was begun is gone on with in the same way only, and is the same then.
        whole = content_of("m.cgats").splitlines(True)
        begin = whole.index("BEGIN_DATA\n") + 1
        write("m.cgats.partial", "".join(line for line in whole[:begin + 20] if not line.startswith("NUMBER_OF_SETS")))
        os.remove("m.cgats")
        run = tool(scan + "--resume --repeat 2")
        self.assertEqual(run.returncode, FILE, run.stdout)
        self.assertIn("REPEATS is '4' and not '2'", run.stderr)
        run = tool(scan + "--resume --repeat 4")
        self.assertEqual(run.returncode, DONE, run.stderr)
        self.assertEqual(content_of("m.cgats").splitlines(True)[begin:begin + 20], whole[begin:begin + 20])
        self.assertEqual(len([line for line in run.stdout.splitlines() if '"rowBegins"' in line]), 2 * 4)

    def test_densities_are_those_of_the_samples_whichever_way_a_row_is_read(self):
        # The virtual instrument's are plain bands of the spectrum, so those of a mean are those of its spectrum.
        bands = {"D_RED": range(600, 701, 10), "D_GREEN": range(500, 591, 10), "D_BLUE": range(400, 491, 10)}
        places = re.sub(r"(?m)^(R\S+ \S+ \S+ \S+ \S+).*$", r"\1", re.sub(r" SPECTRAL_NM\d+", "", chart(2, 6)))
        write("places.cgats", places)
        write("six.cgats", chart(2, 6))
        for way, words in (("RECOGNISED", "six.cgats"), ("FITTED", "places.cgats --chart six.cgats"),
                           ("SPOT", "six.cgats --spots"), ("RECOGNISED", "six.cgats --repeat 3")):
            with self.subTest(way=words):
                run = tool(f"--virtual --option Simulator.Noise=0.0002 scan {words} -o m.cgats --force --densities")
                self.assertEqual(run.returncode, DONE, run.stderr)
                self.assertNotIn("another order", run.stdout)
                self.assertEqual(set(column("m.cgats", "SCAN_WAY")), {way})
                for field, waves in bands.items():
                    for told, spectrum in zip(column("m.cgats", field), spectra("m.cgats").values()):
                        mean = sum(spectrum[(wave - 380) // 10] for wave in waves) / len(waves)
                        self.assertAlmostEqual(float(told), -math.log10(mean), delta=1e-4, msg=field)
                for told, light in zip(column("m.cgats", "D_VIS"), column("m.cgats", "XYZ_Y")):
                    self.assertAlmostEqual(float(told), -math.log10(float(light) / 100), delta=1e-4)
        self.assertEqual(tool("average m.cgats m.cgats -o n.cgats").returncode, DONE)
        for field in (*bands, "D_VIS"):
            self.assertEqual(column("n.cgats", field), column("m.cgats", field))
        self.assertEqual(tool("report m.cgats -o r.html").returncode, DONE)
        self.assertIn('"densities":[', content_of("r.html"))

    def test_every_honest_chart_is_measured_and_a_wrong_one_refused(self):
        """What lies on the bed is the chart moved by dx, dy, with what its name says on it; the layout tells no colours
        where it says so."""
        marks = {"speck": 'SPECK "236.5 211.5 3 0.04"\n', "scratch": 'SCRATCH "190 201 410 201 1 0.04"\n'}
        colour = lambda row, column, third: 0.06 + 0.06 * ((row * 131 + column * 37) * (third + 3) // 5 % 13)
        ends = lambda row, column, third: 0.85 if column < 2 or column > 9 else colour(row, column, third)
        for name, size, gap, patches, move, known, code, ways in a_few_of(
                ("plain", 10, 0, colour, (2, -2), True, DONE, {"RECOGNISED"}),
                ("equal neighbours", 10, 0, lambda r, c, t: colour(r, c // 3, t), (0, 0), False, DONE, {"FITTED"}),
                ("ends like paper", 10, 0, ends, (0, 0), False, DONE, {"FITTED"}),
                ("small", 6, 0, colour, (0, 0), False, DONE, {"FITTED"}),
                ("wide gaps", 10, 8, colour, (0, 0), True, DONE, {"FITTED"}),
                ("greys", 8, 0, lambda r, c, t: 0.2 + 0.004 * (12 * r + c), (1, 1), False, DONE, {"FITTED"}),
                ("speck", 12, 0, colour, (0, 0), False, DONE, {"FITTED", "SPOT"}),
                ("speck", 12, 0, colour, (0, 0), True, DONE, {"RECOGNISED", "FITTED", "SPOT"}),
                ("speck --spots", 12, 0, colour, (0, 0), False, DONE, {"SPOT"}),
                ("scratch", 16, 0, colour, (0, 0), True, DONE, {"RECOGNISED", "SPOT"}),
                ("scratch", 16, 0, colour, (0, 0), False, DONE, {"FITTED", "SPOT"}),
                ("scratch", 8, 0, colour, (0, 0), False, CHECK, "1 row failed"),
                ("one by one --spots", 10, 0, colour, (0, 0), True, DONE, {"SPOT"}),
                ("half a patch across", 10, 0, colour, (0, 5), False, CHECK, "mm in y, turned by"),
                ("half a patch along", 10, 0, colour, (5, 0), True, CHECK, "mm in x"),
                ("a patch off along", 10, 0, colour, (10, 0), False, CHECK, "mm in x"),
                ("another chart", 10, 2, lambda r, c, t: colour(c, r, t), (-7, 6), False, CHECK, ""),
                ("found --align", 10, 0, colour, (4, -4), False, DONE, {"FITTED"}),
                ("found --align", 7, 1, colour, (-3, 3), False, DONE, {"FITTED"}),
                ("two patches off --align", 10, 2, colour, (24, 12), False, DONE, {"FITTED"})):
            with self.subTest(name):
                rows = [(f"R{row}C{column}", 200 + (size + gap) * column, 200 + (size + gap) * row,
                         [colour_of for third in range(3) for colour_of in [patches(row, column, third)] * 12])
                        for row in range(4) for column in range(12)]
                spectral = "".join(f" SPECTRAL_NM{380 + 10 * band}" for band in range(36))

                def text(with_colours, dx, dy):
                    return ("CGATS.17\nPAPER_REFLECTANCE 0.85\nBEGIN_DATA_FORMAT\nSAMPLE_NAME X Y WIDTH HEIGHT" +
                            (spectral if with_colours else "") + "\nEND_DATA_FORMAT\nBEGIN_DATA\n" +
                            "".join(f"{patch} {x + dx} {y + dy} {size} {size}" +
                                    ("".join(f" {value:.4f}" for value in values) if with_colours else "") + "\n"
                                    for patch, x, y, values in rows) + "END_DATA\n")

                write("bed.cgats", text(True, *move).replace("BEGIN", marks.get(name.split()[0], "") + "BEGIN", 1))
                write("layout.cgats", text(known, 0, 0))
                option = " ".join(word for word in name.split() if word.startswith("--"))
                run = tool("--virtual --chart bed.cgats scan layout.cgats -o m.cgats --force --restart --option "
                           "Simulator.Noise=0.001 " + option)
                self.assertEqual(run.returncode, code, run.stderr)
                self.assertEqual(os.path.exists("m.cgats"), code == DONE)
                if code == DONE:
                    self.assert_measured("m.cgats", "bed.cgats", 0.004)
                    self.assertEqual({word for word in content_of("m.cgats").split() if word in WAYS}, ways)
                    os.remove("m.cgats")
                else:
                    self.assertIn(ways, run.stderr)

    @unittest.skipIf(SANITIZED, "the charts above have some that are found, in less time")
    def test_finds_charts_that_lie_moved_and_turned(self):
        """The layout tells no colours; the corners that are found must be where the chart was laid."""
        write("bed.cgats", chart(20, 30))
        write("layout.cgats", re.sub(r" SPECTRAL_NM\d+", "", re.sub(r"(?m)^(R.* 10 8) .*", r"\1", chart(20, 30))))
        middle = 180 + 11 * 29 / 2 + 1j * (160 + 9 * 19 / 2)
        for x, y, degrees in ((0, 0, -2), (-5, 4, 2), (5, -4, -1), (-4, -3, 1.5)):
            with self.subTest(f"{x} {y} {degrees}"):
                run = tool(["--virtual", "--json", "--chart", "bed.cgats", "--option", "Simulator.Noise=0.001", "--option",
                            f"Simulator.ChartOffset={x} {y} {degrees}", "align", "layout.cgats"])
                self.assertEqual(run.returncode, DONE, run.stderr)
                numbers = iter(json.loads(run.stdout.splitlines()[-1])["corners"])
                turn = cmath.exp(1j * math.radians(degrees))
                for corner, found in zip((180 + 160j, 180 + 11 * 29 + 160j, 180 + (160 + 9 * 19) * 1j),
                                         map(complex, numbers, numbers)):
                    self.assertLess(abs(middle + x + 1j * y + (corner - middle) * turn - found), 0.3)

    def test_judges_a_chart_by_tolerances(self):
        """Every value against the formulas as they are written here, apart from the tool's."""
        names = ["paper", "C", "M", "Y", "K", "red", "grey"]
        inks = [(0, 0, 0, 0), (100, 0, 0, 0), (0, 100, 0, 0), (0, 0, 100, 0), (0, 0, 0, 100), (0, 100, 100, 0), (50, 40, 40, 0)]
        wanted = [(95, 1, -4), (56, -36, -44), (48, 75, -4), (89, -4, 92), (16, 0, 0), (48, 68, 47), (58, 0, -1)]
        off = [(-.5, .2, .4), (1.5, -2, 1.2), (-.4, 3, 2.5), (.3, -2, -4), (2, .5, -.5), (1, 2, -3), (-.7, 1.1, .9)]
        measured = [tuple(map(sum, zip(*pair))) for pair in zip(wanted, off)]
        for name, colours in (("reference", wanted), ("measured", measured), ("spoilt", [*measured[:2], (50, 66, 6), *measured[3:]]),
                              ("short", measured[1:])):
            kept = list(zip(names, inks))[-len(colours):]
            write(name + ".cgats", "CGATS.17\nBEGIN_DATA_FORMAT\nSAMPLE_NAME CMYK_C CMYK_M CMYK_Y CMYK_K LAB_L LAB_A LAB_B\n"
                  "END_DATA_FORMAT\nBEGIN_DATA\n" + "".join(" ".join(map(str, (patch, *ink, *colour))) + "\n" for
                  (patch, ink), colour in zip(kept, colours)) + "END_DATA\n")

        def chroma(colour):
            return math.hypot(*colour[1:])

        def parts(a, b):
            dc = chroma(b) - chroma(a)
            return b[0] - a[0], dc, math.sqrt(max(0, (b[1] - a[1]) ** 2 + (b[2] - a[2]) ** 2 - dc ** 2))

        def cie94(a, b):
            dl, dc, dh = parts(a, b)
            return math.hypot(dl, dc / (1 + .045 * chroma(a)), dh / (1 + .015 * chroma(a)))

        def cmc(a, b):
            (dl, dc, dh), c, h = parts(a, b), chroma(a), math.degrees(math.atan2(a[2], a[1])) % 360
            turn = (.56, .2, 168) if 164 <= h <= 345 else (.36, .4, 35)
            f, t = math.sqrt(c ** 4 / (c ** 4 + 1900)), turn[0] + abs(turn[1] * math.cos(math.radians(h + turn[2])))
            sl, sc = .511 if a[0] < 16 else .040975 * a[0] / (1 + .01765 * a[0]), .0638 * c / (1 + .0131 * c) + .638
            return math.hypot(dl / 2 / sl, dc / sc, dh / sc / (f * t + 1 - f))

        chosen = {"all": range(7), "paper": [0], "primaries": [1, 2, 3, 4], "secondaries": [5], "greys": [6]}
        rules, values = "title = 'Trial'\n", []
        for patches, key, of in (("all", "formula = 'CIE 1976'", math.dist), ("primaries", "formula = 'CIE 1994'", cie94),
                                 ("all", "formula = 'CMC(2:1)'", cmc), ("primaries", "of = 'hue'", lambda a, b: parts(a, b)[2]),
                                 ("secondaries", "of = 'chroma'\noptional = true", lambda a, b: abs(parts(a, b)[1])),
                                 ("greys", "of = 'grey'", lambda a, b: math.dist(a[1:], b[1:])),
                                 ("paper", "of = 'lightness'", lambda a, b: abs(parts(a, b)[0]))):
            found = sorted(of(wanted[i], measured[i]) for i in chosen[patches])
            place = .95 * (len(found) - 1)
            low, high = found[math.floor(place)], found[math.ceil(place)]
            values += [sum(found) / len(found), low + (place - math.floor(place)) * (high - low), found[-1]]
            rules += (f"[[rule]]\nname = '{key.split(chr(39))[1]} {patches}'\npatches = '{patches}'\n{key}\n" +
                      "mean = X\npercentile95 = X\nmaximum = X\n".replace("X", f"{found[-1] + .001:.3f}"))
        write("limits.toml", rules)
        judge = "judge {}.cgats --reference reference.cgats --tolerances limits.toml --json"
        verdicts = {}
        for chart_name, code in (("measured", DONE), ("spoilt", TOLERANCE), ("short", TOLERANCE)):
            run = tool(judge.format(chart_name))
            self.assertEqual(run.returncode, code, run.stderr)
            verdicts[chart_name] = json.loads(run.stdout)
        for line, value in zip(verdicts["measured"]["limits"], values, strict=True):
            self.assertAlmostEqual(line["value"], value, delta=1e-6, msg=line)
        self.assertEqual([verdicts[name]["verdict"] for name in ("measured", "spoilt", "short")], ["pass", "fail", "not judged"])
        self.assertEqual([verdicts["short"][key] for key in ("patches", "covered")], [6, 6])
        self.assertEqual({line["worst"][0]["patch"] for line in verdicts["spoilt"]["limits"] if line["verdict"] == "fail"}, {"M"})
        self.assertIn("1 patch of the reference not measured", verdicts["short"]["limits"][-1]["reason"])
        run = tool("report spoilt.cgats --reference reference.cgats --tolerances limits.toml -o spoilt.html --json")
        self.assertEqual(run.returncode, TOLERANCE, run.stderr)
        self.assertEqual(json.loads(run.stdout)["judgement"], verdicts["spoilt"])
        self.assertIn('"verdict":"fail"', content_of("spoilt.html"))
        run = tool(judge.format("spoilt")[:-7])
        self.assertRegex(run.stdout, r"(?m)^CIE 1976 all +7  CIE 1976, maximum +[\d.]+ +13.+ fail  M, ")

    def test_gives_a_verdict_behind_a_scan(self):
        write("limits.toml", "[[rule]]\nname = 'all'\nmaximum = 0.5\n")
        write("other.cgats", chart(4, 10).replace("0.12", "0.18"))
        write("places.cgats", re.sub(r" SPECTRAL_NM\d+", "", re.sub(r"(?m)^(R.* 10 8) .*", r"\1", chart(4, 10))))
        scan = "scan --virtual chart.cgats -o m.cgats --force --json --tolerances limits.toml"
        for more, code, verdict in (("", DONE, "pass"), (" --reference other.cgats", TOLERANCE, "fail")):
            run = tool(scan + more)
            self.assertEqual(run.returncode, code, run.stderr)
            event = json.loads(run.stdout.splitlines()[-1])
            self.assertEqual((event["event"], event["verdict"], event["limits"][0]["patches"]), ("verdict", verdict, 40))
            self.assert_measured("m.cgats", "chart.cgats")
        run = tool("--virtual --chart chart.cgats scan places.cgats -o p.cgats --tolerances limits.toml")
        self.assertEqual(run.returncode, USAGE)
        self.assertIn("the layout tells no colours to judge by", run.stderr)
        self.assertFalse(os.path.exists("p.cgats"))

    def test_files_of_others_stay(self):
        for name in ("m.cgats", "m.cgats.tmp", "m.cgats.1.tmp"):
            write(name, "old")
        before = sorted(os.listdir())
        scan = "--virtual scan chart.cgats -o m.cgats "
        self.assertNotEqual(tool(scan + "--force --option Simulator.PositionNotReached=yes").returncode, DONE)
        self.assertEqual(content_of("m.cgats"), "old")
        self.assertEqual(tool(scan + "--force").returncode, DONE)
        self.assert_measured("m.cgats", "chart.cgats")
        write("piped.cgats", tool(scan.replace("m.cgats", "-")).stdout)
        self.assert_measured("piped.cgats", "chart.cgats")
        os.remove("piped.cgats")
        os.mkdir("mit Räum €")
        shutil.copy("chart.cgats", "mit Räum €/chärt €.cgats")
        for words in (["scan", "--virtual", "mit Räum €/chärt €.cgats", "-o", "mit Räum €/m €.cgats"],
                      ["report", "mit Räum €/m €.cgats", "-o", "mit Räum €/r €.html"]):
            run = tool(words)
            self.assertEqual(run.returncode, DONE, run.stderr)
            self.assertIn(words[-1], run.stdout)
        self.assert_measured("mit Räum €/m €.cgats", "chart.cgats")
        self.assertEqual(sorted(os.listdir("mit Räum €")), ["chärt €.cgats", "m €.cgats", "r €.html"])
        shutil.rmtree("mit Räum €")
        self.assertEqual(content_of("m.cgats.tmp") + content_of("m.cgats.1.tmp"), "oldold")
        self.assertEqual(sorted(os.listdir()), before)

    def test_measurements_of_one_chart_are_averaged_and_compared(self):
        # What differs between the files is known: rows that are all lighter, or darker, by a part.
        for name, factor, created in (("a", 1.0, "Wed Mar  4 09:00:00 2026"), ("b", 1.02, "Fri Mar  6 09:00:00 2026"), ("c", 0.95, "2026-03-01")):
            lines = chart(2, 5).replace("CGATS.17", f'CGATS.17\nCREATED "{created}"\nINSTRUMENTATION "one"\nWEIGHTING_FUNCTION "ILLUMINANT,D65;OBSERVER,10 degree"\nTABLE_SERIAL "{name}"').splitlines()
            first = lines.index("BEGIN_DATA") + 1
            rows = [line.split() for line in lines[first:-1]]
            rows = [row[:5] + [f"{float(value) * factor:.6f}" for value in row[5:]] for row in rows]
            lines[first:-1] = [" ".join(row) for row in (reversed(rows) if name == "b" else rows)]
            write(name + ".cgats", "\n".join(lines + [""]))
        run = tool("average a.cgats b.cgats c.cgats -o mean.cgats")
        self.assertEqual(run.returncode, DONE, run.stderr)
        mean, wanted = spectra("mean.cgats"), spectra("a.cgats")
        self.assertEqual(list(mean), list(wanted), "the order of the first file")
        for name, spectrum in wanted.items():
            for value, should in zip(mean[name], spectrum):
                self.assertAlmostEqual(value, should * 0.99, delta=2e-6, msg=name)
        for part in ('CREATED "Fri Mar  6 09:00:00 2026"', 'REPEATS "3"', 'INSTRUMENTATION "one"', "ILLUMINANT,D50;OBSERVER,2 degree"):
            self.assertIn(part, content_of("mean.cgats"))
        self.assertNotIn("TABLE_SERIAL", content_of("mean.cgats"), "they don't agree in it")
        self.assertEqual(tool("average mean.cgats a.cgats -o more.cgats").returncode, DONE)
        self.assertIn('REPEATS "4"', content_of("more.cgats"))
        self.assertEqual(tool("report mean.cgats --reference a.cgats -o r.html").returncode, DONE)
        for name, date, light in (("d", "yesterday", "M0"), ("e", "2026-03-01", "M1")):
            write(name + ".cgats", re.sub('CREATED ".*"', f'CREATED "{date}"\nMEASUREMENT_CONDITION "{light}"', content_of("a.cgats")))
        run = tool("average d.cgats c.cgats -o undated.cgats")
        self.assertEqual(run.returncode, DONE, run.stderr)
        self.assertNotIn("CREATED", content_of("undated.cgats"))
        self.assertNotIn("same values", run.stdout)
        run = tool("average d.cgats e.cgats -o n.cgats")
        self.assertEqual(run.returncode, FILE, run.stdout)
        self.assertIn("e.cgats: it was measured by M1 and not by M0, unlike in d.cgats", run.stderr)

        colours = {"A": [(52, 10, -30), (53, 12, -31), (51, 9.5, -28)], "B": [(90, 0, 0), (90.5, 0.2, -0.1), (89, -0.3, 0.4)],
                   "C": [(30, 60, 40), (31, 59, 42), (30.5, 61, 41)]}
        for k, name in enumerate("xyz"):
            write(name + ".cgats", labs((patch, *values[k]) for patch, values in colours.items()))
        run = tool("compare x.cgats y.cgats z.cgats --json")
        self.assertEqual(run.returncode, DONE, run.stderr)
        told = json.loads(run.stdout)
        means = {patch: [sum(axis) / 3 for axis in zip(*values)] for patch, values in colours.items()}
        for formula, difference in (("CIEDE2000", ciede2000), ("CIE 1976", math.dist)):
            wanted = {patch: sum(difference(means[patch], value) for value in values) / 3 for patch, values in colours.items()}
            for entry in told["patches"]:
                self.assertAlmostEqual(entry[formula], wanted[entry["name"]], delta=1e-9)
            self.assertAlmostEqual(told[formula]["mean"], sum(wanted.values()) / 3, delta=1e-9)
            self.assertAlmostEqual(told[formula]["maximum"], max(wanted.values()), delta=1e-9)
        for k, entry in enumerate(told["measurements"]):
            self.assertAlmostEqual(entry["mean"], sum(ciede2000(means[p], values[k]) for p, values in colours.items()) / 3, delta=1e-9)
        self.assertEqual(told["notices"], [])
        self.assertIn("The same values: in x.cgats as in x.cgats.", tool("compare x.cgats y.cgats x.cgats").stdout)
        self.assertRegex(tool("compare x.cgats y.cgats z.cgats").stdout, r"Worst patches \(CIEDE2000\): A \d")

        rows = [("A", 50, 0, 0, 10), ("B", 60, 0, 0, 20)]
        fields = "LAB_L LAB_A LAB_B CMYK_C"
        write("first.cgats", labs(rows, fields))
        for content, reason in ((labs(rows[:1], fields), "the patch 'B' is missing, unlike in first.cgats"),
                                (labs(rows + [("C", 1, 0, 0, 0)], fields), "line 8: the patch 'C' is one more"),
                                (labs(rows + rows[:1], fields), "line 8: the patch 'A' stands there twice"),
                                (labs([rows[1], ("A", 50, 0, 0, 30)], fields), "line 7: patch 'A' has CMYK_C 30 and not 10"),
                                (labs([("A", "x", 0, 0, 10)], fields), "line 6: LAB_L 'x' is not a colour value"),
                                (labs([("A", 0.8, 0.85, 0.7), ("B", 0.1, 0.1, 0.1)], "XYZ_X XYZ_Y XYZ_Z"), "XYZ_Y is 0.85 at most")):
            with self.subTest(reason=reason):
                write("other.cgats", content)
                run = tool("compare first.cgats other.cgats")
                self.assertEqual(run.returncode, FILE, run.stdout)
                self.assertIn("other.cgats: " + reason, run.stderr)
        for words, code in (("compare first.cgats", USAGE), ("average first.cgats first.cgats -o n.cgats", FILE),
                            ("average a.cgats b.cgats -o a.cgats --force", USAGE)):
            self.assertEqual(tool(words).returncode, code, words)
        self.assertFalse(os.path.exists("n.cgats"))

    def test_a_trend_shows_many_measurements_in_the_order_of_time(self):
        # A mixture and a ramp of cyan, in four measurements that are given in another order than that of time.
        fields = "CMYK_C CMYK_M CMYK_Y CMYK_K LAB_L LAB_A LAB_B"
        wanted = {"paper": (0, 0, 0, 0, 95, 0, -2), "cyan": (100, 0, 0, 0, 55, -36, -50), "mix": (30, 40, 0, 0, 60, 20, -10),
                  "c25": (25, 0, 0, 0, 84, -9, -16), "c50": (50, 0, 0, 0, 73, -19, -29), "c75": (75, 0, 0, 0, 63, -28, -41)}
        write("ref.cgats", labs([(name, *values) for name, values in wanted.items()], fields))
        dates = ["2026-03-01", "2026-03-01T09:30:00+01:00", "Sun Mar  1 09:00:00 2026", "2026-03-02 00:00:00Z"]
        shifts = [(0.5, 1, 0), (0.7, 1.4, 0.3), (0.4, 0.8, 0.2), (3, 4, 2)]
        measured = []
        for date, (l, a, b) in zip(dates, shifts):
            measured.append({name: (v[4] - l, v[5] + a * (1 + (name == "mix")), v[6] + b) for name, v in wanted.items()})
            write(f"m{len(measured) - 1}.cgats", labs([(name, *wanted[name][:4], *lab) for name, lab in measured[-1].items()],
                                                      fields, f'CREATED "{date}"'))
        write("tolerances.toml", '[[rule]]\nname = "ink"\npatches = "primaries"\nof = "lightness"\nmaximum = 2\noptional = true\n')
        run = tool("trend m2.cgats m0.cgats m3.cgats m1.cgats --reference ref.cgats --baseline 3 -o t.html --json "
                   "--tolerances tolerances.toml")
        self.assertEqual(run.returncode, DONE, run.stderr)
        told = json.loads(run.stdout)
        self.assertEqual([entry["file"] for entry in told["measurements"]], [f"m{k}.cgats" for k in range(4)])
        self.assertEqual([entry["verdict"] for entry in told["measurements"]], ["pass"] * 3 + ["fail"])
        of = {name: [ciede2000(values[4:], each[name]) for each in measured] for name, values in wanted.items()}
        every = [sorted(column) for column in zip(*of.values())]
        expected = {("ink", "dL*, maximum"): [l for l, _, _ in shifts], ("paper", "CIEDE2000, maximum"): of["paper"],
                    ("primaries", "CIEDE2000, maximum"): of["cyan"],
                    ("all patches", "CIEDE2000, mean"): [sum(each) / 6 for each in every],
                    ("all patches", "CIEDE2000, 95th percentile"): [0.25 * each[4] + 0.75 * each[5] for each in every],
                    ("all patches", "CIEDE2000, maximum"): [each[5] for each in every]}
        curves = {(curve["name"], curve["what"]): curve for curve in told["curves"]}
        self.assertEqual(set(curves), set(expected))
        for key, values in expected.items():
            curve = curves[key]
            for one, other in zip(curve["values"], values):
                self.assertAlmostEqual(one, other, delta=1e-9)
            mean = sum(values[:3]) / 3
            reach = 2.66 * (abs(values[1] - values[0]) + abs(values[2] - values[1])) / 2
            for limit, should in (("mean", mean), ("lower", max(0, mean - reach)), ("upper", mean + reach)):
                self.assertAlmostEqual(curve["control"][limit], should, delta=1e-9)
            self.assertEqual(curve["outside"], [3] if values[3] > mean + reach else [])
        self.assertEqual(curves["ink", "dL*, maximum"]["limit"], 2)
        self.assertEqual(curves["all patches", "CIEDE2000, mean"]["outside"], [3])
        worst = max(of, key=lambda name: max(of[name]))
        self.assertEqual(told["worst"][0]["patch"], worst)
        self.assertEqual(len(told["worst"]), 6)
        (ramp,) = told["toneValueIncrease"]
        self.assertEqual((ramp["ink"], ramp["nominal"]), ("C", [0, 25, 50, 75, 100]))
        for increases, each in zip(ramp["increases"], measured):
            # Cyan takes most of X, which is proportional to the cube of this.
            light = {name: ((lab[0] + 16) / 116 + lab[1] / 500) ** 3 for name, lab in each.items()}
            for told_one, nominal, name in zip(increases, ramp["nominal"], ("paper", "c25", "c50", "c75", "cyan")):
                tone = 100 * (light["paper"] - light[name]) / (light["paper"] - light["cyan"])
                self.assertAlmostEqual(told_one, tone - nominal, delta=1e-9)

        # A mean rounds, and thirty times the same is no change all the same.
        run = tool("trend " + 30 * "m0.cgats " + "--reference ref.cgats -o same.html --json")
        told = json.loads(run.stdout)
        self.assertEqual([curve["outside"] for curve in told["curves"]], len(told["curves"]) * [[]])
        self.assertRegex(" ".join(told["notices"]), r"no width: \d figures .*The same values: in m0.cgats as in m0.cgats, .* 26 more")
        # What can't be judged by all of its patches.
        write("part.cgats", re.sub("(?m)^cyan .*\n", "", content_of("ref.cgats")))
        write("all.toml", '[[rule]]\nname = "all"\nmean = 1.2345\nmaximum = 9\n')
        run = tool("trend m0.cgats m1.cgats --reference part.cgats --tolerances all.toml -o part.html")
        self.assertIn("\nall: not judged in 2 of 2 measurements, 1 patch without a reference.\n", run.stdout)
        self.assertRegex(run.stdout, r"(?m)^all, CIEDE2000, mean: last [\d.]+, limit 1.2345, ")

        write("undated.cgats", content_of("ref.cgats"))
        run = tool("trend m2.cgats undated.cgats m0.cgats --reference ref.cgats -o u.html")
        self.assertEqual(run.returncode, DONE, run.stderr)
        self.assertIn("in the order in which they were given: undated.cgats tells no date", run.stdout)
        write("other.cgats", content_of("ref.cgats").replace("mix", "green"))
        for words, code, reason in (("m0.cgats other.cgats --reference ref.cgats", FILE, "other.cgats: the patch 'mix' is missing"),
                                    ("m0.cgats --reference ref.cgats", USAGE, "only one measurement"),
                                    ("m0.cgats m1.cgats --reference ref.cgats --baseline 1", USAGE, "--baseline"),
                                    ("m0.cgats m1.cgats --reference none.cgats", FILE, "none.cgats")):
            run = tool(f"trend {words} -o n.html")
            self.assertEqual((run.returncode, os.path.exists("n.html")), (code, False), words)
            self.assertIn(reason, run.stderr)

    def test_white_bases_are_saved_before_they_are_replaced(self):
        backups = lambda: len([name for name in os.listdir() if name.startswith("whitebase-640001-")])
        self.assertEqual(tool("--virtual whitebase --save old.cgats").returncode, DONE)
        old = content_of("old.cgats")
        self.assertIn("1\t0.86", old)
        write("next.cgats", old.replace("1\t0.86", "1\t0.90", 1))
        replace = "--virtual whitebase --write next.cgats"
        run = tool(replace)
        self.assertEqual((run.returncode, run.stdout), (NOT_CONFIRMED, ""), run.stderr)
        self.assertEqual(backups(), 1)
        self.assertIn("380 nm  0.90000", tool(replace + " --yes").stdout)

    def test_a_table_whose_write_was_cut_at_any_step_is_rescued(self):
        """The steps are unlock, prepare, erase, load, load, prepare, program, lock; the power fails within one."""
        table, cut = "--virtual --option Simulator.StateFile=table.state ", "--option Simulator.PowerCutAfterFlashSteps={} "
        rescue = table + "rescue --yes --json"
        tool(table + "whitebase --save old.cgats")
        write("next.cgats", content_of("old.cgats").replace("1\t0.86", "1\t0.90", 1))
        write("broken.block", "no block")
        for command, step in ([("whitebase --write next.cgats --yes", step) for step in range(8)] +
                              [("calibrate", 2), ("calibrate", 6)]):
            with self.subTest(command, step=step):
                os.remove("table.state")
                run = tool(table + cut.format(step) + command)
                self.assertEqual(run.returncode, NOT_CONNECTED, run.stderr)
                self.assertIn("run 'j4tavla rescue'", run.stderr)
                lost = step in range(2, 7)
                run = tool(table + "home")
                self.assertEqual(run.returncode, DEVICE if lost else DONE, run.stderr)
                self.assertEqual("bring it back with 'j4tavla rescue'" in run.stderr, lost)
                torn = content_of("table.state")  # the last is half programmed
                run = tool(rescue)
                self.assertEqual(run.returncode, DONE, run.stderr)
                self.assertEqual(json.loads(run.stdout)["written"] is not None, lost)
                self.assertIn("380 nm  0.90000" if step == 7 else "380 nm  0.86000", tool(table + "whitebase").stdout)
        write("table.state", torn)
        for arguments, code, said in (("", NOT_CONFIRMED, "nothing was written"),
                                      ("broken.block --yes", FILE, "is no whole configuration"),
                                      ("missing.block --yes", FILE, "can't be read"),
                                      ("--table 7 --yes", USAGE, "no table 7 among 640001")):
            run = tool(table + "rescue " + arguments)
            self.assertEqual(run.returncode, code, run.stderr)
            self.assertIn(said, run.stderr)
        for step in range(8):
            with self.subTest("rescue", step=step):
                write("table.state", torn)
                run = tool(cut.format(step) + rescue)
                self.assertEqual(run.returncode, NOT_CONNECTED, run.stderr)
                run = tool(rescue)
                self.assertEqual(run.returncode, DONE, run.stderr)
                self.assertEqual(json.loads(run.stdout)["fault"] is None, step == 7)
                self.assertEqual(tool(table + "calibrate").returncode, DONE)
        self.assertIn("several tables: 640001, 640002", tool("--option Simulator.Tables=2 " + rescue).stderr)

    def test_nothing_reaches_a_terminal_that_it_would_obey(self):
        write("chart.cgats", chart(1, 2).replace("R1C1", "a\x1b[2J\u009b2J").replace("R1C2", "a\x1b[2J\u009b2J"))
        for words in (["--virtual", "scan", "chart.cgats", "-o", "m.cgats"], ["--virtual", "home", "\x1b[2J\u009b2J"],
                      ["--virtual", "set", "J4TScanSpeed", "\x1b[2J\u009b2J"], ["--virtual", "info", "--unit", "\x1b[2J\u009b2J"],
                      ["report", "\x1b[2J\u009b2J", "-o", "r.html"]):
            for json_wanted in [], ["--json"]:
                run = tool(words + json_wanted)
                self.assertNotIn(run.returncode, (DONE, 1), run.stderr)
                self.assertIn("\\u001b[2J" if json_wanted else "\\x1b[2J\\xc2\\x9b", run.stderr)
                self.assertNotRegex(run.stdout + run.stderr, "[\x1b\u009b]")

    def test_finds_the_library_that_was_asked_for(self):
        table, bench, instrument = map(LIBRARY_NAME.format, ("j4tavla64", "j4bench", "sorvane64"))

        def place(folder, *names, source="bin"):
            os.makedirs(folder, exist_ok=True)
            for name in names:
                shutil.copy(os.path.join(BUILD, source, name), folder)

        def run(folder, arguments, search=""):
            """Runs the program of a folder while the system looks for libraries in another one."""
            return tool(arguments, os.path.abspath(os.path.join(folder, os.path.basename(PROGRAM))),
                        env=os.environ | {"LD_LIBRARY_PATH": search, "WINEPATH": search})

        for programs, real, virtual in (("out", "out", "out/virtual"), ("zip/bin", "zip/bin", "zip/virtual"),
                                        ("usr/bin", "usr/lib", "usr/lib/j4tavla64/virtual"), ("build", None, "build")):
            with self.subTest(programs):
                place(programs, os.path.basename(PROGRAM))
                place(virtual, table, bench, instrument)
                ended = run(programs, "info")
                self.assertEqual((ended.returncode, ended.stdout), (LIBRARY, ""), "a real table must not be simulated")
                if real:
                    place(real, table, source="real")
                    ended = run(programs, "home")
                    self.assertEqual((ended.returncode, ended.stdout), (LIBRARY, ""), ended.stderr)
                    self.assertIn("status 104 (J4_ResultFrameFailure)", ended.stderr)
                    # A library of that name which is not the bench's.
                    shutil.copy(os.path.join(BUILD, "bin", bench), os.path.join(programs, instrument))
                for arguments in ("--virtual info --json", f"--library {virtual} info --json"):
                    ended = run(programs, arguments, os.path.abspath(programs))
                    self.assertEqual(ended.returncode, DONE, ended.stderr)
                    self.assertIn(virtual, json.loads(ended.stdout)["libraryPath"].replace("\\", "/"))
        place("alone", os.path.basename(PROGRAM))
        place(".", table, bench, instrument)  # in the current folder, where nobody looks
        for search, complaint in (("real", "status 104"), ("bin", "only the virtual variant of the library was found"),
                                  ("missing", f"Can't load library '{table}': 126")):
            ended = run("alone", "info", os.path.join(BUILD, search))
            self.assertEqual(ended.returncode, LIBRARY, ended.stderr)
            self.assertIn(complaint, ended.stderr)


@unittest.skipIf(WINDOWS, "terminals and signals are those of Linux")
class TerminalTest(unittest.TestCase):
    setUp = ToolTest.setUp
    assert_measured = ToolTest.assert_measured

    def scan_until_row(self, end, row, *more):
        """A scan slow enough to be ended behind a row; "pipe" ends it by nobody listening any longer.
        @return exit code and the rest of the output"""
        with subprocess.Popen([PROGRAM] + ("scan --virtual chart.cgats -o m.cgats --json --trust-place --option "
                                           "Simulator.TimeScale=0.04").split() + list(more),
                              stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True) as scan:
            for line in scan.stdout:
                if f'"event":"row","rowsDone":{row}' in line:
                    break
            if end == "pipe":
                scan.stdout.close()
                return scan.wait(), ""
            scan.send_signal(end)
            rest = scan.communicate()[0]
        return scan.returncode, rest

    def test_whatever_ends_a_scan_its_rows_are_kept_and_a_resume_goes_on(self):
        for end, row in ((signal.SIGINT, 1), (signal.SIGINT, 2), (signal.SIGHUP, 3), (signal.SIGTERM, 2), ("pipe", 2),
                         (signal.SIGKILL, 1), (signal.SIGKILL, 2), (signal.SIGKILL, 3)):
            with self.subTest(end=end, row=row):
                ToolTest.setUp(self)
                write("chart.cgats", chart(7, 10))
                code, rest = self.scan_until_row(end, row)
                if end == signal.SIGKILL:
                    self.assertEqual(code, -signal.SIGKILL)
                    # The machine may go down within a write, too.
                    write("m.cgats.partial", content_of("m.cgats.partial") + "41\tR5")
                    row += 1
                    self.scan_until_row(end, row, "--resume")
                    write("m.cgats.partial", content_of("m.cgats.partial") + "41\tR5")
                else:
                    self.assertEqual(code, INTERRUPTED)
                    kept = len(spectra("m.cgats.partial")) // 10
                    self.assertTrue(row <= kept < 7, "whole rows")
                    self.assertTrue(end == "pipe" or '"result":"interrupted","file":"m.cgats.partial"' in rest, rest)
                self.assertFalse(os.path.exists("m.cgats"))
                run = tool("--virtual scan chart.cgats -o m.cgats --resume --json")
                self.assertEqual(run.returncode, DONE, run.stderr)
                done = int(re.search(r'"event":"start","rowsDone":(\d)', run.stdout)[1])
                self.assertTrue(row <= done < 7, run.stdout)
                self.assert_measured("m.cgats", "chart.cgats")
                self.assertEqual(sorted(os.listdir()), ["chart.cgats", "m.cgats"])

    def test_a_full_disk_keeps_the_rows_that_fitted(self):
        def little_room():
            signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
            resource.setrlimit(resource.RLIMIT_FSIZE, (12000, 12000))

        scan = "--virtual scan chart.cgats -o m.cgats "
        run = tool(scan, preexec_fn=little_room)
        self.assertEqual(run.returncode, FILE, run.stderr)
        self.assertIn("the scan goes on, and the next row tries again", run.stdout)
        self.assertIn("with --resume only the file is written", run.stderr)
        run = tool(scan + "--resume --json")
        self.assertEqual(run.returncode, DONE, run.stderr)
        self.assertRegex(run.stdout, '"event":"start","rowsDone":[1-3],')
        self.assert_measured("m.cgats", "chart.cgats")
        with open("/dev/full", "w", encoding="utf-8") as full:
            self.assertEqual(subprocess.run([PROGRAM, "--virtual", "info"], stdout=full, stderr=subprocess.DEVNULL,
                                            check=False).returncode, FILE)

    def test_a_measurement_goes_to_another_place_when_the_first_is_gone(self):
        os.mkdir("gone")
        write("there.cgats", "old")

        def remove():
            shutil.rmtree("gone")
            return ""

        ask = "Name another file for the measurement, or nothing to give up:"
        code, shown = at_terminal(
            "scan --virtual chart.cgats -o gone/m.cgats --option Simulator.TimeScale=0.1",
            [("looking where the chart lies", remove), (ask, "there.cgats\n"), (ask, "elsewhere.cgats\n")])
        self.assertEqual(code, DONE, shown)
        self.assertIn("'there.cgats' exists", shown)
        self.assert_measured("elsewhere.cgats", "chart.cgats")

    def test_one_program_at_a_time_writes_a_file(self):
        import fcntl
        write("m.cgats.lock", "")  # of one that was killed
        for output, lock in (("m.cgats", "m.cgats.lock"), ("-", "chart.cgats.partial.lock")):
            with open(lock, "w", encoding="utf-8") as other:
                fcntl.flock(other, fcntl.LOCK_EX)
                run = tool("--virtual scan chart.cgats --restart -o " + output)
                self.assertEqual(run.returncode, FILE, run.stderr)
                self.assertIn("' is being written by another program", run.stderr)
            self.assertEqual(tool("--virtual scan chart.cgats -o " + output).returncode, DONE)
        self.assertEqual(sorted(os.listdir()), ["chart.cgats", "m.cgats"])

    def test_progress_at_a_terminal(self):
        code, shown = at_terminal("scan --virtual chart.cgats -o m.cgats")
        self.assertEqual(code, DONE, shown)
        self.assertIn("] 3/4 rows, 30/40 patches, 0:00 left", shown)
        self.assertIn("40 of 40 patches are measured: m.cgats", shown)
        self.assertNotIn("{", shown)

    def test_the_white_base_is_replaced_only_after_yes(self):
        tool("--virtual whitebase --save old.cgats")
        for answer, ends in (("no", (NOT_CONFIRMED, "was not replaced")), ("yes", (DONE, "Home the arm and calibrate"))):
            code, shown = at_terminal("--virtual whitebase --write old.cgats",
                                      [("Replace the white base of table 640001? [yes/no]", answer + "\n")])
            self.assertEqual(code, ends[0], shown)
            self.assertIn(ends[1], shown)

    def test_a_signal_ends_a_command_behind_the_call_in_hand(self):
        commands = ["home", "move 500 400", "position", "calibrate", "spot 300 300", "align chart.cgats", "info",
                    "set J4THoldPosition yes", "get J4TMaxSpeed", "whitebase"]
        for command, wait, end in ([(command, 0.0, signal.SIGINT) for command in commands] +
                                   [("spot 300 300", 0.9, end) for end in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP)]):
            with self.subTest(command, wait=wait, end=end):
                if os.path.exists("table.state"):
                    os.remove("table.state")
                with subprocess.Popen([PROGRAM] + ("--virtual --option Simulator.TimeScale=0.2 --option "
                                                   "Simulator.StateFile=table.state " + command).split(),
                                      stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True) as working:
                    while not os.path.exists("table.state"):  # signals are kept before it is there
                        self.assertIsNone(working.poll())
                        time.sleep(0.002)
                    time.sleep(wait)  # into the calibration
                    working.send_signal(end)
                    shown = working.communicate()[1]
                self.assertEqual(working.returncode, INTERRUPTED, shown)
                self.assertIn("ending: what is under way is finished first", shown)
                self.assertIn("The table was let go.", shown)
        tool("--virtual whitebase --save old.cgats")
        code, shown = at_terminal("--virtual whitebase --write old.cgats", [("[yes/no]", "\x03")])
        self.assertEqual(code, INTERRUPTED, shown)

    def test_no_signal_cuts_a_write(self):
        tool("--virtual --option Simulator.StateFile=table.state whitebase --save old.cgats")
        write("next.cgats", content_of("old.cgats").replace("1\t0.86", "1\t0.90", 1))
        for end, code in ((signal.SIGINT, INTERRUPTED), (signal.SIGTERM, INTERRUPTED),
                          (signal.SIGUSR1, -signal.SIGUSR1), (signal.SIGKILL, -signal.SIGKILL)):
            with self.subTest(end=end):
                os.remove("table.state")
                with subprocess.Popen([PROGRAM] + ("--virtual --option Simulator.StateFile=table.state --option "
                                                   "Simulator.TimeScale=0.3 whitebase --yes --write next.cgats").split(),
                                      stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL) as writing:
                    # A sector that is erased and not yet programmed.
                    while not os.path.exists("table.state") or "flash 0e000 " in content_of("table.state"):
                        self.assertIsNone(writing.poll())
                        time.sleep(0.002)
                    writing.send_signal(end)
                self.assertEqual(writing.returncode, code)
                run = tool("--virtual --option Simulator.StateFile=table.state rescue --yes --json")
                self.assertEqual(json.loads(run.stdout)["written"] is not None, end == signal.SIGKILL, run.stderr)
                run = tool("--virtual --option Simulator.StateFile=table.state whitebase")
                self.assertIn("380 nm  0.86000" if end == signal.SIGKILL else "380 nm  0.90000", run.stdout)

    def test_corners_are_taken_with_the_arrow_keys(self):
        up, down, right, left = (lambda count, arrow=arrow: ("\x1b[" + arrow) * count for arrow in "ABCD")
        fine_right, fine_down = (lambda count, arrow=arrow: ("\x1b[1;2" + arrow) * count for arrow in "CB")
        # The visor is at about 152.4 / 105 when the sensor is at home; the patches are at 180 to 279 / 160 to 187.
        keys = [right(5) + fine_right(13) + down(11) + "\r", right(19) + fine_right(20) + "\r",
                left(20) + fine_right(5) + down(5) + fine_down(10) + "\r"]
        code, shown = at_terminal("scan chart.cgats -o m.cgats --virtual --corners",
                                  [("mm", press) for press in keys])
        self.assertEqual(code, DONE, shown)
        self.assert_measured("m.cgats", "chart.cgats")

        code, shown = at_terminal("scan chart.cgats -o n.cgats --virtual --corners", [("mm", up(60) + "\r\r\r")])
        self.assertEqual(code, USAGE, shown)
        self.assertIn("Invalid", shown, "the limit is told, and the arm stays")
        self.assertIn("the three corners lie in one line", shown)


if __name__ == "__main__":
    wanted = [argument for argument in sys.argv[3:] if not argument.startswith("--")]
    if "--without" in sys.argv:
        for name in wanted:
            case, _, test = name.partition(".")
            if test:
                delattr(globals()[case], test)
            else:
                del globals()[case]
        wanted = []
    unittest.main(argv=sys.argv[:1] + wanted)
