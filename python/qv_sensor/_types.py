"""The plain types of the package, and the aliases for its annotations."""

from __future__ import annotations

import os
from collections.abc import Iterable, Mapping, Sequence
from typing import TYPE_CHECKING, Any, Literal, NamedTuple, Union

from numpy.typing import ArrayLike

if TYPE_CHECKING:
    from ._core import Broker, SensorFieldOfView2D, UnitContext


class Pose2D(NamedTuple):
    """A pose in the plane: x and y in metres, theta in radians, counted from x towards y."""

    x: float
    y: float
    theta: float


class LogRecord(NamedTuple):
    """A line of the log; `timestamp` in nanoseconds of clock()."""

    level: str
    category: str
    method: str
    message: str
    timestamp: int


class Echo(NamedTuple):
    """An obstacle at a known range and unknown direction: somewhere on an arc about the sensor's x axis.

    `origin` is the sensor's pose in the map. Metres, radians.
    """

    origin: Pose2D
    range: float
    angular_range: float


class Health(NamedTuple):
    """The health of a sensor: its state, and the reason and remedy for it.

    `since` is the time at which the state began, nanoseconds of clock(). `times` counts how often the
    sensor entered this state, including now.
    """

    state: HealthState
    since: int
    reason: str
    remedy: str
    times: int


class Check(NamedTuple):
    """The result of a sensor's check. `verdict` is "works" or names the failure, `why` gives the reason."""

    name: str
    family: str
    verdict: str
    why: str
    records: int
    points: int


class TopicInfo(NamedTuple):
    """A topic of a recording. Times are the log's, nanoseconds; `rate` is in messages per second."""

    name: str
    type: str
    message_count: int
    bytes: int
    start_time: int
    end_time: int
    longest_gap: int
    rate: float


class RecordingInfo(NamedTuple):
    """The content of a recording. Times are the log's, nanoseconds; `damage` lists what could not be read."""

    path: str
    file_bytes: int
    message_count: int
    start_time: int
    end_time: int
    topics: Sequence[TopicInfo]
    metadata: Mapping[str, Mapping[str, str]]
    damage: Sequence[str]


class RecordDifference(NamedTuple):
    """The first difference between a sensor's records, made anew, and those that were recorded."""

    sensor: str
    time: int
    field: str
    recorded: str
    played: str


class SensorOrder(NamedTuple):
    """The part of a description about one sensor, for the creator of the sensor."""

    name: str
    family: str
    field_of_view: SensorFieldOfView2D
    properties: Mapping[str, str]
    memory_keys: Sequence[str]
    broker: Broker


class UnitOrder(NamedTuple):
    """The part of a description about one sensor, for the creator of its unit."""

    name: str
    properties: Mapping[str, str]
    memory_keys: Sequence[str]
    context: UnitContext


def seconds(value: float) -> int:
    """Converts seconds to nanoseconds, rounded to the nearest."""
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
