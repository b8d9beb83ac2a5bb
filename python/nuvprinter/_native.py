"""nuvprinter.h for ctypes: its structures and functions, and what a call of one of them needs.

Two traps that every binding meets: when a callback of ctypes fails, what it returns is chance; and a
Ctrl-C that arrives as one begins is lost. So callbacks are guarded, and Ctrl-C is noted during a call
and acted upon behind it.
"""

from __future__ import annotations

import atexit
import ctypes as c
import itertools
import os
import queue
import signal
import sys
import threading
from pathlib import Path
from types import FrameType
from typing import Any, Callable, Dict, Optional, Tuple, Type, TypeVar

# ---- Structures


class Int(c.Structure):
    _fields_ = [("known", c.c_int32), ("value", c.c_int32)]


class Text(c.Structure):
    _fields_ = [("flags", c.c_uint32), ("text", c.c_char * 508)]


class Sized(c.Structure):
    """A structure that begins with its size."""

    size: int

    def __init__(self, **fields: Any) -> None:
        super().__init__(**fields)
        self.size = c.sizeof(self)


# Numbers, nuv_int, nuv_text, texts of the caller's, and pointers, also to functions.
_KINDS: Dict[str, Any] = {"i": c.c_int32, "u": c.c_uint32, "q": c.c_int64, "d": c.c_double, "n": Int,
                          "t": Text, "z": c.c_char_p, "p": c.c_void_p}

# Behind the size: name:kind, with a number how many there are.
_FIELDS = {
    "nuv_error": "result:i command:i system_error:i message:t",
    "nuv_call": "time_limit_ms:i still_wanted:p user:p",
    "nuv_identity": "link:i address:t tcp_port:i contact:i mac:t name:t model:t serial:t nickname:t firmware:t"
                    " controller:t manufactured:t",
    "nuv_search_options": "links:i addresses:z udp_port:i addresses_only:i found:p user:p",
    "nuv_state": "reserved:u state:n error_number:n layer:n percent:n minutes_left:n job_name:t ends_at:q",
    "nuv_job": "index:n bytes:n layers:n minutes:n name:t",
    "nuv_resin": "state:n remaining_ml:n tank_volume_ml:n open_mode:n tag_registered:n code:t type:t name:t"
                 " lot:t use_by:t",
    "nuv_scaling": "reserved:u x:d2 y:d2 z:d2",
    "nuv_access_point": "joined:n signal_percent:n security:n channel:n name:t",
    "nuv_network": "reserved:u address:t netmask:t gateway:t name_server:t second_name_server:t mac:t",
    "nuv_versions": "reserved:u android_board:t android_loader:t lcm_panel:t",
    "nuv_job_record": "index:n result:n layers:n minutes:n resin_ml:n layer_thickness_um:n exposure_ms:n"
                      " bottom_exposure_ms:n laser_power_percent:n name:t resin_code:t resin_lot:t started:t"
                      " ended:t",
    "nuv_job_counts": "started:n finished:n cancelled:n failed:n",
    "nuv_sensors": "chamber_top_c:n chamber_bottom_c:n tank_c:n resin_level_percent:n tank:n z_limit_top:n"
                   " z_limit_bottom:n wiper_home:n y_home:n y_end:n lid_closed:n cartridge:n platform:n"
                   " moving_to_reference:n",
    "nuv_laser": "photodiode_minimum:n photodiode_maximum:n photodiode_mean:n pulse_width:n5",
    "nuv_scan_unit": "scan_centre:n3 line_length:n3 trigger_delay:n3 z_offset:n2 polygon_speed:n start:n"
                     " line_width:n y_offset:n",
    "nuv_check": "findings:i message:t machine_id:t machine_family:t printer_model:t resin_needed_ml:n"
                 " resin_left_ml:n layers:n minutes:n bytes:q",
    "nuv_progress": "stage:i bytes_sent:q bytes_total:q",
    "nuv_send_options": "accept:i android_kind:i reserved:i progress:p user:p",
    "nuv_outcome": "outcome:i findings:i may_hold_job:i bytes_sent:q job_index:n message:t",
    "nuv_event": "event:i state:p job:p last_answer:q job_result:n changed:i reason:i",
    "nuv_log_line": "level:i printer:z text:z",
}


def _field(word: str) -> Tuple[str, Any]:
    name, kind = word.split(":")
    return name, _KINDS[kind[0]] * int(kind[1:]) if kind[1:] else _KINDS[kind[0]]


STRUCTURES: Dict[str, Type[Any]] = {
    name: type(name, (Sized,), {"_fields_": [("size", c.c_uint32), *map(_field, fields.split())]})
    for name, fields in _FIELDS.items()}

Call, Error, Identity = STRUCTURES["nuv_call"], STRUCTURES["nuv_error"], STRUCTURES["nuv_identity"]


def known_text(text: Any) -> Optional[str]:
    return text.text.decode("utf-8") if text.flags else None


def made_text(text: str) -> Any:
    """Raises ValueError when it does not fit."""
    return Text(1, text.encode("utf-8"))


def received(pointer: int, name: str) -> Any:
    """A copy of a structure that a callback was handed; an older library's is shorter."""
    value = STRUCTURES[name]()
    c.memmove(c.byref(value), pointer, min(c.c_uint32.from_address(pointer).value, c.sizeof(value)))
    return value


# ---- The library


def _load() -> c.CDLL:
    """The one that the environment names, or that lies beside this package, or the system's."""
    name = "nuvprinter.dll" if sys.platform == "win32" else "libnuvprinter.so.0"
    chosen = os.environ.get("NUVPRINTER_LIBRARY")
    beside = Path(__file__).resolve().parent / name
    if chosen is None and beside.exists():
        chosen = str(beside)
    if chosen is not None and sys.platform == "win32":
        getattr(os, "add_dll_directory")(str(Path(chosen).resolve().parent))
    return c.CDLL(chosen or name)


dll = _load()
dll.nuv_result_text.restype = c.c_char_p
for _name in ("nuv_list_free", "nuv_printer_free", "nuv_watch_free"):
    getattr(dll, _name).restype = None
    getattr(dll, _name).argtypes = [c.c_void_p]
dll.nuv_version.restype = c.c_uint32


def result_text(result: int) -> str:
    text: bytes = dll.nuv_result_text(result)
    return text.decode("utf-8")


# ---- Callbacks: one of each kind for all calls, which `user` tells apart

_keys = itertools.count(1)
_callees: Dict[int, Any] = {}  # what is called, until its call is over or `release` says so


def _told(kind: Any, method: str) -> c.c_void_p:
    """A function for C that calls this method of whoever `user`, its last argument, names."""

    def run(*arguments: Any) -> int:
        try:
            goes_on: bool = getattr(_callees[arguments[-1]], method)(*arguments[:-1])
            return 1 if goes_on else 0
        except BaseException:  # of the interpreter itself, at its end or out of memory
            return 0

    _kept.append(kind(run))
    return c.cast(_kept[-1], c.c_void_p)


def _release(user: int) -> None:
    _callees.pop(user, None)


_kept: list[Any] = []
_ASKED = c.CFUNCTYPE(c.c_int32, c.c_void_p)
_TOLD = c.CFUNCTYPE(c.c_int32, c.c_void_p, c.c_void_p)
STILL_WANTED = _told(_ASKED, "still_wanted")
FOUND = _told(_TOLD, "found")
PROGRESS = _told(_TOLD, "progress")
LOOK = _told(_TOLD, "look")
LOG = _told(_TOLD, "log")
_kept.append(c.CFUNCTYPE(None, c.c_void_p)(_release))
RELEASE = c.cast(_kept[-1], c.c_void_p)


def held(callee: Any) -> int:
    """The `user` that names it, until RELEASE is called with that."""
    key = next(_keys)
    _callees[key] = callee
    return key


# ---- A call

Answer = TypeVar("Answer")
Handler = Callable[[int, Optional[FrameType]], Any]


class Frame:
    """One call: its limits, its error, and what functions of the host raised meanwhile."""

    def __init__(self, time_limit: Optional[float], wanted: Optional[Callable[[], object]]) -> None:
        self.wanted = wanted
        self.raised: Optional[BaseException] = None
        self.interrupted = False
        self.key = next(_keys)  # `user` of what belongs to this call
        self.error = Error()
        self.native = Call(user=self.key)
        if time_limit is not None:
            self.native.time_limit_ms = max(1, min(int(time_limit * 1000), 2**31 - 1))

    def still_wanted(self) -> bool:
        return not self.interrupted and (self.wanted is None or self.guarded(self.wanted))

    def guarded(self, function: Callable[..., object], *arguments: object) -> bool:
        """Whether the host goes on: unless it returned False, or raised."""
        try:
            return function(*arguments) is not False
        except BaseException as raised:
            self.raised = raised
            return False

    def _note(self, _number: int, _frame: Optional[FrameType]) -> None:
        self.interrupted = True

    def run(self, name: str, *arguments: Any, tells: bool = True) -> int:
        """Calls the function with the arguments, `call` and, when it `tells`, `error`."""
        before: Any = None
        if threading.current_thread() is threading.main_thread():
            before = signal.getsignal(signal.SIGINT)
            if callable(before):
                signal.signal(signal.SIGINT, self._note)
        if callable(before) or self.wanted is not None:
            self.native.still_wanted = STILL_WANTED
        _callees[self.key] = self
        last = (c.byref(self.error),) if tells else ()
        try:
            result: int = getattr(dll, name)(*arguments, c.byref(self.native), *last)
        finally:
            del _callees[self.key]
            if callable(before):
                signal.signal(signal.SIGINT, before)
        if self.interrupted:
            before(signal.SIGINT, None)  # which raises KeyboardInterrupt, unless it is the host's own
        if self.raised is not None:
            raise self.raised
        return result


# ---- Handles that nobody closed

# Freeing may wait for a callback, and that for a lock of the host's. A collection may come while it
# is held, so a thread of its own does what a collection finds.
_collected: "queue.SimpleQueue[Tuple[str, int]]" = queue.SimpleQueue()
_reaper: Optional[threading.Thread] = None
_open: Dict[int, str] = {}  # handles, and what frees them
_reaper_lock = threading.Lock()


def _reap() -> None:
    while True:
        free(*_collected.get())


def opened(name: str, handle: int) -> int:
    global _reaper
    with _reaper_lock:
        _open[handle] = name
        if _reaper is None:
            _reaper = threading.Thread(target=_reap, name="nuvprinter", daemon=True)
            _reaper.start()
    return handle


def free(name: str, handle: int) -> None:
    if _open.pop(handle, None) is not None:
        getattr(dll, name)(handle)


def collected(name: str, handle: int) -> None:
    if not sys.is_finalizing():
        _collected.put((name, handle))


@atexit.register
def _end() -> None:
    """No thread of the library may call into an interpreter that is gone. Watches first. A daemon thread of
    the host's own is the host's matter."""
    for name in ("nuv_watch_free", "nuv_printer_free"):
        for handle in [handle for handle, frees in list(_open.items()) if frees == name]:
            free(name, handle)
    dll.nuv_log_to(0, None, None, None)
