"""The options of library, table and instrument as a mapping."""
from __future__ import annotations

import decimal
from collections.abc import Callable, Iterator, Mapping
from typing import Any, Union

from ._errors import TableError

Value = Union[str, bool, int, float]

# The keys of the table's library that can be read, whatever table it is.
_LIBRARY_KEYS = (
    "J4TMoveSpeed", "J4TScanSpeed", "J4TScanDelay", "J4TIsVisorCoordinate", "J4TRecognitionAlgorithm", "Recognition",
    "J4THoldPosition", "J4TEnableElectrostaticFoil", "J4TEnableElectrostaticFoilButton", "J4TUseableWithoutJ4",
    "J4TDeviceType", "J4TConnection", "J4TJ4SerialNumber", "J4TSerialNumber", "J4TFirmwareVersion", "J4TMaxSpeed",
    "J4TLastWhiteBaseTransferTime", "J4TMetricAbsHomeMovements", "J4TMetricAbsMovements", "J4TMetricAbsDistance",
    "J4TMetricResets", "J4TMetricRelHomeMovements", "J4TMetricRelMovements", "J4TMetricRelDistance", "J4TVersion",
    "J4TMajorVersion", "J4TMinorVersion", "J4TRevisionVersion", "J4TBuildVersion", "J4TJ4SDKPath", "J4TSerialPortLogFile",
    "LastError", "ExtendedErrorInformation",
)

# Reading the help is reading the list itself, reading the journal empties it, and a reset can't be read.
_NOT_LISTED = ("Simulator.Help", "Simulator.Journal", "Simulator.Reset")


class Options(Mapping[str, str]):
    """The options; all values are texts, as the library has them.

    Reading a key of the table connects to it and fails with a TableError where there is none. A key that nobody knows
    goes to the instrument's library, whose answer may be an empty text.

    Iteration gives the keys of the table's library and those of the virtual table. The instrument's library does not
    tell which keys it has, so all others can be read and written, but are not listed.
    """

    def __init__(self, call: Callable[..., Any], virtual: bool) -> None:
        self._call = call
        self._virtual = virtual

    def __getitem__(self, key: str) -> str:
        value: bytes = self._call("J4_GetOption", _bytes(key))
        return value.decode(errors="surrogateescape")

    def __setitem__(self, key: str, value: Value) -> None:
        """Writes an option. True and False become "yes" and "no"; a float always has its point, an int never."""
        self._call("J4_SetOption", _bytes(key), _bytes(_text(value)))

    def __iter__(self) -> Iterator[str]:
        yield from _LIBRARY_KEYS
        lines = self["Simulator.Help"].splitlines() if self._virtual else []
        yield from (key for key in (line.partition(":")[0] for line in lines) if key and key not in _NOT_LISTED)

    def __len__(self) -> int:
        return sum(1 for _ in self)

    def __contains__(self, key: object) -> bool:
        """Whether the key is listed, or can be read and gives a text that is not empty."""
        if not isinstance(key, str):
            return False
        if key in iter(self) or key in _NOT_LISTED:
            return True
        try:
            name = _bytes(key)
        except ValueError:
            return False
        try:
            return bool(self._call("J4_GetOption", name))
        except TableError:
            return False


def _text(value: Value) -> str:
    if isinstance(value, bool):
        return "yes" if value else "no"
    if isinstance(value, float):
        text = format(decimal.Decimal(repr(float(value))), "f")
        return text if "." in text else text + ".0"
    if isinstance(value, (str, int)):
        return str(value)
    # Most others have a text, too, which the library may take for "no".
    raise TypeError(f"an option's value is a text, a number, True or False, not {type(value).__name__}")


def _bytes(text: str) -> bytes:
    """As the library takes it; a NUL would end it early and unnoticed."""
    if "\0" in text:
        raise ValueError("an option's key or value contains a NUL character")
    return text.encode(errors="surrogateescape")
