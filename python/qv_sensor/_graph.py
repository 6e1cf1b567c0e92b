"""Robots on ROS 2 graphs, where the package was built with them."""

from __future__ import annotations

from collections.abc import Mapping
from typing import TYPE_CHECKING, Any, Optional

from . import _core

if TYPE_CHECKING:
    from ._core import OccupancyMap, OutletBase, SensorFactory, Session


def _built(name: str) -> Any:
    if not hasattr(_core, name):
        raise NotImplementedError("a build with QV_BUILD_ROS2_GRAPH expected, one without it given")
    return getattr(_core, name)


def graph_robot(
    session: Session,
    *,
    name: str = "",
    namespace: str = "/",
    frame_prefix: str = "",
    frames: Optional[Mapping[str, str]] = None,
    is_driven: bool = True,
    knows_its_way: bool = True,
) -> OutletBase:
    """Publishes a session as a robot on the ROS 2 graph that the environment names (by ROS_DOMAIN_ID, ...).

    Returns an outlet: add it to a LiveServer, or show it a snapshot ten times a second. It publishes
    these snapshots, and the drivers' measurements between them. While the session runs, the robot obeys
    /cmd_vel if `is_driven`, and /initialpose and /goal_pose if `knows_its_way`. The outlet ends with the
    session. Raises ValueError for an invalid name, NotImplementedError in a build without ROS 2.
    """
    options = (name, namespace, frame_prefix, dict(frames or {}), is_driven, knows_its_way)
    found: OutletBase = _built("_GraphRobot")(session, *options)
    return found


def open_heard_robot(
    *,
    node: str = "qv_sensors",
    namespace: str = "/",
    description: str = "",
    map: Optional[OccupancyMap] = None,
    use_sim_time: Optional[bool] = None,
    sensors: Optional[SensorFactory] = None,
) -> Session:
    """Opens a session with the robot of the ROS 2 graph that the environment names.

    Discovers topics for up to five seconds. `description` is URDF, by default that of /robot_description
    or one derived from the topics. `map` replaces /map. `use_sim_time` chooses /clock (True) or the wall
    clock (False), by default /clock if it is published. `sensors` creates the sensors; the description is
    read by its types. Raises RuntimeError without a network or a topic of a sensor, or for a bad
    description; NotImplementedError in a build without ROS 2.
    """
    options = (node, namespace, description, map, use_sim_time, sensors)
    found: Session = _built("_open_heard_robot")(*options)
    return found
