"""Robots in sessions: driven, looked at, made to fail, drawn."""

import base64
import re

import matplotlib
import numpy as np
import pytest
import qv_sensor as qv

matplotlib.use("agg")


def test_a_session_is_driven_looked_at_and_ends(session):
    with session.subscription("test", ["Laser", "Sonar"]):
        session.drive(0.3, 0.0)
        session.run(qv.seconds(2))
        snapshot = session.look()
    assert snapshot.pose.x == pytest.approx(3.6, abs=0.05)
    laser = next(state for state in snapshot.sensors if state.name == "FrontLaser")
    assert laser.subscribers == {"test"} and laser.started and laser.nearest > 0.3
    assert laser.hits.shape[1] == 3 and len(laser.records) == 1
    assert snapshot.frame == "robot" and snapshot.map.cells.shape == (260, 420)
    assert session.manager.get_subscribers() == set()
    manager = session.manager
    session.close()
    session.close()
    assert not session.is_open and not manager.is_open
    for use in (
        lambda: session.run(1),
        lambda: session.pose,
        lambda: session.subscribe("test"),
        lambda: manager.get_metrical_data(),
    ):
        with pytest.raises(RuntimeError, match="has ended"):
            use()
    assert snapshot.pose.x > 3.5 and laser.hits.sum() == laser.hits.sum()


def test_health_names_the_cause(session):
    manager = session.manager
    assert manager.get_health("FrontLaser").state == "off"
    with session.subscription("test", ["Laser"]):
        session.run(qv.seconds(2))
        assert manager.get_all_health()["FrontLaser"].state == "sound"
        session.set_fault("FrontLaser", "delayed")
        session.run(qv.seconds(2))
        late = manager.get_health("FrontLaser")
        assert (late.state, late.times) == ("late", 1) and "limit" in late.reason
        assert late in [state.health for state in session.look().sensors]
        assert manager.set_health_limit("FrontLaser:age=off")
        session.run(qv.seconds(3))
        assert manager.get_health("FrontLaser").state == "sound"
    assert manager.get_health("Nobody") is None
    with pytest.raises(ValueError, match="age"):
        manager.set_health_limit("FrontLaser:agee=1")


def test_a_sensor_that_could_not_be_built_has_a_reason(tmp_path):
    robot = tmp_path / "robot.urdf"
    robot.write_text('<robot name="tiny"><link name="base"/><sensor name="Lost" type="Laser"/></robot>')
    with qv.open_virtual(str(robot), start=(3.0, 6.3, 0.0)) as session:
        snapshot = session.look()
    assert not snapshot.sensors and list(snapshot.unbuilt) == ["Lost"]
    lost = snapshot.unbuilt["Lost"]
    assert lost.state == "failing" and "could not be built: " in lost.reason and lost.remedy


def test_changes_of_health_are_told_until_somebody_else_is(session, capfd):
    told, manager = [], session.manager

    class Hear:
        def __call__(self, sensor, health):
            assert manager.get_health(sensor) == health
            told.append(f"{sensor} {health.state}")
            if health.state == "late":
                manager.on_health_changed(lambda sensor, health: told.append(health.state))
            raise ValueError("a slip")

        def __del__(self):
            told.append("gone, " + manager.get_health("FrontLaser").state)

    manager.on_health_changed(Hear())
    with session.subscription("test", "FrontLaser"):
        session.run(qv.seconds(1))
        manager.on_health_changed(Hear())
        session.set_fault("FrontLaser", "delayed")
        session.run(qv.seconds(2))
        session.clear_fault("FrontLaser")
        session.run(qv.seconds(4))
        manager.on_health_changed(None)
    session.run(qv.seconds(1))
    assert told == ["FrontLaser sound", "gone, sound", "FrontLaser late", "gone, late", "sound"]
    assert "ValueError: a slip" in capfd.readouterr().err
    with pytest.raises(TypeError):
        manager.on_health_changed(3)


def test_a_subscription_waits_for_the_first_records_and_tells_what_is_missing(session, flat):
    session.set_fault("LeftLaser", "off")
    with session.subscription("test", ["FrontLaser", "LeftLaser"]) as subscription:
        missing = subscription.await_records(qv.seconds(1))
        assert list(missing) == ["LeftLaser"] and missing["LeftLaser"]
        assert session.await_records(0, "FrontLaser") == {}
        assert [record.sensor_name for record in session.manager.get_metrical_data()] == ["FrontLaser"]
    with session.subscription("test", "Sonar") as subscription:
        begin = qv.clock()
        assert subscription.await_records(qv.seconds(10)) == {}
        assert qv.clock() - begin < qv.seconds(1)
        with pytest.raises(ValueError, match="-1 given"):
            subscription.await_records(-1)
    manager = qv.SimulatedSensorManager(1, flat)
    manager.subscribe("test", "Sonar")
    assert manager.await_records(0, ["Sonar"]) == {}
    assert "CameraDepth" in manager.await_records(qv.seconds(0.05))


def test_a_run_in_pieces_is_the_run(session):
    def drive(pieces):
        world = qv.WorldOptions(range_noise=0.01, seed=7, random_people=2)
        with qv.open_virtual(start=(3.0, 6.3, 0.0), world=world) as opened:
            opened.subscribe("test", "Laser")
            opened.set_goal((5.5, 6.3))
            assert opened.look().route[-1] == pytest.approx((5.5, 6.3))
            for piece in pieces:
                opened.run(piece)
            return opened.pose, np.concatenate([r.points for r in opened.manager.get_metrical_data()])

    session.close()
    pose, points = drive([3_000_000_000])
    again = drive([1_234_567_891, 765_432_109, 1_000_000_000])
    assert pose.x > 3.5 and len(points) > 0
    assert again[0] == pose
    np.testing.assert_array_equal(again[1], points)


def test_sensors_fail_on_demand_and_checks_say_so(session):
    assert "FrontLaser" in session.faulty_sensors
    assert "off" in session.get_possible_faults("FrontLaser")
    session.set_fault("FrontLaser", "off")
    assert session.look().faults == {"FrontLaser": "off"}
    verdicts = {check.name: check.verdict for check in session.check(["FrontLaser", "LeftLaser"])}
    assert verdicts == {"FrontLaser": "failed to start", "LeftLaser": "works"}
    session.clear_fault("FrontLaser")
    session.diagnose("FrontLaser", True)
    assert session.look().faults == {}
    assert session.check("FrontLaser")[0].verdict == "works"
    with pytest.raises(ValueError, match='a kind of fault .off, stuck,.* expected, "sleepy" given'):
        session.set_fault("FrontLaser", "sleepy")
    with pytest.raises(ValueError, match="FrontLaser"):
        session.set_fault("NoLaser", "off")


def test_a_robot_of_ones_own_runs_in_simulated_time(flat):
    with qv.SimulatedTime() as time:
        with qv.VirtualRobot("porter", flat, qv.WorldOptions(start=(3, 6.3, 0))) as robot:
            with qv.RealSensorManager(robot.broker) as manager:
                with manager.subscription("test", "Laser"):
                    robot.set_velocity(0.3, 0.0, 0.0)
                    time.advance(qv.seconds(1))
                    assert qv.clock() >= qv.seconds(1)
                    assert len(manager.get_metrical_data()) == 3
                    assert robot.pose.x == pytest.approx(3.3, abs=0.03)
                    assert robot.odometry.x == pytest.approx(0.3, abs=0.03)
        with pytest.raises(RuntimeError, match="already taken over"):
            qv.open_simulated(0)
    with pytest.raises(RuntimeError, match="with block"):
        time.advance(1)


def test_simulated_sensors_need_a_pose_only(flat):
    manager = qv.SimulatedSensorManager(1, flat)
    with manager.subscription("test", "Sonar"):
        manager.set_pose_2d((3.0, 6.3, 0.0))
        front = next(r for r in manager.get_metrical_data() if r.sensor_name == "Sonar/Front")
        manager.set_pose_2d((4.0, 6.3, 0.0))
        assert front.sensor_transform[0, 3] < 4.0 and front.points.shape == (1, 3)
    with qv.open_simulated(-1, start=(3.0, 6.3, 0.0)) as session:
        session.subscribe("test")
        session.run(qv.seconds(0.1))
        assert len(session.look().sensors[0].hits) > 10


def test_a_recorded_robot_is_stepped_to_its_end(data):
    with qv.open_recording(data / "lidar" / "mrpt_localization_demo.log") as session:
        session.subscribe("test")
        steps = 1
        while session.step():
            steps += 1
        assert 30 < steps < 50 and session.map is None
        assert len(session.look().sensors[0].records[0].points) > 100


@pytest.mark.parametrize(
    ("open", "error", "text"),
    [
        (lambda: qv.open_virtual("dragon"), ValueError, "porter"),
        (lambda: qv.open_virtual("no/dragon.urdf"), (FileNotFoundError, ValueError), "dragon.urdf"),
        (lambda: qv.open_virtual(map="no/map.yaml"), (FileNotFoundError, ValueError), "map.yaml"),
        (lambda: qv.open_virtual(start=(0, 0, np.nan)), ValueError, ""),
        (lambda: qv.open_virtual(start="here"), TypeError, "a pose x, y"),
        (lambda: qv.open_virtual(world=qv.WorldOptions(range_noise=-1)), ValueError, ""),
        (lambda: qv.WorldOptions(noise=1), TypeError, "noise: no such option"),
        (lambda: qv.open_simulated(9), ValueError, ""),
        (lambda: qv.open_recording("no/such.log"), FileNotFoundError, "such.log"),
        (lambda: qv.open_virtual(map=3), TypeError, ""),
    ],
)
def test_what_cannot_be_opened_says_why(open, error, text):
    with pytest.raises(error, match=text):
        open()


def test_bad_commands_are_refused_and_change_nothing(session):
    for call, error in (
        (lambda: session.run(-1), ValueError),
        (lambda: session.run(0.5), TypeError),
        (lambda: session.run(2**70), OverflowError),
        (lambda: session.drive(np.nan, 0), ValueError),
        (lambda: session.set_speed(np.nan), ValueError),
        (lambda: session.set_speed(0), ValueError),
        (lambda: session.set_goal((-5, -5)), ValueError),
        (lambda: session.set_goal((np.nan, 1)), ValueError),
        (lambda: session.follow([(1, 1)]), ValueError),
        (lambda: session.subscribe("test", "Radar"), ValueError),
        (lambda: session.subscribe("test", 3), TypeError),
        (lambda: session.subscribe("test", [3]), TypeError),
        (lambda: session.enable("Radar", True), ValueError),
        (lambda: setattr(session, "pose", (np.inf, 0, 0)), ValueError),
    ):
        with pytest.raises(error):
            call()
    session.run(qv.seconds(0.1))
    assert session.pose == (3.0, np.float32(6.3), 0.0)


def test_a_session_draws_itself(session):
    session.subscribe("test", ["Laser", "Sonar"])
    session.run(qv.seconds(1))
    (data,) = re.findall("base64,([^\"]+)", session._repr_html_())
    assert base64.b64decode(data)[:4] == b"\x89PNG"
    axes = qv.plot(session)
    drawn = np.concatenate([line.get_xydata() for line in axes.lines])
    front = next(state for state in session.look().sensors if state.name == "FrontLaser")
    for hit in front.hits:
        assert np.isclose(drawn, hit[:2], atol=1e-4).all(axis=1).any()
    assert axes.get_xlabel() == "x (m)"
    np.testing.assert_array_equal(axes.images[0].get_array(), session.map.cells)
    apex, view = front.view
    seen = {(shape.center, shape.r) for shape in axes.patches if isinstance(shape, matplotlib.patches.Wedge)}
    assert ((apex.x, apex.y), view.max_range) in seen
    (body,) = (shape for shape in axes.patches if isinstance(shape, matplotlib.patches.Circle))
    assert body.center == session.pose[:2]


def test_records_are_drawn_where_they_are_in_the_map(session):
    session.subscribe("test", "FrontLaser")
    session.run(qv.seconds(1))
    records = session.manager.get_metrical_data()
    axes = qv.plot(session.map, pose=session.pose, records=records)
    front = next(state for state in session.look().sensors if state.name == "FrontLaser")
    drawn = np.concatenate([line.get_xydata() for line in axes.lines])
    for hit in front.hits:
        assert np.isclose(drawn, hit[:2], atol=0.02).all(axis=1).any()


def test_the_log_tells_python_nothing_it_does_not_want(capfd):
    qv.set_log_level("silent")
    qv.SimulatedSensorManager(9, None)
    assert capfd.readouterr().err == ""
    qv.set_log_level("warning")
    with pytest.raises(ValueError, match='"silent"'):
        qv.set_log_level("loud")
