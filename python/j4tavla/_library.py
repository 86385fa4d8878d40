"""The table's library: where it is found, its functions with their types, one call at a time.

The library keeps its state for the whole process, and so does this module: one library, one lock, one user at a time.
"""
from __future__ import annotations

import collections
import ctypes
import os
import sys
import threading
from pathlib import Path
from typing import Any, Iterator, Optional

from ._errors import Status, TableError

if sys.platform == "win32":
    _FILE_NAME, _BENCH_NAME = "j4tavla64.dll", "j4bench.dll"
else:
    _FILE_NAME, _BENCH_NAME = "libj4tavla64.so", "libj4bench.so"

_ErrorHandler = ctypes.CFUNCTYPE(None, ctypes.c_char_p, ctypes.c_int32, ctypes.c_char_p)
_DeviceMessageHandler = ctypes.CFUNCTYPE(None, ctypes.c_int32, ctypes.c_char_p)
_Floats = ctypes.POINTER(ctypes.c_float)


class PrivateTableRequest(ctypes.Structure):
    """Record of Table.private(), operations 1001 and 1002: raw bytes to and from the table's serial line."""

    _fields_ = [
        ("data", ctypes.POINTER(ctypes.c_char)),  # 1001: the bytes to write; 1002: set to those read, until the next read
        ("length", ctypes.c_int32),  # number of bytes; for 1002 first the number wanted
        ("timeout", ctypes.c_uint32),  # 1002: milliseconds, at most 60000
        ("unused", ctypes.c_uint32),
        ("failed", ctypes.c_byte),  # set to 0 or 1
        ("errorText", ctypes.c_char_p),  # set to what failed
    ]


class _Status(ctypes.c_int32):
    """Marks the functions whose value is a status; ctypes hands subclasses of its types over as they are."""


# Result and arguments of every function.
_FUNCTIONS: dict[str, tuple[Any, ...]] = {
    "J4_Calibrate": (_Status,),
    "J4_TriggerMeasurement": (_Status,),
    "J4_GetNumberOfAvailableSamples": (ctypes.c_int32,),
    "J4_GetSpectrum": (_Status, _Floats, ctypes.c_uint32),
    "J4_GetTriStimulus": (_Status, _Floats, ctypes.c_uint32),
    "J4_GetDensity": (_Status, _Floats, ctypes.c_uint32),
    "J4_SetSubstrate": (_Status, _Floats),
    "J4_SetOption": (_Status, ctypes.c_char_p, ctypes.c_char_p),
    "J4_GetOption": (ctypes.c_char_p, ctypes.c_char_p),
    "J4_KeyPressed": (ctypes.c_int32,),
    "J4_IsConnected": (_Status,),
    "J4_GetDensities": (_Status, _Floats, ctypes.POINTER(ctypes.c_int32), ctypes.c_uint32),
    "J4_TriggerCountedScan": (_Status, ctypes.c_uint32),
    "J4_RegisterErrorHandler": (ctypes.c_void_p, _ErrorHandler),
    "J4_RegisterDeviceMessageHandler": (ctypes.c_void_p, _DeviceMessageHandler),
    "J4_GetPosition": (_Status, _Floats, _Floats),
    "J4_SetPosition": (_Status, ctypes.c_float, ctypes.c_float),
    "J4_GoToHomePosition": (_Status,),
    "J4_Scan": (_Status, ctypes.c_float, ctypes.c_float, ctypes.c_float, ctypes.c_float),
    "J4_IsTableConnected": (_Status,),
    "J4_SynchronizeWhitebases": (_Status, _Floats),
    "J4_Private": (ctypes.c_ssize_t, ctypes.c_int32, ctypes.c_void_p),
}


def _places(virtual: bool) -> Iterator[Path]:
    """Where a library may be when nobody says where: in the package, and in the folders of the Debian package."""
    package = Path(__file__).resolve().parent
    yield package / ("lib/virtual" if virtual else "lib")
    # Of an installation in .../lib/python3/dist-packages/j4tavla, wherever it has been unpacked.
    folders = [*list(package.parents)[2:3], Path("/usr/local/lib"), Path("/usr/lib")]
    yield from (folder / "j4tavla64/virtual" if virtual else folder for folder in folders)


def _is_virtual(library: Path) -> bool:
    return (library.parent / _BENCH_NAME).is_file()


def find(virtual: bool, library: str | os.PathLike[str] | None) -> str:
    """The file to load. Raises an OSError when there is none, or when it is not virtual but has to be."""
    given = os.fspath(library) if library is not None else os.environ.get("J4TAVLA_LIBRARY", "")
    if given == "virtual" and library is None:
        given, virtual = "", True
    if given:
        path = Path(given).resolve()
        if not path.is_file():
            raise FileNotFoundError(f"There is no library {path}.")
    else:
        found = [folder / _FILE_NAME for folder in _places(virtual) if (folder / _FILE_NAME).is_file()]
        if not found and virtual:
            raise FileNotFoundError(f"The virtual variant of {_FILE_NAME} is not installed; it is looked for in " +
                                    ", ".join(map(str, _places(virtual))) + ", and where J4TAVLA_LIBRARY says.")
        if not found:
            return _FILE_NAME  # the system's loader may know more places
        path = found[0].resolve()
    # A program that asks for a virtual table must not move a real one.
    if virtual and not _is_virtual(path):
        raise OSError(f"{path} is not the virtual variant: there is no {_BENCH_NAME} beside it.")
    return str(path)


def _load(file: str) -> dict[str, Any]:
    loaded = ctypes.CDLL(file)
    functions = {}
    for name, (result, *arguments) in _FUNCTIONS.items():
        try:
            function = getattr(loaded, name)
        except AttributeError:
            raise OSError(f"{file} is not the table's library: it has no function {name}.") from None
        function.restype, function.argtypes = result, arguments
        functions[name] = function
    return functions


def _decoded(text: Optional[bytes]) -> str:
    return (text or b"").decode(errors="replace")


_OF_PARENT = ("A Table was open when this process was forked: it is the parent's. Fork before the Table is opened, or start "
              "the process by the method \"spawn\".")


class Library:
    """The process's one library. Every failure of a call becomes a TableError.

    The child of a fork has a copy of all this, amid whatever the parent's threads were doing. So it calls nothing when the
    parent was using the library, and has a lock of its own, since nobody would release that of the parent.
    """

    def __init__(self) -> None:
        self.lock = threading.RLock()
        self.messages: collections.deque[tuple[int, str]] = collections.deque()  # of the instrument, not yet delivered
        self._file = ""
        self._functions: dict[str, Any] = {}
        self._failure: tuple[str, int, str] | None = None
        self._user = 0  # the process that has opened it
        # The library keeps pointers to them, so they live as long as the process.
        self._error_handler = _ErrorHandler(self._keep_failure)
        self._message_handler = _DeviceMessageHandler(self._keep_message)
        if hasattr(os, "register_at_fork"):
            os.register_at_fork(after_in_child=self._begin_child)

    def _begin_child(self) -> None:
        self.lock = threading.RLock()
        self.messages.clear()

    @property
    def is_virtual(self) -> bool:
        """Whether the loaded library is the virtual variant."""
        return _is_virtual(Path(self._file))

    def open(self, file: str, anew: bool) -> None:
        """Loads the library and takes it into use; a RuntimeError when it is in use, here or by the parent at the fork, or
        another one is loaded.

        anew: the virtual table is as at power-on, also when it has been used in this process.
        """
        with self.lock:
            self._refuse_child()
            if self._user:
                raise RuntimeError("A Table is open: the library has one state for the whole process. Close it first.")
            self._user = os.getpid()
            try:
                if self._functions and file != self._file:
                    raise RuntimeError(f"This process has loaded {self._file}. {file} needs a process of its own.")
                is_first = not self._functions
                if is_first:
                    self._functions = _load(file)
                    self._file = file
                self._register()
                if anew and not is_first:
                    self._call("J4_SetOption", b"Simulator.Reset", b"yes")
            except BaseException:
                self._user = 0
                raise

    def _refuse_child(self) -> None:
        if self._user not in (0, os.getpid()):
            raise RuntimeError(_OF_PARENT)

    def release(self) -> None:
        """Lets table and instrument go and ends the use; nothing when another process, a parent, has opened it."""
        with self.lock:
            if self._user != os.getpid():
                return
            try:
                self._call("J4_RegisterErrorHandler", _ErrorHandler(0))
                self._call("J4_RegisterDeviceMessageHandler", _DeviceMessageHandler(0))
                self._call("J4_SetOption", b"Reset", b"J4TAll")
            finally:
                self._user = 0
                self.messages.clear()

    def _register(self) -> None:
        self._call("J4_RegisterDeviceMessageHandler", self._message_handler)
        self._call("J4_RegisterErrorHandler", self._error_handler)
        # It gives the one registered before, but nothing where the instrument's library can't be loaded.
        if not self._call("J4_RegisterErrorHandler", self._error_handler):
            raise TableError("J4_RegisterErrorHandler", Status.FRAME_FAILURE, self._text("LastError"))

    def _keep_failure(self, function: bytes, status: int, message: bytes) -> None:
        self._failure = function.decode(), status, _decoded(message).strip()

    def _keep_message(self, message: int, text: Optional[bytes]) -> None:
        self.messages.append((message, _decoded(text)))

    def _text(self, key: str) -> str:
        return _decoded(self._functions["J4_GetOption"](key.encode())).strip()

    def _call(self, name: str, *arguments: Any) -> Any:
        self._failure = None
        result = self._functions[name](*arguments)
        failure = self._failure
        if isinstance(result, _Status):
            if result.value == 0:
                return 0
            # Without the instrument's library there is no call of the handler, only a status.
            function, _, text = failure or (name, 0, self._text("LastError"))
            raise TableError(function, result.value, text, self._text("ExtendedErrorInformation"))
        if failure is not None:
            raise TableError(*failure, self._text("ExtendedErrorInformation"))
        return result

    def call(self, name: str, *arguments: Any) -> Any:
        """Calls a function; its value when it does not fail. A RuntimeError in the child of a fork."""
        with self.lock:
            self._refuse_child()
            try:
                return self._call(name, *arguments)
            finally:
                if name == "J4_SetOption" and arguments[0] == b"Reset":
                    self._register()  # the library forgets its handlers


LIBRARY = Library()
