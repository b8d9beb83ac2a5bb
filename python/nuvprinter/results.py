"""What printers tell, as values. `None` is "not known"; units are in the names.

The fields are those of the structures in nuvprinter.h, which says of each what it means, and from
which command it comes.
"""

from __future__ import annotations

import dataclasses
import enum
import typing
from dataclasses import dataclass
from datetime import datetime, timezone
from typing import Any, Callable, Dict, Optional, Tuple, Type, TypeVar, Union

from . import _native

# ---- Numbers with names; what a newer printer or library tells beyond them stays an int


class _Named(enum.IntEnum):
    """For a person its name, as "idle"."""

    def __str__(self) -> str:
        return self.name.lower().replace("_", " ")

    def __format__(self, how: str) -> str:
        return format(str(self), how)


class Result(_Named):
    """Why a call failed."""

    OK = 0
    INVALID_ARGUMENT = 1
    BAD_HANDLE = 2
    BUSY = 3
    NOT_FOUND = 4
    UNREACHABLE = 5
    NO_ANSWER = 6
    LOST = 7
    UNREADABLE = 8
    REFUSED = 9
    TIME_LIMIT = 10
    CANCELLED = 11
    BAD_FILE = 12
    NOT_FIT = 13
    UNCONFIRMED = 14
    TOO_SMALL = 15
    SYSTEM = 16


class Link(enum.IntFlag):
    NETWORK = 1
    USB = 2


class PrinterState(_Named):
    IDLE = 0
    PRINTING = 1
    RECEIVING = 2
    ERROR = 3


class ResinState(_Named):
    READY = 0
    ABSENT = 1
    TAG_UNREADABLE = 2
    EXPIRED = 3
    WRONG = 4
    TOO_LITTLE = 5


class Security(_Named):
    OPEN = 0
    SECURED = 1


class Port(_Named):
    IN_USE = 0
    WIRED = 1
    WIRELESS = 2


class JobResult(_Named):
    FINISHED = 0
    CANCELLED = 1
    FAILED = 2
    NOT_ENDED = 3


class Finding(enum.IntFlag):
    """Reasons against sending a file."""

    FILE_DAMAGED = 1
    OTHER_MODEL = 2
    RESIN_FORBIDS = 4
    RESIN_TOO_LITTLE = 8
    PRINTER_NOT_IDLE = 16
    NO_IMAGE = 32
    IMAGE_WRONG_SIZE = 64


class Stage(_Named):
    CHECKING = 1
    OPENING = 2
    SENDING = 3
    WAITING = 4
    CONFIRMING = 5


class OutcomeKind(_Named):
    NONE = 0
    ACCEPTED = 1
    SENT = 2
    CANCELLED = 3
    REFUSED = 4
    UNCONFIRMED = 5
    NOT_FIT = 6


class Part(_Named):
    ENGINE = 1
    ANDROID_BOARD = 2
    LCM_PANEL = 3


class EventKind(_Named):
    STATE = 1
    SILENT = 2
    GONE = 3
    PRINT_ENDED = 4


class LogLevel(_Named):
    ERROR = 1
    WARNING = 2


class Error(Exception):
    """A call that failed: the text is for a person, `reason` for the program, `command` the number of the
    printer command that failed, such as 102, or 0."""

    def __init__(self, reason: int, text: str = "", command: int = 0) -> None:
        super().__init__(text or _native.result_text(reason))
        self.reason = _as(Result)(reason)
        self.command = command

    def __reduce__(self) -> Tuple[type, Tuple[int, str, int]]:  # its text goes to other processes, too
        return type(self), (self.reason, str(self), self.command)


# ---- From C: by the type of the field


def _as(kind: Type[enum.Enum]) -> Callable[[Any], Any]:
    def convert(value: Any) -> Any:
        try:
            return kind(value)
        except ValueError:
            return value

    return convert


def _instant(seconds: int) -> Optional[datetime]:
    return datetime.fromtimestamp(seconds, timezone.utc) if seconds else None


def _same(value: Any) -> Any:
    return value


def _converter(hint: Any) -> Any:
    plain = [one for one in typing.get_args(hint) or (hint,) if one is not type(None)]
    for one in plain:
        if isinstance(one, type) and issubclass(one, enum.Enum):
            return _as(one)
    if datetime in plain:
        return _instant
    return bool if bool in plain else _same


_plain = (int, float, bytes, type(None))


def _value(native: Any, convert: Callable[[Any], Any]) -> Any:
    if isinstance(native, _native.Int):
        return convert(native.value) if native.known else None
    if isinstance(native, _native.Text):
        return _native.known_text(native)
    return convert(native) if isinstance(native, _plain) else tuple(_value(each, convert) for each in native)


_converters: Dict[Any, list[Tuple[str, Callable[[Any], Any]]]] = {}
Made = TypeVar("Made")


def made(kind: Type[Made], native: Any, **others: Any) -> Made:
    """The value of a structure; `others`: fields that it has not."""
    if kind not in _converters:
        hints = typing.get_type_hints(kind)
        names = [field.name for field in dataclasses.fields(kind)]
        _converters[kind] = [(name, _converter(hints[name])) for name in names if hasattr(native, name)]
    values: Dict[str, Any] = {name: _value(getattr(native, name), convert)
                              for name, convert in _converters[kind] if name not in others}
    return kind(**values, **others)


# ---- Values


@dataclass(frozen=True)
class Identity:
    """Who a printer is and where. One made by hand, to open a printer, needs link, address and TCP port."""

    link: Link
    address: Optional[str]
    tcp_port: int = 0
    contact: Union[Result, int] = Result.OK
    mac: Optional[str] = None
    name: Optional[str] = None
    model: Optional[str] = None
    serial: Optional[str] = None
    nickname: Optional[str] = None
    firmware: Optional[str] = None
    controller: Optional[str] = None
    manufactured: Optional[str] = None


@dataclass(frozen=True)
class State:
    state: Union[PrinterState, int]
    error_number: Optional[int]
    layer: Optional[int]
    percent: Optional[int]
    minutes_left: Optional[int]
    job_name: Optional[str]
    ends_at: Optional[datetime]


@dataclass(frozen=True)
class Job:
    index: Optional[int]
    bytes: Optional[int]
    layers: Optional[int]
    minutes: Optional[int]
    name: Optional[str]


@dataclass(frozen=True)
class Resin:
    state: Union[ResinState, int, None]
    remaining_ml: Optional[int]
    tank_volume_ml: Optional[int]
    open_mode: Optional[bool]
    tag_registered: Optional[bool]
    code: Optional[str]
    type: Optional[str]
    name: Optional[str]
    lot: Optional[str]
    use_by: Optional[str]


@dataclass(frozen=True)
class Scaling:
    x: Tuple[float, float] = (1.0, 1.0)
    y: Tuple[float, float] = (1.0, 1.0)
    z: Tuple[float, float] = (1.0, 1.0)


@dataclass(frozen=True)
class AccessPoint:
    joined: Optional[bool]
    signal_percent: Optional[int]
    security: Union[Security, int, None]
    channel: Optional[int]
    name: Optional[str]


@dataclass(frozen=True)
class Network:
    address: Optional[str]
    netmask: Optional[str]
    gateway: Optional[str]
    name_server: Optional[str]
    second_name_server: Optional[str]
    mac: Optional[str]


@dataclass(frozen=True)
class Versions:
    android_board: Optional[str]
    android_loader: Optional[str]
    lcm_panel: Optional[str]


@dataclass(frozen=True)
class JobRecord:
    index: Optional[int]
    result: Union[JobResult, int, None]
    layers: Optional[int]
    minutes: Optional[int]
    resin_ml: Optional[int]
    layer_thickness_um: Optional[int]
    exposure_ms: Optional[int]
    bottom_exposure_ms: Optional[int]
    laser_power_percent: Optional[int]
    name: Optional[str]
    resin_code: Optional[str]
    resin_lot: Optional[str]
    started: Optional[str]
    ended: Optional[str]


@dataclass(frozen=True)
class JobCounts:
    started: Optional[int]
    finished: Optional[int]
    cancelled: Optional[int]
    failed: Optional[int]


@dataclass(frozen=True)
class Sensors:
    chamber_top_c: Optional[int]
    chamber_bottom_c: Optional[int]
    tank_c: Optional[int]
    resin_level_percent: Optional[int]
    tank: Optional[int]
    z_limit_top: Optional[bool]
    z_limit_bottom: Optional[bool]
    wiper_home: Optional[bool]
    y_home: Optional[bool]
    y_end: Optional[bool]
    lid_closed: Optional[bool]
    cartridge: Optional[bool]
    platform: Optional[bool]
    moving_to_reference: Optional[bool]


@dataclass(frozen=True)
class Laser:
    photodiode_minimum: Optional[int]
    photodiode_maximum: Optional[int]
    photodiode_mean: Optional[int]
    pulse_width: Tuple[Optional[int], ...]


@dataclass(frozen=True)
class ScanUnit:
    """[0] alone on models with one scan line."""

    scan_centre: Tuple[Optional[int], ...]
    line_length: Tuple[Optional[int], ...]
    trigger_delay: Tuple[Optional[int], ...]
    z_offset: Tuple[Optional[int], ...]
    polygon_speed: Optional[int]
    start: Optional[int]
    line_width: Optional[int]
    y_offset: Optional[int]


@dataclass(frozen=True)
class Check:
    findings: Finding
    message: Optional[str]
    machine_id: Optional[str]
    machine_family: Optional[str]
    printer_model: Optional[str]
    resin_needed_ml: Optional[int]
    resin_left_ml: Optional[int]
    layers: Optional[int]
    minutes: Optional[int]
    bytes: int


@dataclass(frozen=True)
class Progress:
    stage: Union[Stage, int]
    bytes_sent: int
    bytes_total: int

    @property
    def percent(self) -> int:
        return self.bytes_sent * 100 // self.bytes_total if self.bytes_total > 0 else 0


@dataclass(frozen=True)
class Outcome:
    """True when all was sent and the printer has not said that it lacks something."""

    outcome: Union[OutcomeKind, int]
    findings: Finding
    may_hold_job: bool
    bytes_sent: int
    job_index: Optional[int]
    message: Optional[str]
    reason: Union[Result, int]

    def __bool__(self) -> bool:
        return self.outcome in (OutcomeKind.ACCEPTED, OutcomeKind.SENT)


@dataclass(frozen=True)
class Event:
    event: Union[EventKind, int]
    state: Optional[State]
    job: Optional[Job]
    last_answer: Optional[datetime]
    job_result: Union[JobResult, int, None]
    changed: bool
    reason: Union[Result, int]
