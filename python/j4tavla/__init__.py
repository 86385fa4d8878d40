"""The J4 Tavla scanning table: measures rows of patches on printed charts.

    with j4tavla.Table(virtual=True, chart="chart.cgats") as table:
        table.options["MeasurementMode"] = "ScanningReflectance"
        table.calibrate()
        spectra = table.scan((199.5, 250), (356.5, 250))

Places are (x, y) in millimetres on the bed, unless option "5030" chooses another unit. A spectrum has 36 reflectance
factors, 0 for black and 1 for the perfect white, at WAVELENGTHS.
"""
from ._errors import Status, TableError
from ._library import PrivateTableRequest
from ._options import Options
from ._table import SPECTRUM_LENGTH, WAVELENGTHS, Colour, Point, Spectra, Spectrum, Table
from ._version import __version__

__all__ = [
    "SPECTRUM_LENGTH", "WAVELENGTHS", "Colour", "Options", "Point", "PrivateTableRequest", "Spectra", "Spectrum", "Status",
    "Table", "TableError", "__version__",
]
