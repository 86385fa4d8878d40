"""What a failed call of the library becomes."""
from __future__ import annotations

import enum


class Status(enum.IntEnum):
    """The statuses that the table's library itself gives.

    Those of the instrument's library are passed on unchanged, so a TableError may have any other number too, and one of
    these with another meaning.
    """

    NO_ERROR = 0
    DEVICE_FAULT = 1  #: the table answered late, wrongly or with an error
    DEVICE_NOT_CONNECTED = 2  #: no table, or the channel to it failed
    NOT_CALIBRATED = 3  #: the calibration failed its checks
    EXCEPTION = 9  #: any other failure; see the text
    RESOURCE_FAULT = 10  #: an argument or a value was refused
    SPECTROPHOTOMETER_NOT_CONNECTED = 100  #: no connected instrument sits in the table
    POSITION_NOT_REACHED = 101  #: the arm did not reach its target
    ILLEGAL_POSITION = 102  #: the target lies outside the work area
    WHITE_BASE = 103  #: the white base is not usable
    FRAME_FAILURE = 104  #: the instrument's library can't be loaded


class TableError(Exception):
    """A call of the library failed."""

    function: str  #: the library's function, for instance "J4_Scan"
    status: int  #: compare it with the members of Status
    name: str  #: name of the status as in j4tavla.h, for instance "J4_ResultIllegalPosition"; empty for other statuses
    text: str  #: what failed
    trace: str  #: the text, the type of the error, and the trace through the library, one function a line

    def __init__(self, function: str, status: int, text: str, trace: str = "") -> None:
        super().__init__(function, status, text, trace)
        self.function = function
        self.status = status
        self.name = _NAMES.get(status, "")
        self.text = text
        self.trace = trace

    def __str__(self) -> str:
        return f"{self.function} failed with status {self.status}: {self.text}"


_NAMES = {int(status): "J4_Result" + status.name.title().replace("_", "") for status in Status}
