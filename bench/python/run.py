"""The Python package against C++ in one run: scans from many poses, and the reading of records.

Usage: run.py [--benchmark_out=FILE] [OPTION...]; the file is in Google Benchmark's format. In each
round all take their turn; a ratio is the median over the rounds.
"""

import json
import os
import statistics
import sys
import threading
import time

import bench_python_peers as peers
import numpy as np
import qv_sensor as qv

POSES = 100_000
FAN = qv.SensorFieldOfView2D(0.0, 8.0, 2 * np.pi, 60)
ROUNDS = 5
MARCHED = 2_000
MRPT_POSES = 20_000


def seconds_of(call):
    begin = time.perf_counter()
    call()
    return time.perf_counter() - begin


def free_poses(map, count):
    random = np.random.default_rng(1)
    rows, columns = np.nonzero(map.cells == 0.0)
    chosen = random.integers(len(rows), size=count)
    places = np.stack([columns[chosen], rows[chosen]], 1) + random.uniform(0.01, 0.99, (count, 2))
    places = places * map.resolution + np.array(map.origin[:2])
    return np.column_stack([places, random.uniform(-np.pi, np.pi, count)]).astype(np.float32)


def march(map, poses, view):
    """A ray marcher as one writes it with numpy: all rays take a step of half a cell together."""
    angles = poses[:, 2:] - np.pi + 2 * np.pi * np.arange(view.ray_count) / view.ray_count
    ways = np.stack([np.cos(angles), np.sin(angles)], -1)
    ranges = np.full(angles.shape, view.max_range, np.float32)
    going = np.ones(angles.shape, bool)
    solid = map.cells > 0.4
    for distance in np.arange(0.0, view.max_range, map.resolution / 2):
        places = poses[:, None, :2] + distance * ways - np.array(map.origin[:2])
        cells = np.floor(places / map.resolution).astype(int)
        inside = (cells >= 0).all(-1) & (cells < solid.shape[::-1]).all(-1)
        cells = np.where(inside[..., None], cells, 0)
        hit = going & inside & solid[cells[..., 1], cells[..., 0]]
        ranges[hit] = distance
        going &= ~hit & inside
    return ranges


def apart(map, poses):
    """Twice the work on two threads that share nothing: all that the machine has."""
    other = threading.Thread(target=qv.simulate_scans, args=(map, poses, FAN, 1))
    other.start()
    qv.simulate_scans(map, poses, FAN, 1)
    other.join()


def scan_round(map, poses):
    """Seconds of each, the peers' on fewer poses brought to all of them."""
    scan = {threads: seconds_of(lambda t=threads: qv.simulate_scans(map, poses, FAN, t)) for threads in (1, 2)}
    found = {
        "ours": scan[1],
        "ours_2": scan[2],
        "apart": seconds_of(lambda: apart(map, poses)) / 2,
        "cpp": peers.scan_together(map, poses, FAN, 1),
        "cpp_2": peers.scan_together(map, poses, FAN, 2),
        "cpp_loop": peers.scan_one_by_one(map, poses, FAN),
        "numpy": seconds_of(lambda: march(map, poses[:MARCHED], FAN)) * POSES / MARCHED,
    }
    if hasattr(peers, "scan_with_mrpt"):
        found["mrpt"] = peers.scan_with_mrpt(map, poses[:MRPT_POSES], FAN) * POSES / MRPT_POSES
    return found


def ratio(rounds, peer, ours):
    return statistics.median(each[peer] / each[ours] for each in rounds)


def scans(map):
    poses = free_poses(map, POSES)
    scan_round(map, poses)
    rounds = [scan_round(map, poses) for _ in range(ROUNDS)]
    one, two = ({"real_time": 1e3 * statistics.median(each[key] for each in rounds)} for key in ("ours", "ours_2"))
    for peer in ("cpp", "cpp_loop", "numpy", "mrpt"):
        if peer in rounds[0]:
            one[f"vs_{peer}"] = ratio(rounds, peer, "ours")
    two["vs_cpp"] = ratio(rounds, "cpp_2", "ours_2")
    two["vs_cpp_one_thread"] = ratio(rounds, "cpp", "ours_2")
    two["vs_one_thread"] = ratio(rounds, "ours", "ours_2")
    two["vs_apart"] = ratio(rounds, "apart", "ours_2")
    yield "simulate_scans/threads:1", one
    yield "simulate_scans/threads:2", two


class Lasers(qv.Sensor):
    """50 records of 300 points."""

    def _get_data(self):
        points = np.zeros((300, 3), np.float32)
        return [qv.Record("Laser", "Laser", self.field_of_view, points)] * 50

    def _subscribe_to_hardware(self):
        return True

    _unsubscribe_from_hardware = _subscribe_to_hardware


DESCRIPTION = """<robot name="r"><link name="base"/><sensor name="Lasers" type="Many"/></robot>"""


def reading():
    """A manager that keeps its records, while time stands still."""
    factory = qv.SensorFactory()
    factory.add(99, "Many", "Laser", "scan", lambda order: Lasers(order.name, "Laser", FAN))
    broker = qv.Broker()
    model, devices = qv.Module("QVRobotModel"), qv.Module("DCM")
    model.bind_method("getConfig", lambda: DESCRIPTION)
    broker.register_module(model)
    broker.register_module(devices)
    with qv.SimulatedTime() as moving, qv.RealSensorManager(broker, factory) as manager:
        manager.subscribe("bench")
        moving.advance(qv.seconds(1))
        assert [len(r.points) for r in manager.get_metrical_data()] == [300] * 50
        times = 300
        read = lambda: [manager.get_metrical_data() for _ in range(times)] and None
        view = lambda: [[r.points for r in manager.get_metrical_data()] for _ in range(times)] and None
        rounds = [
            {"read": seconds_of(read), "view": seconds_of(view), "cpp": peers.read(50, 300, times)}
            for _ in range(ROUNDS)
        ]
    for key, name in (("read", "get_metrical_data"), ("view", "get_metrical_data_and_points")):
        time_ms = 1e3 * statistics.median(each[key] for each in rounds) / times
        yield name, {"real_time": time_ms, "vs_cpp": ratio(rounds, "cpp", key)}


def main():
    folder = os.environ.get("QV_DATA", "")
    path = os.path.join(folder, "maps/range_libc/basement_hallways_5cm.yaml")
    rows = list(reading())
    if os.path.exists(path):
        rows += scans(qv.load_map(path))
    else:
        print("skipped: no maps/range_libc/basement_hallways_5cm.yaml in QV_DATA")
    runs = []
    for name, counters in rows:
        print(name, *(f"{key}={value:.3g}" for key, value in counters.items()))
        runs.append({"name": name, "run_name": name, "run_type": "iteration", "time_unit": "ms", **counters})
    for option in sys.argv[1:]:
        if option.startswith("--benchmark_out="):
            with open(option.partition("=")[2], "w", encoding="utf-8") as file:
                json.dump({"context": {"num_cpus": os.cpu_count()}, "benchmarks": runs}, file, indent=1)


if __name__ == "__main__":
    main()
