"""Many scans at once."""

import sys
import threading

import numpy as np
import pytest
import qv_sensor as qv

FAN = qv.SensorFieldOfView2D(0.0, 8.0, 2 * np.pi, 60)


def march(map, poses, view, step=0.002):
    """A slow peer: walks along each ray until a cell is solid."""
    ranges = np.full((len(poses), view.ray_count), view.max_range)
    for i, (x, y, theta) in enumerate(poses):
        for j in range(view.ray_count):
            angle = theta - np.pi + 2 * np.pi * j / view.ray_count
            for distance in np.arange(0, view.max_range, step):
                place = (x + distance * np.cos(angle), y + distance * np.sin(angle))
                if (map.find_occupancy(place) or 0.0) > 0.4:
                    ranges[i, j] = distance
                    break
    return ranges


def test_ranges_are_those_of_a_walk_along_each_ray(flat):
    poses = [(3.0, 6.3, 0.0), (6.51, 8.02, 1.0), (9.0, 3.3, -2.0)]
    ranges = qv.simulate_scans(flat, poses, FAN)
    assert ranges.shape == (3, 60) and ranges.dtype == np.float32
    # The reference walk may miss a grazed corner, so 3 % may differ.
    assert np.mean(np.abs(ranges - march(flat, poses, FAN)) < 0.005) > 0.97


def test_threads_blocks_and_the_kind_of_array_change_nothing(flat):
    random = np.random.default_rng(1)
    poses = random.uniform((0, 0, -4), (20, 12, 4), (70_000, 3)).astype(np.float32)
    expected = qv.simulate_scans(flat, poses, FAN, threads=1)
    strided = np.zeros((len(poses), 6))
    strided[:, ::2] = poses
    for given, threads in ((poses, None), (poses, 7), (np.asfortranarray(poses), 2), (strided[:, ::2], 2)):
        np.testing.assert_array_equal(qv.simulate_scans(flat, given, FAN, threads), expected)
    last = qv.simulate_scans(flat, poses[-1:], FAN)
    np.testing.assert_array_equal(last[0], expected[-1])


def test_a_child_that_was_forked_scans_on_threads_of_its_own(run_python):
    out = run_python("""
        import multiprocessing
        import numpy as np
        import qv_sensor as qv

        map = qv.load_map("apartment")
        view = qv.SensorFieldOfView2D(0.0, 8.0, 6.28, 60)

        def scan(seed):
            poses = np.random.default_rng(seed).uniform((0, 0, -4), (20, 12, 4), (2000, 3))
            return float(qv.simulate_scans(map, poses, view, threads=2).sum())

        expected = [scan(seed) for seed in range(4)]
        with multiprocessing.get_context("fork").Pool(2) as pool:
            print(pool.map(scan, range(4)) == expected)
    """)
    assert out == "True\n"


def test_others_run_python_while_scans_are_cast(flat):
    poses = np.full((20_000, 3), 5.0, np.float32)
    begun, acted, seen = threading.Event(), threading.Event(), []

    def scan():
        begun.set()
        qv.simulate_scans(flat, poses, FAN, 1)
        seen.append(acted.is_set())

    before = sys.getswitchinterval()
    # Who has the interpreter's lock keeps it until it lets it go.
    sys.setswitchinterval(1000)
    try:
        # A busy machine may keep the other one from running once.
        while not any(seen) and len(seen) < 20:
            begun.clear()
            acted.clear()
            thread = threading.Thread(target=scan)
            thread.start()
            begun.wait()
            acted.set()
            thread.join()
    finally:
        sys.setswitchinterval(before)
    assert any(seen)


def test_no_pose_and_poses_that_are_not_finite_are_answered(flat):
    assert qv.simulate_scans(flat, np.empty((0, 3)), FAN).shape == (0, 60)
    poses = [(np.nan, 1, 0), (1, np.inf, 0), (1, 1, -np.inf), (1e30, 1, 0)]
    assert (qv.simulate_scans(flat, poses, FAN) == 8.0).all()


@pytest.mark.parametrize(
    ("poses", "view", "threads", "error", "text"),
    [
        ([1, 2, 3], FAN, 1, ValueError, r"poses of shape \(N, 3\).* expected, shape \(3,\) given"),
        (np.zeros((2, 4)), FAN, 1, ValueError, r"shape \(2, 4\) given"),
        ([["a", "b", "c"]], FAN, 1, TypeError, "poses of shape"),
        (np.zeros((2, 3), complex), FAN, 1, TypeError, "an array of complex128 given"),
        (None, FAN, 1, TypeError, "poses of shape"),
        ([[1, 2], [3]], FAN, 1, TypeError, "poses of shape"),
        (np.zeros((2, 3)), FAN, 0, ValueError, "1 to 256 threads expected, 0 given"),
        (np.zeros((2, 3)), FAN, 2**40, TypeError, "threads"),
        (np.zeros((2, 3)), qv.SensorFieldOfView2D(0, 8, np.nan, 60), 1, ValueError, "a field of view"),
        (np.zeros((2, 3)), qv.SensorFieldOfView2D(0, 8, 1, -60), 1, ValueError, "-60 rays"),
    ],
)
def test_what_makes_no_sense_is_refused(flat, poses, view, threads, error, text):
    with pytest.raises(error, match=text):
        qv.simulate_scans(flat, poses, view, threads)


def test_maps_of_ones_own_are_copied_and_never_change():
    cells = np.zeros((2, 3), np.float32)
    cells[1, 2] = 1.0
    map = qv.OccupancyMap(cells, 0.5, (10, 20, 0))
    cells[:] = 1.0
    assert map.cells.tolist() == [[0, 0, 0], [0, 0, 1]]
    assert (map.find_occupancy((11.4, 20.9)), map.find_occupancy((0, 0))) == (1.0, None)
    with pytest.raises(ValueError):
        map.cells[0, 0] = 1.0


@pytest.mark.parametrize(
    ("cells", "resolution", "origin", "error", "text"),
    [
        ([0.0], 0.1, (0, 0, 0), ValueError, r"cells of shape \(rows, columns\) expected, \(1,\) given"),
        (np.zeros((0, 5)), 0.1, (0, 0, 0), ValueError, ""),
        ([[2.0]], 0.1, (0, 0, 0), ValueError, ""),
        ([[np.nan]], 0.1, (0, 0, 0), ValueError, ""),
        ([[0.0]], -1.0, (0, 0, 0), ValueError, ""),
        ([[0.0]], 0.1, (0, 0, np.nan), ValueError, ""),
        ([[0.0]], 0.1, (0, 0), ValueError, "a pose x, y"),
        ([[0.0]], 0.1, "abc", TypeError, "a pose x, y"),
    ],
)
def test_impossible_maps_are_refused(cells, resolution, origin, error, text):
    with pytest.raises(error, match=text):
        qv.OccupancyMap(cells, resolution, origin)


def test_map_files_go_to_disk_and_back_and_bad_ones_are_named(flat, tmp_path):
    path = tmp_path / "copy.yaml"
    qv.save_map(flat, path)
    np.testing.assert_array_equal(qv.load_map(path).cells, flat.cells)
    with pytest.raises(FileNotFoundError, match="nowhere.yaml"):
        qv.load_map(tmp_path / "nowhere.yaml")
    path.write_text("resolution: many\n")
    with pytest.raises(ValueError, match="copy.yaml"):
        qv.load_map(path)
    with pytest.raises(OSError, match="nofolder"):
        qv.save_map(flat, tmp_path / "nofolder" / "map.yaml")
    with pytest.raises(ValueError, match="apartment"):
        qv.load_map("castle")
