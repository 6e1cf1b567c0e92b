"""Misuse must not crash or hang."""

import contextlib
import copy
import gc
import os
import pathlib
import pickle
import signal
import subprocess
import sys
import textwrap
import threading
import time

import numpy as np
import pytest
import qv_sensor as qv
from conftest import IN_THE_FLAT, ROOT, press_ctrl_c_soon


class Watch(qv.Sensor):
    """Does something whenever it is read."""

    def __init__(self, what, name="Watch"):
        super().__init__(name, name, qv.SensorFieldOfView2D(0, 1, 1, 1))
        self.what = what

    def _get_data(self):
        self.what()
        return []

    def _subscribe_to_hardware(self):
        return True

    def _unsubscribe_from_hardware(self):
        return True


def module_that(what):
    """A module whose method is called while a session runs, each time the robot measures."""
    module = qv.Module("Busybody")
    module.bind_method("hear", lambda event, value, subscriber: what())
    return module


def test_only_the_thread_that_opened_a_session_runs_it(session):
    errors = []

    def use():
        for call in (lambda: session.run(1), session.look, session.close, session.stop):
            try:
                call()
            except RuntimeError as error:
                errors.append(str(error))
        session.subscribe("other", "FrontLaser")

    thread = threading.Thread(target=use)
    thread.start()
    # A laser takes its time to start, which only this thread makes go by.
    while thread.is_alive():
        session.run(qv.seconds(0.1))
    assert len(errors) == 4 and all("another one given" in error for error in errors)
    assert session.manager.get_subscribers() == {"other"}


def test_a_session_cannot_be_ended_from_within(session):
    seen = []

    def meddle():
        for call in (session.close, session.look, lambda: session.run(1)):
            try:
                call()
            except RuntimeError as error:
                seen.append(str(error))
        seen.append(session.pose)

    session.broker.register_module(module_that(meddle))
    session.broker.call("QVMemory", "subscribeToEvent", "Tick", "Busybody", "hear")
    session.broker.call("QVMemory", "raiseEvent", "Tick", 1)
    session.run(qv.seconds(0.2))
    assert seen[:3] == ["a session at rest expected, one that is running given"] * 3
    assert seen[3].x == 3.0
    session.run(qv.seconds(0.1))


def test_readers_and_switches_in_threads_live_through_the_end_of_a_session():
    for _ in range(5):
        session = qv.open_virtual(start=(3.0, 6.3, 0.0))
        manager, stop, kept = session.manager, threading.Event(), []

        def read():
            while not stop.is_set():
                try:
                    kept.extend(record.points for record in manager.get_metrical_data())
                    manager.subscribe("reader", "Laser")
                except RuntimeError:
                    return

        threads = [threading.Thread(target=read) for _ in range(3)]
        for thread in threads:
            thread.start()
        session.run(qv.seconds(3))
        session.close()
        for thread in threads:
            thread.join(60)
        stop.set()
        assert not any(thread.is_alive() for thread in threads)
        del session, manager
        gc.collect()
        assert all(np.isfinite(points).all() for points in kept[::50])
        # A reader may have been the last to have the session, and so its time.
        with qv.SimulatedTime():
            pass


def test_what_is_used_after_its_robot_ended_says_so(flat):
    with qv.SimulatedTime() as moving:
        robot = qv.VirtualRobot("porter", flat)
        broker = robot.broker
        manager = qv.RealSensorManager(broker)
        manager.subscribe("test", "Laser")
        moving.advance(qv.seconds(1))
        robot.close()
        with pytest.raises(RuntimeError, match="has ended"):
            robot.pose
        moving.advance(qv.seconds(1))
        assert isinstance(manager.get_metrical_data(), list)
        assert broker.has_module("QVMemory")
    manager.get_metrical_data()
    manager.unsubscribe("test")
    manager.close()
    with pytest.raises(RuntimeError, match="has ended"):
        manager.get_metrical_data()


def test_what_is_no_number_stops_nobody(flat):
    nan = float("nan")
    manager = qv.SimulatedSensorManager(1, flat)
    manager.subscribe("test")
    manager.set_pose_2d((nan, 1.0, nan))
    assert all((record.points[:, 0] > 0).all() for record in manager.get_metrical_data("Sonar"))
    view = qv.SensorFieldOfView2D(0, 1, 1, 1)
    assert np.isnan(qv.Record("a", "b", view, [[nan, 0, 0]]).points_in_frame()).any()
    with qv.SimulatedTime(), qv.VirtualRobot("porter", flat) as robot:
        for command in (lambda: robot.set_velocity(nan, 0, 0), lambda: setattr(robot, "pose", (0, nan, 0))):
            with pytest.raises(ValueError, match="finite"):
                command()


def test_time_may_end_before_what_lives_in_it(flat):
    with qv.SimulatedTime() as moving:
        robot = qv.VirtualRobot("porter", flat)
        manager = qv.RealSensorManager(robot.broker)
        manager.subscribe("test", "Sonar")
        moving.advance(qv.seconds(1))
    robot.set_velocity(1, 0, 0)
    assert len(manager.get_metrical_data()) == 2
    manager.close()
    robot.close()


def test_objects_that_were_never_made_are_refused():
    class Unmade(qv.Sensor):
        def __init__(self):
            pass

    with pytest.raises(TypeError):
        qv.SensorManager([Unmade()])
    for cls in (qv.Session, qv.Snapshot, qv.SensorState):
        with pytest.raises(TypeError):
            cls()
    with pytest.raises(TypeError):
        qv.SensorManager([1])
    with pytest.raises(ValueError, match="Watch"):
        qv.SensorManager([Watch(None), Watch(None)])


def bound_classes():
    """Those of the extension module that somebody could leave unmade."""
    classes = [value for value in vars(qv._core).values() if isinstance(value, type)]
    return [cls for cls in classes if not issubclass(cls, Exception)]


@pytest.mark.parametrize("cls", bound_classes(), ids=lambda cls: cls.__name__)
def test_what_init_has_not_run_for_has_nothing_to_tell(cls):
    unmade = cls.__new__(cls)
    told = [name for name in dir(cls) if type(getattr(cls, name)).__name__ in ("property", "getset_descriptor")]
    for name in told:
        if name not in ("__class__", "__weakref__", "__dict__"):
            with pytest.raises((TypeError, RuntimeError), match="never made|non-held"):
                getattr(unmade, name)


def test_what_lives_cannot_be_copied(session):
    for living in (session, session.manager, session.map, session.broker, session.look()):
        for duplicate in (copy.copy, copy.deepcopy, pickle.dumps):
            with pytest.raises(TypeError):
                duplicate(living)


def test_nothing_crashes_whatever_it_is_given_while_it_lives_and_afterwards(run_python, tmp_path):
    out = run_python(f"""
        import os, random
        import numpy as np
        import qv_sensor as qv

        os.chdir({str(tmp_path)!r})
        qv.set_log_level("silent")
        open("gated.urdf", "w").write({GATED!r})
        units, contexts = qv.UnitFactory(), []
        units.add(40, lambda order: contexts.append(order.context))
        sensors = qv.SensorFactory()
        sensors.add(40, "Gated", "Gated", "zone", lambda order: None)
        qv.open_virtual("gated.urdf", sensors=sensors, units=units).close()
        session = qv.open_virtual(world=qv.WorldOptions(random_people=1))
        recorder = qv.SessionRecorder("a.mcap", session)
        session.subscribe("test", ["Laser", "Sonar"])
        session.run(qv.seconds(1))
        snapshot = session.look()
        recorder.show(snapshot)
        records = session.manager.get_metrical_data()
        view = qv.SensorFieldOfView2D(0, 1, 1, 1)
        robot = qv.VirtualRobot("porter", session.map)
        living = [session, session.manager, session.subscription("test", "Touch"), robot,
                  qv.SimulatedSensorManager(1, session.map), qv.LiveServer(session, port=0),
                  qv.RealSensorManager(session.broker), qv.SimulatedTime(), recorder,
                  qv.SensorManager([qv.Sensor("a", "b", view)]),
                  qv.NavigationModule(qv.SensorManager([qv.Sensor("a", "b", view)]))]
        living += [qv.graph_robot(session)] if hasattr(qv._core, "_GraphRobot") else []
        # What follows from a unit's context outlives its robot.
        lifeless = [contexts[0], qv.RangeNoise(contexts[0], "Gated"),
                    qv.FaultChannel(contexts[0], "Gated", lambda value: 1 / 0, lambda value: "x"),
                    session.map, session.broker, snapshot, snapshot.sensors[0], records[0], view,
                    qv.ScopedModule(session.broker, qv.Module("m")),
                    qv.Module("m"), qv.Sensor("s", "f", view), qv.SensorFactory(), qv.UnitFactory(),
                    qv.SensorUnit("u", 1), qv.Outlet(), qv.SessionPicture("a.png"), qv.RecordFile("a.csv"),
                    qv.WorldOptions(), qv.WorldBox((0, 0, 0)), qv.FloorHole((0, 0, 0)), qv.Walker([(1, 1)])]
        untried = ("set_log_level", "graph_robot", "open_heard_robot")
        makers = [getattr(qv, name) for name in qv.__all__ if name[0] != "_" and name not in untried]
        nan = float("nan")
        odd = [None, True, -1, 0, 7, 2**40, 2**70, 0.5, nan, -float("inf"), "", "x", "FrontLaser", b"x", [],
               [[]], [1, nan, 2], {{"a": {{"b"}}}}, object(), int, np.zeros((0, 3)), np.zeros((2, 3), complex),
               np.full((2, 3), nan, np.float32), np.zeros((3, 4))[:, ::2], lambda *some: 1 / 0]
        classes = [value for value in vars(qv._core).values() if isinstance(value, type)]
        exported = {{*classes, *(getattr(qv, name) for name in qv.__all__)}}
        exported = {{cls for cls in exported if isinstance(cls, type) and not issubclass(cls, (Exception, tuple))}}
        unmade = [cls.__new__(cls) for cls in classes if not issubclass(cls, Exception)]
        odd += living + lifeless + unmade
        slow = {{"run", "advance", "await_records", "check", "close", "end", "__enter__", "__exit__"}}

        def attempt(call):
            for count in range(5):
                for _ in range(20 if count else 1):
                    try:
                        call(*random.choices(odd, k=count))
                    except Exception:
                        pass

        def attempt_all(things):
            for thing in things:
                for name in dir(type(thing)):
                    if name in slow or name[:2] == "__":
                        continue
                    attempt(lambda *given: getattr(thing, name)(*given))
                    attempt(lambda given: setattr(thing, name, given))

        random.seed(1)
        for make in makers:
            attempt(make)
        attempt_all(living + lifeless + unmade)
        for thing in reversed(living):
            getattr(thing, "close", lambda: None)()
        attempt_all(living)
        replay = qv.open_recording("a.mcap")
        attempt_all([replay])
        replay.close()
        attempt_all([replay])
        tried = {{cls for thing in [*living, *lifeless, replay] for cls in type(thing).__mro__}}
        print({{cls.__name__ for cls in exported if cls not in tried}} or "done")
    """)
    assert out.endswith("done\n")


HOURS = qv.seconds(1e6)


@pytest.mark.parametrize(
    "wait",
    [
        lambda session: session.run(HOURS),
        lambda session: [session.check() for _ in range(10**6)],
        lambda session: qv.SensorManager([Watch(None)]).await_records(HOURS),
        lambda session: qv.LiveServer(session, port=0).run(),
        lambda session: [
            qv.simulate_scans(
                session.map, np.full((10**6, 3), 5.0), qv.SensorFieldOfView2D(0, 30, 6.28, 300))
            for _ in range(100)
        ],
    ],
    ids=["run", "check", "await", "serve", "scans"],
)  # fmt: skip
def test_ctrl_c_ends_what_waits(session, wait):
    session.subscribe("test")
    begin = press_ctrl_c_soon()
    with pytest.raises(KeyboardInterrupt):
        wait(session)
    assert time.monotonic() - begin < 20
    session.run(qv.seconds(0.1))


@pytest.mark.parametrize(
    "wait",
    [
        'session.subscribe("me", "Laser")',
        'session.manager.subscribe("me", "Laser")',
        'qv.RealSensorManager(session.broker).subscribe("me", "Laser")',
        'session.broker.call("Waiter", "wait")',
    ],
)
def test_ctrl_c_ends_the_waiting_for_hardware_that_does_not_come(run_python, wait):
    out = run_python(f"""
        import os, signal, threading
        import qv_sensor as qv

        def keep():
            kept.append(qv.open_virtual())
            is_open.set()
            # Nobody else moves the session's time, in which its hardware starts.
            threading.Event().wait()

        kept, is_open = [], threading.Event()
        threading.Thread(target=keep, daemon=True).start()
        is_open.wait()
        session = kept[0]
        module = qv.Module("Waiter")
        module.bind_method("wait", lambda: session.subscribe("me", "Laser"))
        session.broker.register_module(module)
        threading.Timer(0.3, signal.raise_signal, [signal.SIGINT]).start()
        try:
            {wait}
        except KeyboardInterrupt:
            print("interrupted", flush=True)
        # os._exit ends the waiting threads as well.
        os._exit(0)
    """)
    assert out == "interrupted\n"


GATED = """<robot name="courier"><link name="base"/><sensor name="Gated" type="Gated"/></robot>"""


class Gated(Watch):
    """Its hardware starts when somebody opens the gate."""

    def __init__(self, name="Gated", waits="on"):
        super().__init__(lambda: waits == "read" and self.pass_gate("read"), name)
        self.gate, self.is_there, self.has_passed = threading.Event(), threading.Event(), threading.Event()
        self.waits, self.calls = waits, []

    def pass_gate(self, what):
        if what == self.waits:
            self.calls.append("begun")
            self.is_there.set()
            self.gate.wait(60)
        self.calls.append(what)
        if what == self.waits:
            self.has_passed.set()

    def _subscribe_to_hardware(self):
        self.pass_gate("on")
        return True

    def _unsubscribe_from_hardware(self):
        self.pass_gate("off")
        return True


def test_a_switch_that_ctrl_c_has_left_goes_on_to_its_end():
    sensor = Gated()
    manager = qv.SensorManager([sensor])
    press_ctrl_c_soon()
    with pytest.raises(KeyboardInterrupt):
        manager.subscribe("test")
    assert sensor.calls == ["begun"]
    sensor.gate.set()
    manager.unsubscribe("test")
    assert sensor.calls == ["begun", "on", "off"]


class WantsGated(qv.Outlet):
    def __init__(self, session):
        super().__init__()
        self.session = session

    def get_demand(self):
        # It may ask its session: this is that's thread.
        return {"outlet": {"Gated"}} if self.session.pose else {}

    def show(self, snapshot):
        assert self.session.pose == snapshot.pose


def serve(session):
    with qv.LiveServer(session, port=0) as server:
        server.add(WantsGated(session))
        server.run()


@pytest.fixture
def open_gated(tmp_path):
    """Opens a robot by the machine's clock, whose sensor waits for a gate."""
    robot = tmp_path / "courier.urdf"
    robot.write_text(GATED)

    def open(sensor):
        factory = qv.SensorFactory()
        factory.add(40, "Gated", "Gated", "zone", lambda order: sensor)
        return qv.open_virtual(robot, sensors=factory, start=IN_THE_FLAT, simulated_time=False)

    return open


@pytest.mark.parametrize("wait", [lambda s: s.set_demand({"test": {"Gated"}}), lambda s: s.check("Gated"), serve])
def test_a_session_that_ctrl_c_has_left_is_in_use_until_the_call_is_through(open_gated, wait):
    sensor = Gated()
    with open_gated(sensor) as session:
        begin = press_ctrl_c_soon(2 if wait is serve else 1)
        with pytest.raises(KeyboardInterrupt):
            wait(session)
        assert time.monotonic() - begin < 20
        assert sensor.calls == ["begun"]
        with pytest.raises(RuntimeError, match="at rest expected"):
            session.look()
        sensor.gate.set()
    assert sensor.calls == ["begun", "on", "off"]


@pytest.mark.parametrize(
    ("waits", "meet", "wait"),
    [
        ("read", lambda m: m.get_metrical_data(), lambda m: m.get_metrical_data()),
        ("read", lambda m: m.get_metrical_data(), lambda m: m.await_records(HOURS)),
        ("off", lambda m: m.unsubscribe("test"), lambda m: m.get_subscribers()),
        ("off", lambda m: m.unsubscribe("test"), lambda m: m.subscribe("another")),
    ],
    ids=["read", "await", "ask", "switch"],
)
def test_ctrl_c_ends_the_waiting_for_another_thread_at_a_sensor(waits, meet, wait):
    sensor = Gated(waits=waits)
    manager = qv.SensorManager([sensor])
    manager.subscribe("test")
    other = threading.Thread(target=meet, args=[manager])
    other.start()
    assert sensor.is_there.wait(60)
    press_ctrl_c_soon()
    with pytest.raises(KeyboardInterrupt):
        wait(manager)
    assert not sensor.has_passed.is_set()
    sensor.gate.set()
    other.join(60)


def drop_module(sensor, open_gated):
    manager = qv.SensorManager([sensor])
    manager.subscribe("test")
    return [qv.NavigationModule(manager)].clear


def unregister_module(sensor, open_gated):
    broker, manager = qv.Broker(), qv.SensorManager([sensor])
    manager.subscribe("test")
    broker.register_module(qv.NavigationModule(manager))
    return lambda: broker.unregister_module("QVNavigation")


def drop_session(sensor, open_gated):
    session = open_gated(sensor)
    session.subscribe("test", "Gated")
    return [session].clear


def close_server(sensor, open_gated):
    session = open_gated(sensor)
    server = qv.LiveServer(session, port=0)
    server.add(WantsGated(session))
    server.run(qv.seconds(0.1))
    return server.close


@pytest.mark.parametrize("prepare", [drop_module, unregister_module, drop_session, close_server])
def test_ctrl_c_ends_the_waiting_for_what_goes(open_gated, prepare):
    sensor = Gated(waits="off")
    go = prepare(sensor, open_gated)
    gc.collect()
    assert sensor.calls[-1] == "on"
    press_ctrl_c_soon()
    with pytest.raises(KeyboardInterrupt):
        go()
    assert sensor.calls[-1] == "begun"
    sensor.gate.set()
    assert sensor.has_passed.wait(60)


# What Python is told first to do at its end, it does last: that Ctrl-C still waits for its handler when
# the library's objects begin to end.
@pytest.mark.parametrize("before", ["", "atexit.register(_thread.interrupt_main)"], ids=["at any time", "just before"])
def test_ctrl_c_ends_a_python_that_waits_for_hardware_at_its_end(tmp_path, before):
    program = f"""
        import _thread, atexit, sys, threading
        import qv_sensor as qv
        {before}
        sys.path.insert(0, {str(pathlib.Path(__file__).parent)!r})
        from test_misuse import Gated

        sensor, factory = Gated(), qv.SensorFactory()
        factory.add(40, "Gated", "Gated", "zone", lambda order: sensor)
        session = qv.open_virtual({str(tmp_path / "gated.urdf")!r}, sensors=factory, simulated_time=False)
        threading.Thread(target=session.subscribe, args=["test", "Gated"], daemon=True).start()
        sensor.is_there.wait()
        print("ready", flush=True)
    """
    (tmp_path / "gated.urdf").write_text(GATED)
    command = [sys.executable, "-c", textwrap.dedent(program)]
    pipes = {"stdout": subprocess.PIPE, "stderr": subprocess.DEVNULL}
    with subprocess.Popen(command, cwd=ROOT, **pipes) as python:
        assert python.stdout.readline() == b"ready\n"
        begin = time.monotonic()
        # The first ones may come before it ends.
        while python.poll() is None and time.monotonic() - begin < 20:
            if not before:
                python.send_signal(signal.SIGINT)
            with contextlib.suppress(subprocess.TimeoutExpired):
                python.wait(0.1)
        python.kill()
        assert python.wait() == -signal.SIGINT


def interrupt(call):
    """Presses Ctrl-C all the time; the call has to hear of it more often than at its end."""
    heard, is_over = [], threading.Event()

    def hear(*_):
        heard.append(None)
        if len(heard) == 3:
            raise KeyboardInterrupt

    def press():
        while not is_over.wait(0.001):
            signal.raise_signal(signal.SIGINT)

    before = signal.signal(signal.SIGINT, hear)
    presser = threading.Thread(target=press)
    presser.start()
    try:
        with pytest.raises(KeyboardInterrupt):
            call()
            is_over.set()
    finally:
        is_over.set()
        presser.join()
        signal.signal(signal.SIGINT, before)


@pytest.fixture(scope="module")
def large_map(tmp_path_factory):
    """A map that takes its time, as it is and in a recording."""
    folder = tmp_path_factory.mktemp("large")
    map = qv.OccupancyMap(np.random.default_rng(1).random((6000, 6000), np.float32), 0.05)
    qv.save_map(map, folder / "map.yaml")
    with qv.open_simulated(0, map=map) as session:
        recorder = qv.SessionRecorder(folder / "run.mcap", session)
        session.run(qv.seconds(0.1))
        recorder.show(session.look())
        recorder.finish()
    return folder


@pytest.mark.parametrize(
    ("open_it", "name"),
    [
        (qv.load_map, "map.yaml"),
        (lambda path: qv.open_virtual(map=path), "map.yaml"),
        (lambda path: qv.open_simulated(0, map=path), "map.yaml"),
        (qv.open_recording, "run.mcap"),
    ],
    ids=["map", "virtual", "simulated", "recording"],
)
def test_ctrl_c_ends_the_reading_of_large_files(large_map, open_it, name):
    interrupt(lambda: open_it(large_map / name))
    # Nothing has taken the time over.
    with qv.SimulatedTime():
        pass


def test_ctrl_c_ends_the_way_back_in_a_large_recording(large_map):
    with qv.open_recording(large_map / "run.mcap") as session:
        session.run(qv.seconds(0.05))
        before = session.time
        interrupt(lambda: session.seek(0))
        assert session.time == before > 0
        session.seek(0)
        assert session.time == 0


def test_ctrl_c_ends_the_reading_of_a_log(tmp_path):
    pipe = tmp_path / "run.log"
    os.mkfifo(pipe)
    is_left = threading.Event()

    def write():
        # This waits until somebody reads.
        with pipe.open("wb"):
            signal.raise_signal(signal.SIGINT)
            is_left.wait(60)

    writer = threading.Thread(target=write, daemon=True)
    writer.start()
    with pytest.raises(KeyboardInterrupt):
        qv.open_recording(pipe)
    is_left.set()
    writer.join(60)


def test_ctrl_c_ends_the_search_for_a_way():
    cells = np.zeros((1500, 1500), np.float32)
    # The goal stands behind walls, so all of the map is searched.
    cells[-40:, -40:] = 1.0
    cells[-30:-10, -30:-10] = 0.0
    with qv.open_simulated(0, map=qv.OccupancyMap(cells, 0.05), start=(2.0, 2.0, 0.0)) as session:
        interrupt(lambda: session.set_goal((74.0, 74.0)))
        session.set_goal((4.0, 2.0))
        session.run(qv.seconds(10))
        assert session.pose.x == pytest.approx(4.0, abs=0.1)


def test_ctrl_c_in_a_callback_ends_the_run(session):
    session.broker.register_module(module_that(lambda: signal.raise_signal(signal.SIGINT)))
    session.broker.call("QVMemory", "subscribeToEvent", "Tick", "Busybody", "hear")
    session.broker.call("QVMemory", "raiseEvent", "Tick", 1)
    with pytest.raises(KeyboardInterrupt):
        session.run(HOURS)


def test_python_may_end_while_threads_wait_and_things_live(run_python):
    out = run_python("""
        import threading, time
        import qv_sensor as qv

        class Slow(qv.Sensor):
            def _get_data(self):
                return []
            def _subscribe_to_hardware(self):
                return True
            def _unsubscribe_from_hardware(self):
                return True

        ready = threading.Event()

        def live():
            session = qv.open_virtual()
            session.subscribe("test")
            ready.set()
            session.run(qv.seconds(1e6))

        def read():
            while True:
                manager.get_metrical_data()

        manager = qv.SensorManager([Slow("a", "b", qv.SensorFieldOfView2D(0, 1, 1, 1))])
        manager.subscribe("test")
        for target in (live, read, read):
            threading.Thread(target=target, daemon=True).start()
        ready.wait()
        time.sleep(0.1)
        kept = manager, ready
        print("done")
    """)
    assert out == "done\n"


def test_python_may_end_while_a_robot_runs_on_the_machines_clock(run_python):
    out = run_python("""
        import time
        import qv_sensor as qv

        class Chatty(qv.Module):
            def __init__(self):
                super().__init__("Chatty")
                self.bind_method("hear", self.hear)
            def hear(self, event, value, subscriber):
                broker.call("QVMemory", "raiseEvent", "Tick", 1)

        robot = qv.VirtualRobot("porter", qv.load_map("apartment"))
        broker = robot.broker
        broker.register_module(Chatty())
        broker.call("QVMemory", "subscribeToEvent", "Tick", "Chatty", "hear")
        broker.call("QVMemory", "raiseEvent", "Tick", 1)
        manager = qv.RealSensorManager(broker)
        manager.subscribe("test", "Laser")
        time.sleep(0.3)
        points = [record.points for record in manager.get_metrical_data()]
        print(len(points))
    """)
    assert out == "3\n"
