"""The package j4tavla on the virtual table."""
import ctypes
import gc
import os
import re
import subprocess
import sys
import threading
from pathlib import Path

import j4tavla
import pytest
from j4tavla import Status, Table, TableError
from j4tavla._library import LIBRARY
from printed_rows import CHART

HEADER = Path(__file__).parents[2] / "c_sdk/include/j4tavla.h"
ROWS = {"A": ((190, 250), (274, 250)), "B": ((190, 300), (252, 300))}
# What is measured is rounded in the chart's file, on the way to the table, and in a mean of samples.
NEAR = 2e-4


def row(name):
    return [spectrum for patch, (_, _, spectrum) in CHART.items() if patch.startswith(name)]


def near(spectra):
    return [pytest.approx(spectrum, abs=NEAR) for spectrum in spectra]


@pytest.fixture
def table(chart):
    with Table(virtual=True, chart=chart) as opened:
        yield opened


def python(program, **environment):
    """Runs a program in a process of its own, for what holds for a whole process."""
    surroundings = {**os.environ, **environment}
    return subprocess.run([sys.executable, "-c", program], capture_output=True, text=True, timeout=60,
                          env={name: value for name, value in surroundings.items() if value})


@pytest.mark.parametrize("arrays", [False, True])
def test_a_row_gives_the_spectra_of_its_patches(chart, arrays):
    if arrays:
        numpy = pytest.importorskip("numpy")
    with Table(virtual=True, chart=chart, arrays=arrays) as table:
        none, empty = table.sample_count, table.spectra()
        table.calibrate()
        spectra = table.scan(*ROWS["A"])
        one = table.spectrum(2)
        assert table.sample_count == 3
    assert none == len(empty) == 0
    assert [list(spectrum) for spectrum in spectra] == near(row("A"))
    assert list(one) == list(spectra[2])
    assert len(j4tavla.WAVELENGTHS) == j4tavla.SPECTRUM_LENGTH == len(one)
    if arrays:
        assert (empty.shape, spectra.shape, one.shape) == ((0, 36), (3, 36), (36,))
        assert spectra.dtype == one.dtype == numpy.float32
    else:
        assert type(spectra) is type(spectra[0]) is type(one) is list and type(one[0]) is float


def test_a_place_is_measured_by_itself(table):
    table.calibrate()
    x, y, spectrum = CHART["A3"]
    table.move_to((x, y))
    assert table.position == pytest.approx((x, y), abs=0.05)
    table.options["MeasurementMode"] = "SingleReflectance"
    assert list(table.measure()) == pytest.approx(spectrum, abs=NEAR)
    lightness, a, b = table.colour(0)  # the patch is a grey of 0.3 in all bands
    assert (lightness, a, b) == pytest.approx((61.65, 0, 0), abs=0.05)
    values, highest = table.densities(0)
    assert values == pytest.approx([0.523] * 4, abs=1e-3) and table.density(0) == values[highest]
    table.set_substrate(table.spectrum(0))
    assert table.density(0) == pytest.approx(0, abs=1e-6)
    table.trigger_counted_scan(4)
    assert table.sample_count == 4
    table.go_home()
    assert table.position == pytest.approx((100, 80), abs=0.05)
    assert table.connected and table.instrument_connected and table.key_pressed == 0


@pytest.mark.parametrize("key, value, read", [
    ("J4TScanSpeed", 120, "120"),
    ("J4TIsVisorCoordinate", True, "yes"),
    ("J4THoldPosition", False, "no"),
    ("5041", 2.0, "2.0"),
    ("5044", 0.00001, "1e-05"),
    ("Simulator.ChartFile", "{folder}/Größe \udcff.cgats", None),
])
def test_options_are_written_and_read(table, chart, key, value, read):
    if read is None:
        read = value = value.format(folder=chart.parent)
        os.rename(chart, value)
    table.options[key] = value
    assert float(table.options[key]) == float(read) if "." in read and key[0] == "5" else table.options[key] == read


def test_options_name_those_that_can_be_listed(table):
    rows = re.findall(r'^ \* \| (".*?) +\|[^|]*\| *(\w+) *\|', HEADER.read_text(encoding="utf-8"), flags=re.M)
    documented = {key for keys, access in rows if "r" in access for key in re.findall(r'"([A-Z]\w+[^\W_])"', keys)}
    listed = list(table.options)
    assert {key for key in listed if not key.startswith("Simulator.")} == documented
    assert "Simulator.Noise" in listed and len(listed) == len(set(listed)) == len(table.options)
    assert dict(table.options)["J4TSerialNumber"] == "640001"
    assert "Simulator.Journal" in table.options and "MeasurementMode" in table.options
    assert not any(key in table.options for key in ("NoSuchKey", "65536", "", "\0", "\ud800", 5))
    assert table.options["NoSuchKey"] == ""
    version = [table.options[f"J4T{part}Version"] for part in ("Major", "Minor", "Revision", "Build")]
    assert ".".join(version) == j4tavla.__version__


@pytest.mark.parametrize("options, call, function, status, name, text", [
    ({}, lambda table: table.move_to((2000, 250)), "J4_SetPosition", Status.ILLEGAL_POSITION, "J4_ResultIllegalPosition",
     "Invalid position"),
    ({"Simulator.DirtyTile": True}, lambda table: table.calibrate(), "J4_Calibrate", Status.NOT_CALIBRATED,
     "J4_ResultNotCalibrated", "White base is dirty."),
    ({"Simulator.Tables": 0}, lambda table: table.connect(), "J4_IsTableConnected", Status.DEVICE_NOT_CONNECTED,
     "J4_ResultDeviceNotConnected", "No device connected."),
    ({}, lambda table: table.synchronize_whitebases([0.9] * 35 + [0]), "J4_SynchronizeWhitebases", Status.WHITE_BASE,
     "J4_ResultWhiteBase", "zero"),
    ({}, lambda table: table.spectrum(7), "J4_GetSpectrum", 7, "", "There is no sample 7"),
    ({}, lambda table: table.options["Please throw an exception in the j4tavla SDK"], "J4_GetOption", Status.EXCEPTION,
     "J4_ResultException", "You wanted a 'throw'"),
    ({}, lambda table: table.options[""], "J4_GetOption", Status.RESOURCE_FAULT, "J4_ResultResourceFault", "empty"),
    ({}, lambda table: table.private(1001), "J4_Private", Status.RESOURCE_FAULT, "J4_ResultResourceFault", "null"),
])
@pytest.mark.parametrize("reset", [False, True])
def test_failures_tell_what_failed(options, call, function, status, name, text, reset):
    with Table(virtual=True, options=options) as table:
        if reset:  # takes the library's handlers away
            table.options["Reset"] = "J4TAll"
        with pytest.raises(TableError) as raised:
            call(table)
        error = raised.value
        assert (error.function, error.status, error.name) == (function, status, name)
        assert text in error.text and str(error) == f"{function} failed with status {int(status)}: {error.text}"
        assert error.trace.startswith(error.text) and "\n" in error.trace
        assert table.options["J4TVersion"].startswith("Version")


@pytest.mark.parametrize("call, error", [
    (lambda table: table.spectrum(-1), IndexError),
    (lambda table: table.colour(2**32), IndexError),
    (lambda table: table.trigger_counted_scan(2**32 + 5), ValueError),
    (lambda table: table.private(2**32 + 1001), ValueError),
    (lambda table: table.set_substrate([1.0] * 35), ValueError),
    (lambda table: table.options.__setitem__("Simulator.Noise", "0\0.5"), ValueError),
    (lambda table: table.options.__setitem__("J4THoldPosition", [True]), TypeError),
    (lambda table: table.move_to(("left", 3)), ctypes.ArgumentError),
    (lambda table: table.scan((190, 250, 0), (274, 250)), ValueError),
])
def test_what_the_library_could_not_refuse_does_not_reach_it(table, call, error):
    with pytest.raises(error) as raised:
        call(table)
    assert not isinstance(raised.value, TableError)


def test_raw_bytes_go_to_the_table(table):
    table.connect()
    bad = j4tavla.PrivateTableRequest(length=-1)
    assert table.private(1001, bad) == 0 and bad.failed == 1 and bad.errorText == b"Invalid number of bytes: -1"
    status_request = ctypes.create_string_buffer(b";a034\r")
    written = j4tavla.PrivateTableRequest(data=ctypes.cast(status_request, ctypes.POINTER(ctypes.c_char)), length=6)
    table.private(1001, written)
    reply = j4tavla.PrivateTableRequest(length=4, timeout=100)
    table.private(1002, reply)
    assert (written.failed, reply.failed, reply.data[:reply.length]) == (0, 0, b":$a0")


def test_device_messages_come_at_the_end_of_a_call(table):
    seen = []

    def note(number, text):
        seen.append((number, text, table.options["Simulator.Unplug"]))

    table.on_device_message = note
    table.connect()
    table.options["Simulator.Unplug"] = "240118"
    assert not table.instrument_connected
    LIBRARY._message_handler(2, None)
    table.connected
    assert seen == [(1, "240118", "240118"), (2, "", "240118")]
    table.on_device_message = None
    table.options["Simulator.Unplug"] = "none"
    assert len(seen) == 2


def test_one_table_is_open_at_a_time(chart):
    with Table(virtual=True, chart=chart) as first:
        with pytest.raises(RuntimeError, match="Close it first"):
            Table(virtual=True)
        assert first.options["Simulator.ChartFile"] == str(chart)
    first.close()
    with pytest.raises(ValueError, match="closed"):
        first.connect()
    with pytest.raises(TableError, match="Simulator.ChartFile"):
        Table(virtual=True, chart=chart.parent / "none.cgats")
    second = Table(virtual=True)  # the failed one is not open
    assert second.options["Simulator.ChartFile"] == ""
    second.on_device_message = lambda number, text: second.close()
    del second
    gc.collect()
    with Table(virtual=True) as third, pytest.raises(KeyError):
        third.options["Simulator.Tables"] = 0
        raise KeyError


def test_threads_wait_for_one_another(table):
    table.calibrate()
    measured = {name: [] for name in ROWS}

    def measure(name):
        measured[name].extend(list(map(list, table.scan(*ROWS[name]))) for _ in range(5))

    threads = [threading.Thread(target=measure, args=[name]) for name in ROWS]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    for name, scans in measured.items():
        assert len(scans) == 5 and all(spectra == near(row(name)) for spectra in scans)


FORK = """
import os, signal, sys, threading, j4tavla

def child(*uses):
    process = os.fork()
    if process == 0:
        signal.alarm(20)
        for use in uses:
            try:
                print(use(), flush=True)
            except RuntimeError as error:
                print("the parent's" in str(error), flush=True)
        sys.exit(0)
    print("ended", os.waitpid(process, 0)[1], flush=True)

def opened():
    with j4tavla.Table(virtual=True) as table:
        return table.connected

def call():  # keeps another thread in a call
    with j4tavla._library.LIBRARY.lock:
        running.set()
        forked.wait()

running, forked = threading.Event(), threading.Event()
with j4tavla.Table(virtual=True) as table:
    thread = threading.Thread(target=call)
    thread.start()
    running.wait()
    child(lambda: table.connected, opened, table.close, opened)
    forked.set()
    thread.join()
    print("parent", table.connected, flush=True)
child(lambda: "closed", opened)
"""


def test_the_child_of_a_fork_leaves_an_open_table_to_its_parent():
    result = python(FORK)
    assert result.stdout.split() == ["True", "True", "None", "True", "ended", "0", "parent", "True",
                                     "closed", "True", "ended", "0"], result.stderr


FIND = "import j4tavla, sys\ntry:\n    {}\nexcept Exception as error:\n    print(type(error).__name__, error)"


@pytest.mark.parametrize("program, variable, said", [
    ("j4tavla.Table()", "{real}", r"TableError J4_RegisterErrorHandler failed with status 104: Can't load library"),
    ("j4tavla.Table(virtual=True)", "{real}", r"OSError .* is not the virtual variant"),
    ("j4tavla.Table(library='{real}', virtual=True)", "", r"OSError .* is not the virtual variant"),
    ("j4tavla.Table(library='none.so')", "", r"FileNotFoundError .*none\.so"),
    ("import _ctypes; j4tavla.Table(library=_ctypes.__file__)", "", "OSError .* no function J4_Calibrate"),
    ("j4tavla.Table(virtual=True).close(); j4tavla.Table(library='{real}')", None,
     r"RuntimeError .* needs a process of its own"),
    ("print(j4tavla.Table().options['Simulator.Noise'])", None, "0.25"),
    ("table = j4tavla.Table(virtual=True); table.connect(); table.go_home(); print('left open')", None, "left open"),
])
def test_the_library_is_found_or_refused(program, variable, said):
    real = os.environ["REAL_LIBRARY"]
    if variable is None:  # the virtual variant that these tests run with
        variable = os.environ.get("J4TAVLA_LIBRARY", "virtual")
    result = python(FIND.format(program.format(real=real)), J4TAVLA_LIBRARY=variable.format(real=real),
                    J4TAVLA_OPTIONS="Simulator.Noise=0.25")
    assert re.match(said, result.stdout), result.stdout
    assert (result.returncode, result.stderr) == (0, "")
