#!/usr/bin/env python3
"""Scans rows of patches and prints their spectra: the first program in Python.

    scan_chart.py 199.5,250,356.5,250,5

For each patch one line goes to standard output: row and patch, counted from 1, and 36 reflectance factors, separated by
tabs. The exit code is 0 when every patch of every row was found. On the virtual table it runs with two environment
variables: J4TAVLA_LIBRARY=virtual J4TAVLA_OPTIONS=Simulator.ChartFile=chart.cgats
"""
import argparse
import sys

import j4tavla


def row(text):
    """X1,Y1,X2,Y2,PATCHES"""
    x1, y1, x2, y2, patches = text.split(",")
    return (float(x1), float(y1)), (float(x2), float(y2)), int(patches)


arguments = argparse.ArgumentParser(description="Scans rows of patches and prints their spectra.")
arguments.add_argument("rows", type=row, nargs="+", metavar="X1,Y1,X2,Y2,PATCHES",
                       help="first and last point of a row on bare paper (mm), and its number of patches")
rows = arguments.parse_args().rows
good = True
with j4tavla.Table() as table:
    table.connect()
    print("Table", table.options["J4TSerialNumber"], "with instrument", table.options["J4TJ4SerialNumber"], file=sys.stderr)
    table.options["MeasurementMode"] = "ScanningReflectance"
    table.calibrate()
    for number, (start, end, patches) in enumerate(rows, 1):
        spectra = table.scan(start, end)
        if len(spectra) != patches:
            print(f"Row {number} has {patches} patches, but {len(spectra)} were found.", file=sys.stderr)
            good = False
        for patch, spectrum in enumerate(spectra, 1):
            print(number, patch, *(f"{value:.6f}" for value in spectrum), sep="\t")
    table.go_home()
sys.exit(0 if good else 1)
