"""Sensors of mobile robots: simulated, virtual, real and recorded, in metres and radians."""

from ._core import *  # noqa: F403
from ._core import __version__
from ._types import Check, Echo, LogRecord, Pose2D, SensorOrder


def seconds(value: float) -> int:
    """So many seconds in nanoseconds, the nearest."""
    return round(value * 1e9)
