"""Finding printers, and one that was opened."""

from __future__ import annotations

import ctypes as c
import os
from dataclasses import dataclass
from types import TracebackType
from typing import Any, Callable, List, Optional, Type, TypeVar, Union

from . import _native
from .results import (AccessPoint, Check, Error, Event, Finding, Identity, Job, JobCounts, JobRecord, Laser, Link,
                      LogLevel, Network, Outcome, OutcomeKind, Part, Port, Progress, Resin, Result, Scaling,
                      ScanUnit, Sensors, State, Versions, _as, made)

Path = Union[str, "os.PathLike[str]"]
Made = TypeVar("Made")


@dataclass(frozen=True)
class Call:
    """How long a call may last, in seconds (None: the limits of the wire), and who can end it: a function
    that is asked on the calling thread, every 0.2 s at the latest, and ends the call by returning False."""

    time_limit: Optional[float] = None
    still_wanted: Optional[Callable[[], object]] = None


@dataclass(frozen=True)
class SearchOptions:
    """`addresses`: "broadcast 10.0.5.7 10.0.6.2:6014"; None: the environment's NUVCONNECT_SEARCH, else
    broadcast. `found` is told each printer at once; returning False ends the search."""

    links: Link = Link.NETWORK | Link.USB
    addresses: Optional[str] = None
    udp_port: int = 0
    addresses_only: bool = False
    found: Optional[Callable[[Identity], object]] = None


@dataclass(frozen=True)
class SendOptions:
    """`accept`: findings that a person has accepted. `progress` runs on the calling thread; returning False
    cancels. `android_kind`: of an Android board's image, 0: 1."""

    accept: Finding = Finding(0)
    android_kind: int = 0
    progress: Optional[Callable[[Progress], object]] = None


# ---- One call of the C interface


class _Frame(_native.Frame):
    def __init__(self, call: Optional[Call], search: Optional[SearchOptions] = None,
                 sending: Optional[SendOptions] = None) -> None:
        super().__init__(call.time_limit if call else None, call.still_wanted if call else None)
        self._search = search
        self._sending = sending

    def ask(self, name: str, *arguments: Any) -> None:
        """Raises Error unless the result is OK."""
        result = self.run(name, *arguments)
        if result != Result.OK:
            raise self.failure(result)

    def failure(self, result: int) -> Error:
        return Error(result, _native.known_text(self.error.message) or "", self.error.command)

    # `user` of the options is that of the call.

    def found(self, pointer: int) -> bool:
        function = self._search and self._search.found
        return not function or self.guarded(function, made(Identity, _native.received(pointer, "nuv_identity")))

    def progress(self, pointer: int) -> bool:
        function = self._sending and self._sending.progress
        return not function or self.guarded(function, made(Progress, _native.received(pointer, "nuv_progress")))


def _native_search(frame: _Frame, options: SearchOptions) -> Any:
    return _native.STRUCTURES["nuv_search_options"](
        links=options.links, addresses=_text(options.addresses), udp_port=options.udp_port,
        addresses_only=options.addresses_only, found=_native.FOUND if options.found else None, user=frame.key)


def _text(text: Union[str, bytes, None]) -> Optional[bytes]:
    encoded = text.encode("utf-8") if isinstance(text, str) else text
    if encoded is not None and b"\0" in encoded:
        raise Error(Result.INVALID_ARGUMENT, "a text with a zero byte")
    return encoded


def _path(path: Path) -> Optional[bytes]:
    return _text(os.fsencode(path) if os.name == "posix" else os.fspath(path))


def _int(number: int) -> c.c_int32:
    if not -2**31 <= number < 2**31:
        raise Error(Result.INVALID_ARGUMENT, f"{number} is beyond 32 bits")
    return c.c_int32(number)


def _listed(handle: c.c_void_p, name: str, kind: Type[Made]) -> List[Made]:
    items = []
    try:
        for index in range(_native.dll.nuv_list_count(handle)):
            item = _native.STRUCTURES["nuv_" + name]()
            result = getattr(_native.dll, "nuv_list_get_" + name)(c.byref(item), handle, index)
            if result != Result.OK:
                raise Error(result)
            items.append(made(kind, item))
    finally:
        _native.dll.nuv_list_free(handle)
    return items


def find(options: SearchOptions = SearchOptions(), call: Optional[Call] = None) -> List[Identity]:
    """Printers on all networks and USB, in order of arrival. The time limit (3 s) is for everything. One
    that does not say who it is is in the list too, and its `contact` says why."""
    frame, handle = _Frame(call, options), c.c_void_p()
    try:
        frame.ask("nuv_search_printers", c.byref(handle), c.byref(_native_search(frame, options)))
    except BaseException:
        _native.dll.nuv_list_free(handle)
        raise
    return _listed(handle, "identity", Identity)


# ---- Owners of handles


class _Owner:
    _frees = ""

    def __init__(self, handle: int) -> None:
        self._handle: Optional[int] = _native.opened(self._frees, handle)

    def close(self) -> None:
        handle, self._handle = self._handle, None
        if handle is not None:
            _native.free(self._frees, handle)

    def __enter__(self: Made) -> Made:
        return self

    def __exit__(self, kind: Optional[Type[BaseException]], error: Optional[BaseException],
                 trace: Optional[TracebackType]) -> None:
        self.close()

    def __del__(self) -> None:
        handle = getattr(self, "_handle", None)
        if handle is not None:
            _native.collected(self._frees, handle)


class Watch(_Owner):
    """A printer that is looked at regularly, until this is closed."""

    _frees = "nuv_watch_free"

    def __init__(self, handle: int, watcher: "_Watcher") -> None:
        super().__init__(handle)
        self._watcher = watcher

    def wait(self, call: Optional[Call] = None) -> bool:
        """Until the watch has ended: its function returned False, or raised, which is raised here, or the
        printer was closed. False: the time limit came first."""
        result = _Frame(call).run("nuv_watch_wait", c.c_void_p(self._handle), tells=False)
        if result == Result.TIME_LIMIT:
            return False
        if result != Result.OK:
            raise Error(result)
        raised, self._watcher.raised = self._watcher.raised, None
        if raised is not None:
            raise raised
        return True


class _Watcher:
    def __init__(self, function: Callable[[Event], object]) -> None:
        self._function = function
        self.raised: Optional[BaseException] = None

    def look(self, pointer: int) -> bool:
        native = _native.received(pointer, "nuv_event")
        try:
            event = made(
                Event, native,
                state=made(State, _native.received(native.state, "nuv_state")) if native.state else None,
                job=made(Job, _native.received(native.job, "nuv_job")) if native.job else None)
            return self._function(event) is not False
        except BaseException as raised:
            self.raised = raised
            return False


class Printer(_Owner):
    """One connection to a printer, which serves one client: `let_go`. Calls take turns; any thread may call.

    Every method raises Error when it fails, and ends with Ctrl-C within a second.
    """

    _frees = "nuv_printer_free"

    # ---- Opening

    @classmethod
    def _opened(cls, frame: _Frame, name: str, *arguments: Any) -> "Printer":
        handle = c.c_void_p()
        try:
            frame.ask(name, c.byref(handle), *arguments)
        except BaseException:
            _native.dll.nuv_printer_free(handle)
            raise
        assert handle.value is not None
        return cls(handle.value)

    @classmethod
    def open(cls, found: Identity, call: Optional[Call] = None) -> "Printer":
        try:
            where = _native.Identity(link=found.link, tcp_port=found.tcp_port,
                                     address=_native.made_text(found.address or ""))
        except ValueError:
            raise Error(Result.NOT_FOUND) from None
        return cls._opened(_Frame(call), "nuv_printer_open", c.byref(where))

    @classmethod
    def open_address(cls, address: str, call: Optional[Call] = None) -> "Printer":
        """An IPv4 address, with an own UDP port if need be: "10.0.5.7:6014"."""
        return cls._opened(_Frame(call), "nuv_printer_open_address", _text(address))

    @classmethod
    def open_serial(cls, serial: str, options: SearchOptions = SearchOptions(),
                    call: Optional[Call] = None) -> "Printer":
        frame = _Frame(call, options)
        return cls._opened(frame, "nuv_printer_open_serial", _text(serial),
                           c.byref(_native_search(frame, options)))

    # ---- The connection

    def cancel(self) -> None:
        """Ends the calls under way on this printer; its watches go on. From any thread."""
        self._done(_native.dll.nuv_printer_cancel(c.c_void_p(self._handle)))

    def let_go(self) -> None:
        """Closes the connection until the next call, so that other programs reach the printer."""
        self._done(_native.dll.nuv_printer_let_go(c.c_void_p(self._handle)))

    @staticmethod
    def _done(result: int) -> None:
        if result != Result.OK:
            raise Error(result)

    # ---- Questions and orders

    def _ask(self, kind: Type[Made], name: str, call: Optional[Call], *inputs: Any) -> Made:
        out = _native.STRUCTURES["nuv_" + name]()
        _Frame(call).ask("nuv_printer_get_" + name, c.byref(out), c.c_void_p(self._handle), *inputs)
        return made(kind, out)

    def _number(self, name: str, call: Optional[Call]) -> int:
        out = c.c_int32()
        _Frame(call).ask("nuv_printer_get_" + name, c.byref(out), c.c_void_p(self._handle))
        return out.value

    def _tell(self, name: str, call: Optional[Call], *inputs: Any) -> None:
        _Frame(call).ask("nuv_printer_" + name, c.c_void_p(self._handle), *inputs)

    def get_identity(self, call: Optional[Call] = None) -> Identity:
        return self._ask(Identity, "identity", call)

    def get_state(self, call: Optional[Call] = None) -> State:
        return self._ask(State, "state", call)

    def get_job(self, call: Optional[Call] = None) -> Job:
        return self._ask(Job, "job", call)

    def skip_warmup(self, call: Optional[Call] = None) -> None:
        self._tell("skip_warmup", call)

    def get_resin(self, call: Optional[Call] = None) -> Resin:
        return self._ask(Resin, "resin", call)

    def get_laser_power_percent(self, call: Optional[Call] = None) -> int:
        return self._number("laser_power_percent", call)

    def set_laser_power_percent(self, percent: int, call: Optional[Call] = None) -> None:
        self._tell("set_laser_power_percent", call, _int(percent))

    def get_z_compensation_um(self, call: Optional[Call] = None) -> int:
        return self._number("z_compensation_um", call)

    def set_z_compensation_um(self, micrometres: int, call: Optional[Call] = None) -> None:
        self._tell("set_z_compensation_um", call, _int(micrometres))

    def get_scaling(self, call: Optional[Call] = None) -> Scaling:
        return self._ask(Scaling, "scaling", call)

    def set_scaling(self, scaling: Scaling, call: Optional[Call] = None) -> None:
        native = _native.STRUCTURES["nuv_scaling"](x=scaling.x, y=scaling.y, z=scaling.z)
        self._tell("set_scaling", call, c.byref(native))

    def set_nickname(self, nickname: str, call: Optional[Call] = None) -> None:
        self._tell("set_nickname", call, _text(nickname))

    def get_access_point(self, name: Optional[str] = None, call: Optional[Call] = None) -> AccessPoint:
        return self._ask(AccessPoint, "access_point", call, _text(name))

    def get_access_points(self, call: Optional[Call] = None) -> List[AccessPoint]:
        handle = c.c_void_p()
        try:
            _Frame(call).ask("nuv_printer_get_access_points", c.byref(handle), c.c_void_p(self._handle))
        except BaseException:
            _native.dll.nuv_list_free(handle)
            raise
        return _listed(handle, "access_point", AccessPoint)

    def join_access_point(self, name: str, key: Optional[str], call: Optional[Call] = None) -> None:
        """Without a key an open one."""
        self._tell("join_access_point", call, _text(name), _text(key))

    def leave_access_point(self, call: Optional[Call] = None) -> None:
        self._tell("leave_access_point", call)

    def get_network(self, port: Port = Port.IN_USE, call: Optional[Call] = None) -> Network:
        return self._ask(Network, "network", call, _int(port))

    def get_versions(self, call: Optional[Call] = None) -> Versions:
        return self._ask(Versions, "versions", call)

    def get_job_record(self, index: int, call: Optional[Call] = None) -> JobRecord:
        return self._ask(JobRecord, "job_record", call, _int(index))

    def get_job_counts(self, since_power_on: bool = False, call: Optional[Call] = None) -> JobCounts:
        return self._ask(JobCounts, "job_counts", call, _int(since_power_on))

    def get_last_read_job(self, call: Optional[Call] = None) -> int:
        return self._number("last_read_job", call)

    def set_last_read_job(self, index: int, call: Optional[Call] = None) -> None:
        self._tell("set_last_read_job", call, _int(index))

    def get_sensors(self, call: Optional[Call] = None) -> Sensors:
        return self._ask(Sensors, "sensors", call)

    def get_laser(self, number: int, call: Optional[Call] = None) -> Laser:
        return self._ask(Laser, "laser", call, _int(number))

    def get_scan_unit(self, call: Optional[Call] = None) -> ScanUnit:
        return self._ask(ScanUnit, "scan_unit", call)

    def get_led_hours(self, call: Optional[Call] = None) -> int:
        return self._number("led_hours", call)

    # ---- Jobs and firmware

    def check(self, path: Path, call: Optional[Call] = None) -> Check:
        """Whether this print file can be sent to this printer."""
        return _check(self._handle, path, call)

    def send(self, path: Path, options: SendOptions = SendOptions(), call: Optional[Call] = None) -> Outcome:
        """Raises Error only when nothing was sent for a reason that is no outcome. One job a process."""
        return self._transfer("send", options, call, _path(path))

    def send_text(self, path: Path, options: SendOptions = SendOptions(), call: Optional[Call] = None) -> Outcome:
        return self._transfer("send_text", options, call, _path(path))

    def update(self, part: Part, path: Path, options: SendOptions = SendOptions(),
               call: Optional[Call] = None) -> Outcome:
        """Replaces the firmware of a part."""
        return self._transfer("update", options, call, _int(part), _path(path))

    def abandon_job(self, call: Optional[Call] = None) -> None:
        self._tell("abandon_job", call)

    def _transfer(self, name: str, options: SendOptions, call: Optional[Call], *inputs: Any) -> Outcome:
        frame = _Frame(call, sending=options)
        native = _native.STRUCTURES["nuv_send_options"](
            accept=options.accept, android_kind=options.android_kind, user=frame.key,
            progress=_native.PROGRESS if options.progress else None)
        out = _native.STRUCTURES["nuv_outcome"]()
        result = frame.run("nuv_printer_" + name, c.byref(out), c.c_void_p(self._handle), *inputs, c.byref(native))
        if out.outcome == OutcomeKind.NONE:
            raise frame.failure(result)
        return made(Outcome, out, reason=_as(Result)(result))

    def raw(self, line: Union[str, bytes, None], call: Optional[Call] = None) -> bytes:
        """One command line and its reply, bytes as they came; without a line one more reply."""
        reply, length = c.create_string_buffer(65537), c.c_size_t()
        _Frame(call).ask("nuv_printer_raw", reply, c.c_size_t(len(reply)), c.byref(length),
                         c.c_void_p(self._handle), _text(line))
        return reply.raw[:length.value]

    # ---- Watching

    def watch(self, interval: float, function: Callable[[Event], object]) -> Watch:
        """Looks at the printer every so many seconds, at least 1. The function runs on a thread of the
        library and ends the watch by returning False, or by raising, which Watch.wait raises again."""
        watcher, handle = _Watcher(function), c.c_void_p()
        # The library releases it also when this fails.
        self._done(_native.dll.nuv_printer_watch(
            c.byref(handle), c.c_void_p(self._handle), _int(int(interval * 1000)), _native.LOOK,
            c.c_void_p(_native.held(watcher)), _native.RELEASE))
        assert handle.value is not None
        return Watch(handle.value, watcher)


def _check(handle: Optional[int], path: Path, call: Optional[Call]) -> Check:
    out = _native.STRUCTURES["nuv_check"]()
    _Frame(call).ask("nuv_printer_check", c.byref(out), c.c_void_p(handle), _path(path))
    return made(Check, out)


def check_file(path: Path, call: Optional[Call] = None) -> Check:
    """What is wrong with a print file in itself, without a printer."""
    return _check(None, path, call)


# ---- The library


class _Logger:
    def __init__(self, function: Callable[[LogLevel, str, str], object]) -> None:
        self._function = function

    def log(self, pointer: int) -> bool:
        native = _native.received(pointer, "nuv_log_line")
        self._function(LogLevel(native.level), native.printer.decode(), native.text.decode())
        return True


def set_log(level: LogLevel, function: Optional[Callable[[LogLevel, str, str], object]]) -> None:
    """What the library has to say, of the whole process: level, printer (empty: none) and text. Called on any
    thread; a function that raises ends it, as None does."""
    if function is None:
        Printer._done(_native.dll.nuv_log_to(0, None, None, None))
        return
    Printer._done(_native.dll.nuv_log_to(_int(level), _native.LOG,
                                         c.c_void_p(_native.held(_Logger(function))), _native.RELEASE))


def version() -> str:
    """Of the library that is loaded."""
    number: int = _native.dll.nuv_version()
    return f"{number // 10000}.{number // 100 % 100}.{number % 100}"
