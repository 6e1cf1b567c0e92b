"""Records as columns."""

from __future__ import annotations

from collections.abc import Iterable
from typing import TYPE_CHECKING, Any

import numpy as np
from numpy.typing import NDArray

if TYPE_CHECKING:
    from ._core import Record


def records_to_table(records: Iterable[Record], placed: bool = False) -> dict[str, NDArray[Any]]:
    """Returns the points of records as columns, for pandas.DataFrame or polars.DataFrame.

    Each point is a row: `sensor_name` and `family_name`; `record`, its index among the records;
    `timestamp` in nanoseconds; `x`, `y` and `z` in metres, in the sensor's frame, or with `placed` in the
    frame in which the record's transform is given. A record without points has no row.
    """
    listed = list(records)
    counts = [len(record.points) for record in listed]
    points = [record.points_in_frame() if placed else record.points for record in listed]
    rows = np.concatenate(points) if points else np.empty((0, 3), np.float32)

    x, y, z = np.ascontiguousarray(rows.T)

    def column(values: list[Any], dtype: Any) -> NDArray[Any]:
        return np.repeat(np.array(values, dtype), counts)

    return {
        "sensor_name": column([record.sensor_name for record in listed], np.str_),
        "family_name": column([record.family_name for record in listed], np.str_),
        "record": column(list(range(len(listed))), np.int64),
        "timestamp": column([record.timestamp for record in listed], np.int64),
        "x": x,
        "y": y,
        "z": z,
    }
