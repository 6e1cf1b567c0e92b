"""The plain types of the package, and the words that annotations use."""

from __future__ import annotations

import os
from collections.abc import Iterable, Mapping, Sequence
from typing import TYPE_CHECKING, Any, Literal, NamedTuple, Union

from numpy.typing import ArrayLike

if TYPE_CHECKING:
    from ._core import Broker, SensorFieldOfView2D, UnitContext


class Pose2D(NamedTuple):
    """A frame in the plane: x and y in metres, theta in radians, counted from x towards y."""

    x: float
    y: float
    theta: float


class LogRecord(NamedTuple):
    """A line of the log; the time in nanoseconds of clock()."""

    level: str
    category: str
    method: str
    message: str
    timestamp: int


class Echo(NamedTuple):
    """An obstacle at a range, somewhere on an arc about the sensor's x axis. Metres, radians."""

    origin: Pose2D
    range: float
    angular_range: float


class Health(NamedTuple):
    """How a sensor is: since when (nanoseconds of clock()), why, what brings it back, and how often so far."""

    state: HealthState
    since: int
    reason: str
    remedy: str
    times: int


class Check(NamedTuple):
    """What became of a sensor that was checked; `verdict` is "works" or says what it does not."""

    name: str
    family: str
    verdict: str
    why: str
    records: int
    points: int


class TopicInfo(NamedTuple):
    """A topic of a recording. Times are the log's, nanoseconds; `rate` is messages a second."""

    name: str
    type: str
    message_count: int
    bytes: int
    start_time: int
    end_time: int
    longest_gap: int
    rate: float


class RecordingInfo(NamedTuple):
    """What a recording holds, by the log's times in nanoseconds; `damage` says what could not be read."""

    path: str
    file_bytes: int
    message_count: int
    start_time: int
    end_time: int
    topics: Sequence[TopicInfo]
    metadata: Mapping[str, Mapping[str, str]]
    damage: Sequence[str]


class RecordDifference(NamedTuple):
    """Where a sensor's records, made anew, differ from those that were recorded."""

    sensor: str
    time: int
    field: str
    recorded: str
    played: str


class SensorOrder(NamedTuple):
    """What a description says of a sensor that is to be made."""

    name: str
    family: str
    field_of_view: SensorFieldOfView2D
    properties: Mapping[str, str]
    memory_keys: Sequence[str]
    broker: Broker


class UnitOrder(NamedTuple):
    """What a description says of a sensor that something is to measure for."""

    name: str
    properties: Mapping[str, str]
    memory_keys: Sequence[str]
    context: UnitContext


def seconds(value: float) -> int:
    """So many seconds in nanoseconds, the nearest."""
    return round(value * 1e9)


PoseLike = Union[Pose2D, Sequence[float], ArrayLike]
PositionLike = Union[Sequence[float], ArrayLike]
PathLike = Union[str, "os.PathLike[str]"]
Names = Union[str, Iterable[str], None]
Value = Any
HealthState = Literal["off", "starting", "sound", "suspect", "frozen", "noisy", "late", "silent", "failing"]
FaultKind = Literal["off", "stuck", "garbage", "wrong", "slow", "delayed", "intermittent"]
PointMeaning = Literal["arc", "scan", "zone", "sighting", "floor", "touch"]
LogLevel = Literal["silent", "fatal", "error", "warning", "info", "verbose"]
