"""Robots on a ROS 2 graph, heard by another program."""

import os
import threading
import time

import pytest
import qv_sensor as qv
from conftest import IN_THE_FLAT, press_ctrl_c_soon

if not hasattr(qv._core, "_GraphRobot"):

    def test_a_build_without_ros_2_says_so(session):
        for use in (lambda: qv.graph_robot(session), qv.open_heard_robot):
            with pytest.raises(NotImplementedError, match="QV_BUILD_ROS2_GRAPH"):
                use()

    pytest.skip("no ROS 2 in this build", allow_module_level=True)


@pytest.fixture(autouse=True)
def domain(monkeypatch):
    """One of its own for each process."""
    monkeypatch.setenv("ROS_DOMAIN_ID", str(1 + os.getpid() % 100))


HEAR = """
    import qv_sensor as qv
    with qv.open_heard_robot() as session:
        session.subscribe("test", "Laser")
        print(session.await_records(qv.seconds(30), "FrontLaser"))
        print(len(session.manager.get_metrical_data("FrontLaser")[0].points) > 9)
        for _ in range(10):
            session.drive(0.3, 0.0)
            session.run(qv.seconds(0.1))
"""


def test_a_session_on_a_graph_is_heard_and_driven_by_another(run_python):
    told, poses, ready, done = [], [], threading.Event(), threading.Event()

    def serve():
        with qv.open_virtual(start=IN_THE_FLAT, simulated_time=False) as session:
            robot = qv.graph_robot(session, name="porter")
            ready.set()
            while not done.is_set():
                session.set_demand(robot.demand)
                session.run(qv.seconds(0.1))
                robot.show(session.look())
                poses.append(session.pose)

    thread = threading.Thread(target=serve)
    thread.start()
    assert ready.wait(30)
    try:
        told = run_python(HEAR).splitlines()
    finally:
        done.set()
        thread.join(60)
    assert told == ["{}", "True"]
    assert poses[-1].x > IN_THE_FLAT[0] + 0.05


def test_ctrl_c_ends_the_looking_about():
    begin = press_ctrl_c_soon()
    with pytest.raises(KeyboardInterrupt):
        qv.open_heard_robot()
    # Where nobody is, it looks about for longer.
    assert time.monotonic() - begin < 1.8


def test_names_that_are_none_are_refused(session):
    with pytest.raises(ValueError, match="name"):
        qv.graph_robot(session, name="a robot")
