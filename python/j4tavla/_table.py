"""The table object: the library's functions as methods."""
from __future__ import annotations

import ctypes
import importlib
import os
import weakref
from collections.abc import Callable, Mapping, Sequence
from types import TracebackType
from typing import TYPE_CHECKING, Any, Optional, Tuple, Union

from ._errors import TableError
from ._library import LIBRARY, find
from ._options import Options, Value

if TYPE_CHECKING:
    import numpy
    import numpy.typing

SPECTRUM_LENGTH = 36
WAVELENGTHS = range(380, 731, 10)  #: nm, one for each value of a spectrum

Point = Tuple[float, float]  #: x and y, mm
Colour = Tuple[float, float, float]
Spectrum = Union["list[float]", "numpy.typing.NDArray[numpy.float32]"]  #: 36 reflectance factors
Spectra = Union["list[list[float]]", "numpy.typing.NDArray[numpy.float32]"]  #: one row of 36 for each sample

_Spectrum = ctypes.c_float * SPECTRUM_LENGTH


class Table:
    """A scanning table with the instrument in it, while the object is open.

    The library has one state for the whole process. So one Table can be open at a time, and a second one is refused with a
    RuntimeError; a process that has used the virtual variant can't use the real one, nor the other way round. Threads may
    share a Table: its calls wait for one another. In the child of a fork a Table that the parent had open can't be used,
    nor another one be opened: RuntimeError.

    Every method fails with a TableError when the library's function does, and with a ValueError when the Table is closed.
    Nothing is connected before the first call that needs it. Closing, by the end of a with block, by close() or by the end
    of the program, lets the arm go and gives table and instrument free for others.
    """

    def __init__(
        self,
        *,
        virtual: bool = False,
        chart: Union[str, os.PathLike[str], None] = None,
        options: Optional[Mapping[str, Value]] = None,
        library: Union[str, os.PathLike[str], None] = None,
        arrays: Optional[bool] = None,
        on_device_message: Optional[Callable[[int, str], None]] = None,
    ) -> None:
        """Loads the library and opens the table.

        virtual: a table that is simulated, with instrument 240118 in it. Each Table begins as at power-on; what the
            environment variable J4TAVLA_OPTIONS changes about that holds for the first one of the process.
        chart: the CGATS.17 file with layout and spectra of the chart on the virtual table's bed; bare paper without one.
        options: are written in their order before anything else.
        library: the file to load. Without it: what the environment variable J4TAVLA_LIBRARY names (the word "virtual"
            stands for the virtual variant), else the one in this package, else the one that is installed.
        arrays: spectra are numpy arrays (True) or lists (False); without it, arrays where numpy is installed.
        on_device_message: is called with number and text of each message of the instrument, at the end of the call in which
            it came, on the caller's thread. Number 1: the instrument that the text names has gone. It may use the table.

        Raises OSError when there is no such library or it can't be loaded, TableError when the instrument's library can't be
        loaded or an option is refused, RuntimeError when another Table is open, or was when this process was forked.
        """
        self.on_device_message = on_device_message
        self._numpy: Any = _numpy(arrays)
        LIBRARY.open(find(virtual, library), anew=virtual)
        self._release = weakref.finalize(self, LIBRARY.release)
        self.options = Options(self._call, LIBRARY.is_virtual)
        try:
            if chart is not None:
                self.options["Simulator.ChartFile"] = os.fspath(chart)
            for key, value in (options or {}).items():
                self.options[key] = value
        except BaseException:
            self._release()
            raise

    def __enter__(self) -> Table:
        return self

    def __exit__(
        self, kind: Optional[type[BaseException]], error: Optional[BaseException], trace: Optional[TracebackType]
    ) -> None:
        try:
            self.close()
        except TableError:
            if error is None:  # else that one tells more
                raise

    def close(self) -> None:
        """Lets table and instrument go. Closing twice is no fault."""
        self._release()

    # Table

    def connect(self) -> None:
        """Connects to the table if that has not been done; fails when there is none or no instrument is in it."""
        self._call("J4_IsTableConnected")

    @property
    def connected(self) -> bool:
        """Whether a table with an instrument is connected, or can be."""
        return self._succeeds("J4_IsTableConnected")

    def go_home(self) -> None:
        """Moves the arm to the white tile, by the motors' reference run."""
        self._call("J4_GoToHomePosition")

    def move_to(self, target: Point) -> None:
        """Moves the arm to (x, y), mm, and waits for its arrival. Within 0.05 mm of (0, 0) means go_home()."""
        x, y = target
        self._call("J4_SetPosition", x, y)

    @property
    def position(self) -> Point:
        """Where the arm is: (x, y), mm."""
        x, y = ctypes.c_float(), ctypes.c_float()
        self._call("J4_GetPosition", ctypes.byref(x), ctypes.byref(y))
        return x.value, y.value

    def scan(self, start: Point, end: Point) -> Spectra:
        """Carries the instrument along a row of patches while it measures, in the mode of option "MeasurementMode".

        start, end: (x, y) of the row's ends, mm, on bare paper some 8 mm beside its outer patches.
        Returns the patches that were recognised, in their order: shape (patches, 36), reflectance factors. Their colour
        values and densities can be read afterwards, by their index. The arm stays at the end of the row.
        """
        (start_x, start_y), (end_x, end_y) = start, end
        with LIBRARY.lock:
            self._call("J4_Scan", start_x, start_y, end_x, end_y)
            return self.spectra()

    # Instrument

    def calibrate(self, home: bool = True) -> None:
        """Calibrates on the white tile, both reflectance modes, and checks the seat of the instrument and the tile.

        home: go home before. An instrument without a table is calibrated with False, on its own white.
        """
        with LIBRARY.lock:
            if home:
                self.go_home()
            self._call("J4_Calibrate")

    def measure(self) -> Spectrum:
        """Takes one measurement where the instrument stands, in the mode of option "MeasurementMode". Shape (36,)."""
        with LIBRARY.lock:
            self.trigger()
            return self.spectrum(0)

    def trigger(self) -> None:
        """Takes one measurement; its result is sample 0."""
        self._call("J4_TriggerMeasurement")

    def trigger_counted_scan(self, count: int) -> None:
        """Takes so many samples at the instrument's own pace, while nothing moves the arm.

        A scan leaves option "Recognition" at yes, and then the instrument looks for patches in the samples, so that there
        are fewer. For all of them set it to False before, and to True again before the next scan.
        """
        self._call("J4_TriggerCountedScan", _number(count, ValueError))

    @property
    def sample_count(self) -> int:
        """Number of samples that can be read."""
        return max(0, int(self._call("J4_GetNumberOfAvailableSamples")))

    def spectrum(self, index: int) -> Spectrum:
        """Spectrum of a sample, counted from 0. Shape (36,), reflectance factors."""
        values = _Spectrum()
        self._call("J4_GetSpectrum", values, _index(index))
        return list(values) if self._numpy is None else self._numpy.array(values, self._numpy.float32)

    def spectra(self) -> Spectra:
        """Spectra of all samples. Shape (sample_count, 36), reflectance factors."""
        with LIBRARY.lock:
            count = self.sample_count
            rows = (_Spectrum * count)()
            for index in range(count):
                self._call("J4_GetSpectrum", rows[index], index)
        if self._numpy is None:
            return [list(row) for row in rows]
        return self._numpy.array(rows, self._numpy.float32).reshape(count, SPECTRUM_LENGTH)  # type: ignore

    def colour(self, index: int) -> Colour:
        """Colour values of a sample in the space of option "ColorSpaceDescription.Type", for instance L*, a*, b*."""
        values = (ctypes.c_float * 3)()
        self._call("J4_GetTriStimulus", values, _index(index))
        return values[0], values[1], values[2]

    def density(self, index: int) -> float:
        """The one density of a sample that the instrument chooses; of the virtual ones the highest of the four."""
        value = ctypes.c_float()
        self._call("J4_GetDensity", ctypes.byref(value), _index(index))
        return value.value

    def densities(self, index: int) -> tuple[tuple[float, float, float, float], int]:
        """The densities of a sample, cyan, magenta, yellow, black, and one more value of the instrument's library.

        On the virtual table that is the place of the highest density, counted from 0.
        """
        values, chosen = (ctypes.c_float * 4)(), ctypes.c_int32()
        self._call("J4_GetDensities", values, ctypes.byref(chosen), _index(index))
        return (values[0], values[1], values[2], values[3]), chosen.value

    def set_substrate(self, spectrum: Sequence[float]) -> None:
        """Gives the instrument the spectrum of the substrate that results refer to. Shape (36,)."""
        self._call("J4_SetSubstrate", _values(spectrum))

    @property
    def instrument_connected(self) -> bool:
        """Whether the selected instrument is connected."""
        return self._succeeds("J4_IsConnected")

    @property
    def key_pressed(self) -> int:
        """State of the instrument's button as its library gives it."""
        return int(self._call("J4_KeyPressed"))

    # Service

    def synchronize_whitebases(self, white_base: Sequence[float]) -> None:
        """Writes the reflectance of the white tile to the table's flash, for good. Shape (36,), none of them 0.

        Sets the table up anew: calibrate again afterwards.
        """
        self._call("J4_SynchronizeWhitebases", _values(white_base))

    def private(self, operation: int, record: Optional[ctypes.Structure] = None) -> int:
        """Operations of service programs, see j4tavla.h; 1001 and 1002 with a PrivateTableRequest."""
        reference = None if record is None else ctypes.byref(record)
        return int(self._call("J4_Private", _number(operation, ValueError, 2**31), reference))

    def _succeeds(self, name: str) -> bool:
        try:
            self._call(name)
        except TableError:
            return False
        return True

    def _call(self, name: str, *arguments: Any) -> Any:
        with LIBRARY.lock:
            if not self._release.alive:
                raise ValueError("the table is closed")
            try:
                return LIBRARY.call(name, *arguments)
            finally:
                while LIBRARY.messages:
                    message = LIBRARY.messages.popleft()
                    if self.on_device_message is not None:
                        self.on_device_message(*message)


def _numpy(wanted: Optional[bool]) -> Any:
    try:
        return None if wanted is False else importlib.import_module("numpy")
    except ImportError:
        if wanted:
            raise
        return None


def _index(index: int) -> int:
    return _number(index, IndexError)


def _number(number: int, error: type[Exception], end: int = 2**32) -> int:
    """Of any other one ctypes would take the last 32 bits."""
    if not 0 <= number < end:
        raise error(f"{number} is not a number from 0 to {end - 1}")
    return number


def _values(spectrum: Sequence[float]) -> ctypes.Array[ctypes.c_float]:
    if len(spectrum) != SPECTRUM_LENGTH:
        raise ValueError(f"a spectrum has {SPECTRUM_LENGTH} values, not {len(spectrum)}")
    return _Spectrum(*spectrum)
