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
    """Makes a session a robot of the ROS 2 graph that the environment names (ROS_DOMAIN_ID and others).

    It gets what is shown to it, and what drivers measure meanwhile: add it to a LiveServer, or show it
    a snapshot ten times a second. While the session runs it obeys /cmd_vel, unless it is not driven,
    and /initialpose and /goal_pose, unless somebody else knows its way. It ends with the session. A
    name that is none: ValueError; a build without ROS 2: NotImplementedError.
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

    Looks about for up to five seconds. `description` is URDF, by default that of /robot_description or
    one that is made after the topics; `map` takes the place of what /map brings. Time goes by /clock,
    as `use_sim_time` says, by default if somebody publishes it. `sensors` makes them, and reads the
    description by its kinds. Nobody there, or what makes no sensor: RuntimeError; a build without
    ROS 2: NotImplementedError.
    """
    options = (node, namespace, description, map, use_sim_time, sensors)
    found: Session = _built("_open_heard_robot")(*options)
    return found
