#!/usr/bin/env python3
"""Scans rows of patches and prints their spectra: the first program in Python, with nothing but its standard library.

A row is given by its first and last point on bare paper, in millimetres, and by its number of patches:

    scan_chart.py -l out/linux/virtual/libj4tavla64.so -o Simulator.ChartFile=chart.cgats 199,250,357,250,5

For each patch one line goes to standard output: row and patch, counted from 1, and 36 reflectance factors, separated by
tabs. The exit code is 0 when every patch of every row was found.
"""
import argparse
import ctypes
import sys

SPECTRUM_LENGTH = 36
ErrorHandler = ctypes.CFUNCTYPE(None, ctypes.c_char_p, ctypes.c_int32, ctypes.c_char_p)


class TableError(Exception):
    """A call of the library failed; the text says which and why."""


class Table:
    """The table's library with the functions that this program needs. A failed call raises a TableError."""

    def __init__(self, file_name):
        self.library = ctypes.CDLL(file_name)
        self.library.J4_GetOption.restype = ctypes.c_char_p
        self.library.J4_RegisterErrorHandler.restype = ctypes.c_void_p
        self.error = ""
        # The library calls it until another one is registered, so the object has to live as long.
        self.handler = ErrorHandler(self.keep_error)
        self.library.J4_RegisterErrorHandler(self.handler)

    def keep_error(self, function, status, message):
        self.error = f"{function.decode()} failed with status {status}: {message.decode(errors='replace').strip()}"

    def call(self, name, *arguments):
        self.error = ""
        status = getattr(self.library, name)(*arguments)
        if status != 0:
            # Without the instrument's library there is no call of the handler, only a status.
            raise TableError(self.error or f"{name} failed with status {status}: {self.option('LastError')}")

    def option(self, key):
        return self.library.J4_GetOption(key.encode()).decode(errors="replace")

    def set_option(self, key, value):
        self.call("J4_SetOption", key.encode(), value.encode())

    def scan(self, start_x, start_y, end_x, end_y):
        """Scans a row and gives the spectra of the patches that were found."""
        self.call("J4_Scan", *(ctypes.c_float(value) for value in (start_x, start_y, end_x, end_y)))
        return [self.spectrum(index) for index in range(self.library.J4_GetNumberOfAvailableSamples())]

    def spectrum(self, index):
        values = (ctypes.c_float * SPECTRUM_LENGTH)()
        self.call("J4_GetSpectrum", values, ctypes.c_uint32(index))
        return list(values)


def row(text):
    """X1,Y1,X2,Y2,PATCHES"""
    words = text.split(",")
    if len(words) != 5:
        raise ValueError
    return [float(word) for word in words[:4]] + [int(words[4])]


def option(text):
    """KEY=VALUE"""
    key, equals, value = text.partition("=")
    if not (key and equals and value):
        raise ValueError
    return key, value


def scan_rows(table, rows):
    """Prints the patches of all rows; False when one has another number of patches than it should."""
    table.call("J4_IsTableConnected")
    print(f"Table {table.option('J4TSerialNumber')} with instrument {table.option('J4TJ4SerialNumber')}",
          file=sys.stderr)
    table.set_option("MeasurementMode", "ScanningReflectance")
    table.call("J4_GoToHomePosition")
    table.call("J4_Calibrate")
    good = True
    for number, (*ends, patches) in enumerate(rows, 1):
        spectra = table.scan(*ends)
        if len(spectra) != patches:
            print(f"Row {number} has {patches} patches, but {len(spectra)} were found.", file=sys.stderr)
            good = False
        for patch, spectrum in enumerate(spectra, 1):
            print(number, patch, *(f"{value:.6f}" for value in spectrum), sep="\t")
    table.call("J4_GoToHomePosition")
    return good


def main():
    arguments = argparse.ArgumentParser(description="Scans rows of patches and prints their spectra.")
    default = "j4tavla64.dll" if sys.platform == "win32" else "libj4tavla64.so"
    arguments.add_argument("-l", "--library", default=default, help="the table's library (default: %(default)s)")
    arguments.add_argument("-o", "--option", type=option, action="append", default=[], metavar="KEY=VALUE",
                           help="set an option before anything else")
    arguments.add_argument("rows", type=row, nargs="+", metavar="X1,Y1,X2,Y2,PATCHES",
                           help="first and last point of a row on bare paper (mm), and its number of patches")
    given = arguments.parse_args()
    try:
        table = Table(given.library)
        for key, value in given.option:
            table.set_option(key, value)
        return 0 if scan_rows(table, given.rows) else 1
    except (OSError, TableError) as error:
        print(error, file=sys.stderr)
        return 1


if __name__ == "__main__":
    sys.exit(main())
