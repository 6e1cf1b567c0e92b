"""Pictures of robots in maps: in matplotlib axes, and in notebooks."""

from __future__ import annotations

import base64
import html
import math
import tempfile
from collections.abc import Iterable
from pathlib import Path
from typing import TYPE_CHECKING, Any, Optional, Union

import numpy as np
from numpy.typing import ArrayLike

from . import _core
from ._types import Pose2D

if TYPE_CHECKING:
    from ._core import OccupancyMap, Record, SensorFieldOfView2D, Session, Snapshot
    from ._types import PoseLike

_COLOURS = ("#1f6f8b", "#c2571a", "#4f8a10", "#8a4fa3", "#b8860b", "#b03060")


def plot(
    what: Union[Session, Snapshot, OccupancyMap, None] = None,
    *,
    pose: Optional[PoseLike] = None,
    radius: float = 0.25,
    points: Optional[ArrayLike] = None,
    records: Iterable[Record] = (),
    fields_of_view: Iterable[tuple[PoseLike, SensorFieldOfView2D]] = (),
    axes: Any = None,
) -> Any:
    """Draws into matplotlib axes, by default new ones, and returns them. Metres, in the map.

    `what` is a map, or a Session or Snapshot: then its map, robot, people, hits and fields of view are
    drawn. `pose` adds a robot of `radius`. `points` of shape (N, 2) or (N, 3) adds dots in the map.
    `records` adds their points, placed by their transforms: in the map, or relative to `pose` if they
    are in the robot's ground frame. `fields_of_view` adds fields of view, each with its pose.
    """
    axes = axes if axes is not None else _new_axes()
    snapshot = what.look() if isinstance(what, _core.Session) else what
    if isinstance(snapshot, _core.Snapshot):
        _draw_snapshot(axes, snapshot, radius)
    elif snapshot is not None:
        _draw_map(axes, snapshot)
    for number, (apex, view) in enumerate(fields_of_view):
        _draw_view(axes, Pose2D(*np.asarray(apex, float)), view, _colour(number))
    for number, record in enumerate(records):
        _draw_points(axes, _in_map(record, pose, snapshot), _colour(number), record.sensor_name)
    if points is not None:
        _draw_points(axes, np.asarray(points), "black", None)
    if pose is not None:
        _draw_robot(axes, Pose2D(*np.asarray(pose, float)), radius)
    axes.set_aspect("equal")
    axes.set_xlabel("x (m)")
    axes.set_ylabel("y (m)")
    return axes


def html_of(session: Session) -> str:
    """Returns a session's title and picture as HTML, for notebooks."""
    with tempfile.TemporaryDirectory() as folder:
        path = Path(folder) / "session.png"
        picture = _core.SessionPicture(path)
        picture.show(session.look())
        picture.finish()
        data = base64.b64encode(path.read_bytes()).decode()
    title = html.escape(session.title)
    return f'<figure><img src="data:image/png;base64,{data}"><figcaption>{title}</figcaption></figure>'


def _new_axes() -> Any:
    import matplotlib.pyplot as plt

    return plt.subplots(layout="constrained")[1]


def _colour(number: int) -> str:
    return _COLOURS[number % len(_COLOURS)]


def _draw_snapshot(axes: Any, snapshot: Snapshot, radius: float) -> None:
    if snapshot.map is not None:
        _draw_map(axes, snapshot.map)
    families = sorted({sensor.family for sensor in snapshot.sensors})
    for sensor in snapshot.sensors:
        colour = _colour(families.index(sensor.family))
        if sensor.started and sensor.view is not None:
            _draw_view(axes, *sensor.view, colour)
        _draw_points(axes, sensor.hits, colour, None)
        for echo in sensor.echoes:
            _draw_arc(axes, echo.origin, echo.range, echo.angular_range, colour)
    for person in snapshot.people:
        axes.plot(*person, "o", color="#d04040", markersize=6)
    _draw_robot(axes, snapshot.pose, radius)
    axes.set_title(snapshot.title)


def _draw_map(axes: Any, map: OccupancyMap) -> None:
    from matplotlib.transforms import Affine2D

    rows, columns = map.cells.shape
    extent = (0.0, columns * map.resolution, 0.0, rows * map.resolution)
    place = Affine2D().rotate(map.origin.theta).translate(map.origin.x, map.origin.y)
    axes.imshow(
        map.cells, cmap="Greys", vmin=0.0, vmax=1.4, origin="lower", extent=extent,
        interpolation="nearest", transform=place + axes.transData)  # fmt: skip
    corners = np.array([(x, y) for x in extent[:2] for y in extent[2:]])
    placed = place.transform(corners)
    axes.set_xlim(placed[:, 0].min(), placed[:, 0].max())
    axes.set_ylim(placed[:, 1].min(), placed[:, 1].max())


def _draw_robot(axes: Any, pose: Pose2D, radius: float) -> None:
    from matplotlib.patches import Circle

    axes.add_patch(Circle((pose.x, pose.y), radius, fill=False, color="black"))
    ahead = (pose.x + radius * math.cos(pose.theta), pose.y + radius * math.sin(pose.theta))
    axes.plot((pose.x, ahead[0]), (pose.y, ahead[1]), color="black")


def _draw_view(axes: Any, apex: Pose2D, view: SensorFieldOfView2D, colour: str) -> None:
    from matplotlib.patches import Wedge

    half = math.degrees(min(view.angular_range, 2.0 * math.pi) / 2.0)
    heading = math.degrees(apex.theta)
    axes.add_patch(
        Wedge((apex.x, apex.y), view.max_range, heading - half, heading + half, alpha=0.12,
              color=colour, linewidth=0))  # fmt: skip


def _draw_arc(axes: Any, apex: Pose2D, distance: float, angle: float, colour: str) -> None:
    angles = apex.theta + np.linspace(-angle / 2.0, angle / 2.0, 24)
    axes.plot(apex.x + distance * np.cos(angles), apex.y + distance * np.sin(angles), color=colour)


def _draw_points(axes: Any, points: Any, colour: str, label: Optional[str]) -> None:
    if len(points):
        axes.plot(points[:, 0], points[:, 1], ".", color=colour, markersize=3, label=label)


def _in_map(record: Record, pose: Optional[PoseLike], snapshot: object) -> Any:
    """Places a record's points in the map. Those in the ground frame are placed by the robot's pose."""
    points = record.points_in_frame()
    in_robot = isinstance(snapshot, _core.Snapshot) and snapshot.frame == "robot"
    if pose is None:
        if not in_robot:
            return points
        assert isinstance(snapshot, _core.Snapshot)
        pose = snapshot.pose
    x, y, theta = np.asarray(pose, float)
    cosine, sine = math.cos(theta), math.sin(theta)
    turned = points[:, :2] @ np.array(((cosine, sine), (-sine, cosine)))
    return turned + (x, y)
