"""Sensors, modules and outlets that are written in Python."""

import gc
import threading

import numpy as np
import pytest
import qv_sensor as qv

VIEW = qv.SensorFieldOfView2D(0.05, 0.8, 0.0, 1)


class Infrared(qv.Sensor):
    """Tells what its device does, and keeps what it was asked."""

    def __init__(self, name="Left", ranges=(0.35,), on=True):
        super().__init__(name, "Infrared", VIEW)
        self.ranges, self.on, self.calls = list(ranges), on, []

    def _get_data(self):
        points = [[distance, 0.0, 0.0] for distance in self.ranges]
        return [qv.Record(self.name, self.family_name, self.field_of_view, points)]

    def _subscribe_to_hardware(self):
        self.calls.append("on")
        return self.on

    def _unsubscribe_from_hardware(self):
        self.calls.append("off")
        return True


def test_a_sensor_runs_while_somebody_wants_it():
    sensor = Infrared()
    manager = qv.SensorManager([sensor, Infrared("Right")])
    assert manager.get_all_sensors_by_family() == {"Infrared": {"Left", "Right"}}
    assert manager.get_sensors_by_family("Infrared") == manager.get_sensor_list() == {"Left", "Right"}
    assert manager.get_family_names() == {"Infrared"} and manager.is_family("Infrared")
    assert manager.is_sensor("Left") and not manager.is_sensor("Infrared") and not manager.is_family("Left")
    manager.enable_sensor_or_family("Right", False)
    assert manager.get_enabled_sensor_list() == {"Left"}
    assert manager.get_metrical_data() == []
    with manager.subscription("test", "Left"):
        assert manager.get_sensor_list_by_subscriber("test") == {"Left"}
        assert manager.is_sensor_subscribed_by("Left", "test")
        assert not manager.is_sensor_subscribed_by("Right", "test")
        (record,) = manager.get_metrical_data()
        assert record.points.tolist() == [[np.float32(0.35), 0, 0]]
        assert manager.is_sensor_started("Left") and not manager.is_sensor_started("Right")
    assert sensor.calls == ["on", "off"] and not sensor.is_started


def test_a_manager_keeps_its_sensors():
    manager = qv.SensorManager(Infrared(str(i)) for i in range(3))
    gc.collect()
    with manager.subscription("test"):
        assert len(manager.get_metrical_data("Infrared")) == 3


def test_a_manager_waits_for_a_sensor_that_measures_later():
    class Late(Infrared):
        def _get_data(self):
            self.calls.append("read")
            return super()._get_data() if self.calls.count("read") > 2 else []

    manager = qv.SensorManager([Late()])
    assert set(manager.await_records(0)) == {"Left"}
    with manager.subscription("test") as subscription:
        assert subscription.await_records(qv.seconds(30)) == {}


def test_a_sensor_that_fails_harms_no_other():
    class Broken(Infrared):
        def _get_data(self):
            raise OSError("no device")

    class Wrong(Infrared):
        def _get_data(self):
            return [1]

    class Unfinished(qv.Sensor):
        def _subscribe_to_hardware(self):
            return True

    sensors = [Broken("Broken"), Wrong("Wrong"), Infrared(), Infrared("Off", on=False)]
    manager = qv.SensorManager([*sensors, Unfinished("Unfinished", "Infrared", VIEW)])
    manager.subscribe("test")
    assert [record.sensor_name for record in manager.get_metrical_data()] == ["Left"]
    assert "OSError: no device" in manager.get_last_trouble("Broken").message
    assert "a list of Records expected" in manager.get_last_trouble("Wrong").message
    assert "a method _get_data expected" in manager.get_last_trouble("Unfinished").message
    assert not manager.is_sensor_diagnosis_success("Off")


def test_a_sensor_that_asks_its_own_manager_is_refused_and_does_not_hang():
    class Curious(Infrared):
        def _get_data(self):
            return manager.get_metrical_data()

    manager = qv.SensorManager([Curious()])
    manager.subscribe("test")
    assert manager.get_metrical_data() == []
    assert "from within a sensor" in manager.get_last_trouble("Left").message


def test_a_sensor_read_by_many_threads_is_read_by_one_at_a_time():
    class Counting(Infrared):
        inside = most = 0

        def _get_data(self):
            self.inside += 1
            self.most = max(self.most, self.inside)
            result = super()._get_data()
            self.inside -= 1
            return result

    sensor = Counting()
    manager = qv.SensorManager([sensor])
    manager.subscribe("test")
    gate = threading.Barrier(8)

    def read():
        gate.wait()
        for _ in range(200):
            manager.get_metrical_data()
            manager.enable_sensor_or_family("Left", False)
            manager.enable_sensor_or_family("Left", True)

    threads = [threading.Thread(target=read) for _ in range(8)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join(60)
    assert not any(thread.is_alive() for thread in threads) and sensor.most == 1


DESCRIPTION = """<robot name="courier"><kind code="1"/><link name="base">
<collision name="base"><geometry><cylinder radius="0.2" length="0.2"/></geometry></collision></link>
<sensor name="FrontCliff" type="Cliff"><property key="floor" value="0.15"/>
<memory_key>Device/Cliff</memory_key></sensor></robot>"""


class Cliff(Infrared):
    """Reads its range from the robot's memory."""

    def __init__(self, order):
        super().__init__(order.name)
        self.order = order

    def _get_data(self):
        (key,) = self.order.memory_keys
        self.ranges = [self.order.broker.call("QVMemory", "getData", key)]
        return super()._get_data()


def test_a_sensor_of_a_description_is_made_by_its_type(tmp_path):
    robot = tmp_path / "courier.urdf"
    robot.write_text(DESCRIPTION)
    factory = qv.SensorFactory()
    factory.add(40, "Cliff", "Cliff", "zone", Cliff)
    with pytest.raises(ValueError, match="40"):
        factory.add(40, "Other", "Cliff", "zone", Cliff)
    with qv.open_virtual(robot, sensors=factory, start=(3.0, 6.3, 0.0)) as session:
        session.broker.call("QVMemory", "insertData", "Device/Cliff", 0.5)
        session.subscribe("test", "FrontCliff")
        session.run(qv.seconds(0.2))
        (record,) = session.manager.get_metrical_data()
        assert record.points.tolist() == [[0.5, 0, 0]]


class CliffUnit(qv.SensorUnit):
    """Measures how far the floor is."""

    def __init__(self, order):
        super().__init__(order.name, qv.seconds(0.1))
        self.order, self.context = order, order.context
        self.noise = qv.RangeNoise(self.context, self.name)
        self.channel = qv.FaultChannel(self.context, self.name, lambda _: -1.0, lambda value: value / 2)

    def measure(self, now):
        (key,) = self.order.memory_keys
        floor = self.noise.apply(self.context.cast_ray(self.name, 5.0))
        told = self.channel.pass_on(floor, now)
        if told is None:
            self.context.withdraw(key)
        else:
            self.context.write(key, told)


def test_a_unit_measures_for_a_sensor_of_ones_own_and_fails_on_demand(tmp_path, capfd):
    robot = tmp_path / "courier.urdf"
    looks_down = 'type="Cliff"><origin xyz="0.25 0 0.1" rpy="0 1.5707963 0"/>'
    robot.write_text(DESCRIPTION.replace('type="Cliff">', looks_down))
    sensors, units = qv.SensorFactory(), qv.UnitFactory()
    sensors.add(40, "Cliff", "Cliff", "zone", Cliff)
    units.add(40, CliffUnit)
    world = qv.WorldOptions(holes=[qv.FloorHole((4.2, 6.3, 0.0), 1.0, 1.0, 0.5)])
    start = (3.0, 6.3, 0.0)
    with qv.open_virtual(robot, sensors=sensors, units=units, start=start, world=world) as session:
        session.subscribe("test", "FrontCliff")

        def read():
            session.run(qv.seconds(0.3))
            return [record.points[0, 0] for record in session.manager.get_metrical_data()]

        assert read() == [pytest.approx(0.1, abs=0.001)]
        session.pose = (3.6, 6.3, 0.0)
        assert read() == [pytest.approx(0.6, abs=0.001)]
        session.set_fault("FrontCliff", "wrong")
        assert read() == [pytest.approx(0.3, abs=0.001)]
        session.set_fault("FrontCliff", "garbage")
        assert read() == [-1.0]
        session.set_fault("FrontCliff", "off")
        assert read() == []
    units.add(41, lambda order: 7)
    with pytest.raises(ValueError, match="41"):
        units.add(41, CliffUnit)


class Horn(qv.Module):
    def __init__(self):
        super().__init__("Horn")
        self.heard = []
        self.bind_method("blow", self._blow)
        self.bind_method("echo", lambda value: value)
        self.bind_method("fail", self._fail)

    def _blow(self, loudness, text):
        self.heard.append((loudness, text))
        return loudness > 3

    def _fail(self):
        raise KeyError("no air")


def test_a_module_answers_by_name_and_is_kept_by_its_broker():
    broker = qv.Broker()
    horn = Horn()
    broker.register_module(horn)
    assert broker.call("Horn", "blow", 5, "toot") is True
    assert horn.heard == [(5, "toot")]
    del horn
    gc.collect()
    for value in (None, True, 7, 2.5, "ä", b"\0\1", [1, ["a", []]]):
        assert broker.call("Horn", "echo", value) == value
    with pytest.raises(qv.QVError, match="KeyError") as caught:
        broker.call("Horn", "fail")
    assert (caught.value.module, caught.value.method) == ("Horn", "fail")
    for call in (("Horn", "blow", 1), ("Horn", "sing"), ("Drum", "beat")):
        with pytest.raises(qv.QVError):
            broker.call(*call)
    broker.unregister_module("Horn")
    assert not broker.has_module("Horn")


def test_values_that_cannot_travel_are_refused():
    broker = qv.Broker()
    broker.register_module(Horn())
    endless = []
    endless.append(endless)
    for value, error in ((object(), TypeError), (2**70, OverflowError), (endless, RecursionError)):
        with pytest.raises(error):
            broker.call("Horn", "echo", value)
    module = qv.Module("Other")
    for callable in (lambda *many: None, lambda a, b, c, d, e, f, g, h, i: None):
        with pytest.raises(ValueError):
            module.bind_method("method", callable)


def test_a_module_goes_when_nobody_has_it():
    gone = []

    class Fleeting(Horn):
        def __del__(self):
            gone.append(self.name)

    broker = qv.Broker()
    broker.register_module(Fleeting())
    Fleeting()
    gc.collect()
    assert gone == ["Horn"]
    broker.unregister_module("Horn")
    gc.collect()
    assert gone == ["Horn", "Horn"]


class Diary(qv.Outlet):
    def __init__(self):
        super().__init__()
        self.poses, self.finished = [], False

    def get_demand(self):
        return {"diary": {"FrontLaser"}}

    def show(self, snapshot):
        self.poses.append(snapshot.pose)

    def finish(self):
        self.finished = True


def test_an_outlet_is_shown_what_the_live_view_shows(session, tmp_path):
    diary = Diary()
    with qv.LiveServer(session, port=0) as server:
        assert server.url.startswith("http://127.0.0.1:")
        server.add(diary)
        with pytest.raises(TypeError, match="an Outlet expected"):
            server.add(object())
        session.drive(0.3, 0.0)
        server.run(qv.seconds(0.5))
        assert session.manager.get_subscribers() == {"diary"}
        assert len(diary.poses) >= 2 and diary.poses[-1].x > 3.0
        session.set_speed(50)
        begin = session.look().time
        server.run(qv.seconds(0.1))
        assert session.look().time - begin > qv.seconds(1)
        session.pause(True)
        begin = session.look()
        server.run(qv.seconds(0.1))
        assert session.look().time == begin.time and begin.paused and begin.speed == 50
    with pytest.raises(RuntimeError, match="has ended"):
        server.run()


def test_files_take_snapshots(session, tmp_path):
    session.subscribe("test", "FrontLaser")
    session.run(qv.seconds(1))
    for outlet in (qv.RecordFile(tmp_path / "run.csv"), qv.SessionPicture(tmp_path / "run.png")):
        outlet.show(session.look())
        outlet.finish()
    assert len((tmp_path / "run.csv").read_text().splitlines()) > 5
    assert (tmp_path / "run.png").read_bytes()[:4] == b"\x89PNG"
    with pytest.raises(ValueError, match="png expected"):
        qv.SessionPicture(tmp_path / "run.gif")
    with pytest.raises(OSError, match="nofolder"):
        qv.RecordFile(tmp_path / "nofolder" / "run.csv")
