"""Runs that are recorded, played, told of and recovered."""

import pytest
import qv_sensor as qv
from conftest import IN_THE_FLAT
from test_own_parts import Infrared


def points_of(snapshot):
    return {state.name: [record.points.tolist() for record in state.records] for state in snapshot.sensors}


@pytest.fixture
def recording(tmp_path):
    """A second of a drive, and the points that were seen in it, by step."""
    path, seen = tmp_path / "run.mcap", []
    with qv.open_virtual(start=IN_THE_FLAT) as session:
        recorder = qv.SessionRecorder(path, session, wants_all=True)
        session.set_demand(recorder.demand)
        session.drive(0.2, 0.1)
        for _ in range(10):
            session.run(qv.seconds(0.1))
            recorder.show(session.look())
            seen.append(points_of(session.look()))
        recorder.finish()
        assert not recorder.has_failed
    return path, seen


def test_a_recording_plays_the_records_that_were_seen(recording):
    path, seen = recording
    with qv.open_recording(path) as session:
        assert isinstance(session, qv.SessionReplay) and session.is_own
        assert session.look_count == 10
        for step, expected in enumerate(seen):
            assert step == 0 or session.step()
            assert session.compare() is None
            assert points_of(session.look()) == expected
        assert not session.step() and session.share_done == 1.0
        assert session.time == pytest.approx(session.length, abs=qv.seconds(0.1))
        assert session.damage == []
        for place in (0, 600_000_000, 400_000_000):
            session.seek(place)
            assert session.time == place
    lasers = [str(points["FrontLaser"]) for points in seen if points["FrontLaser"] != [[]]]
    assert len(set(lasers)) > 3


def test_a_difference_between_what_is_made_anew_and_what_was_recorded_is_named(tmp_path):
    robot, path = tmp_path / "courier.urdf", tmp_path / "run.mcap"
    robot.write_text("""<robot name="courier"><link name="base"/><sensor name="Left" type="Near"/></robot>""")

    def sensors(distance):
        factory = qv.SensorFactory()
        factory.add(40, "Near", "Infrared", "zone", lambda order: Infrared(order.name, (0.5, distance)))
        return factory

    with qv.open_virtual(robot, sensors=sensors(0.25), start=IN_THE_FLAT) as session:
        recorder = qv.SessionRecorder(path, session, wants_all=True)
        session.set_demand(recorder.demand)
        session.run(qv.seconds(0.2))
        recorder.show(session.look())
        time = session.look().time
        recorder.finish()
    for distance, expected in ((0.25, None), (0.75, ("Left", time, "points[1].x", "0.25", "0.75"))):
        with qv.open_recording(path, sensors=sensors(distance)) as session:
            assert session.compare() == expected


def test_a_recording_is_shown_by_a_server_and_ends_with_its_session(session, tmp_path):
    path = tmp_path / "served.mcap"
    recorder = qv.SessionRecorder(path, session, wants_all=True)
    server = qv.LiveServer(session, port=0)
    server.add(recorder)
    server.run(qv.seconds(0.5))
    session.close()
    for use in (recorder.finish, lambda: recorder.demand, lambda: recorder.has_failed):
        with pytest.raises(RuntimeError, match="has ended"):
            use()
    info = qv.recording_info(path)
    # Whole: the recorder went, though somebody has it still.
    assert info.damage == []
    topics = {topic.name: topic for topic in info.topics}
    assert topics["/FrontLaser/scan"].message_count > 0
    with qv.open_recording(path) as played:
        assert played.look_count > 0


def test_another_robots_recording_gives_its_sensors(data):
    with qv.open_recording(data / "bags" / "mumble_straight.mcap") as session:
        assert not session.is_own and not session.look_count and session.compare() is None
        told = set()
        while session.step():
            told |= {state.family for state in session.look().sensors if state.records}
        assert "Laser" in told


def test_what_a_recording_holds_is_told_whole_or_cut(recording, tmp_path):
    path, _ = recording
    whole = qv.recording_info(path)
    assert whole.path == str(path) and whole.file_bytes == path.stat().st_size
    assert whole.message_count == sum(topic.message_count for topic in whole.topics) and whole.damage == []
    scan = next(topic for topic in whole.topics if topic.name == "/FrontLaser/scan")
    assert scan.type == "sensor_msgs/msg/LaserScan" and scan.rate > 1
    assert 0 < scan.start_time <= scan.end_time <= whole.end_time
    cut, mended = tmp_path / "cut.mcap", tmp_path / "mended.mcap"
    cut.write_bytes(path.read_bytes()[: whole.file_bytes // 2])
    recovered = qv.recover_recording(cut, mended)
    assert recovered.damage and 0 < recovered.message_count < whole.message_count
    assert qv.recording_info(mended).message_count == recovered.message_count


@pytest.mark.parametrize(
    ("content", "error"), [(None, FileNotFoundError), (b"", ValueError), (b"not one", ValueError)]
)
@pytest.mark.parametrize("use", [qv.open_recording, qv.recording_info])
def test_what_is_no_recording_is_named(tmp_path, content, error, use):
    path = tmp_path / "bad.mcap"
    if content is not None:
        path.write_bytes(content)
    with pytest.raises(error, match="bad.mcap"):
        use(path)


def test_a_recording_that_cannot_be_made_is_an_os_error(session, tmp_path):
    with pytest.raises(OSError, match="nowhere"):
        qv.SessionRecorder(tmp_path / "nowhere" / "run.mcap", session)
