"""Localisation: a particle filter follows a robot with noisy lasers and drifting odometry in a map.

Usage: particle_filter.py [MAP [SEEDS [PICTURE.png]]]
"""

import sys

import numpy as np
import qv_sensor as qv

MAP, SEEDS, PICTURE = (sys.argv[1:] + ["apartment", "1", ""][len(sys.argv) - 1 :])[:3]
FAN = qv.SensorFieldOfView2D(min_range=0.0, max_range=5.0, angular_range=2 * np.pi, ray_count=180)


def ranges_about(records):
    """The lasers as one fan about the robot; NaN where they tell nothing."""
    points = np.concatenate([np.empty((0, 3))] + [record.points_in_frame() for record in records])
    ranges = np.full(FAN.ray_count, np.nan)
    rays = np.round((np.arctan2(points[:, 1], points[:, 0]) / (2 * np.pi) + 0.5) * FAN.ray_count)
    np.fmin.at(ranges, rays.astype(int) % FAN.ray_count, np.hypot(points[:, 0], points[:, 1]))
    return ranges


def move(particles, before, after, random):
    """As the odometry says that the robot has, and a little otherwise."""
    way, turn = np.subtract(after, before), particles[:, 2] - before[2]
    particles[:, 0] += np.cos(turn) * way[0] - np.sin(turn) * way[1]
    particles[:, 1] += np.sin(turn) * way[0] + np.cos(turn) * way[1]
    particles[:, 2] += way[2]
    return particles + random.normal(0.0, 0.01 + 0.05 * np.abs(way).sum(), particles.shape)


def select(particles, map, seen, random):
    """Those from which the map looks as the lasers saw it."""
    rays = np.flatnonzero(np.isfinite(seen))
    expected = qv.simulate_scans(map, particles, FAN)[:, rays]
    misfit = np.minimum(np.abs(expected - seen[rays]) / 0.1, 4.0)
    weights = np.exp(-0.5 * (misfit**2).sum(axis=1) / max(1.0, len(rays) / 10))
    return random.choice(particles, len(particles), p=weights / weights.sum())


def follow(map, start, seed):
    """Half a minute: the robot's way and the filter's, shape (N, 2, 2), and the last particles."""
    random, ways = np.random.default_rng(seed), []
    world = qv.WorldOptions(start=start, seed=seed, range_noise=0.02, odometry_drift=0.1)
    particles = random.normal(start, (0.5, 0.5, 0.2), (3000, 3))
    with qv.SimulatedTime() as time, qv.VirtualRobot("porter", map, world) as robot:
        with qv.RealSensorManager(robot.broker) as manager, manager.subscription("filter", "Laser"):
            for _ in range(150):
                before, seen = robot.odometry, ranges_about(manager.get_metrical_data())
                is_free = np.nanmin(np.append(seen[70:110], 5.0)) > 0.7
                robot.set_velocity(0.4 * is_free, 0.0, 0.05 if is_free else 0.8)
                time.advance(qv.seconds(0.2))
                particles = move(particles, before, robot.odometry, random)
                particles = select(particles, map, ranges_about(manager.get_metrical_data()), random)
                ways.append((robot.pose[:2], particles[:, :2].mean(axis=0)))
    return np.array(ways), particles


with qv.open_simulated(0, map=MAP) as session:
    map, start = session.map, session.pose  # Where there is room.
runs = [follow(map, start, seed) for seed in range(int(SEEDS))]
errors = [np.hypot(*(ways[-1, 1] - ways[-1, 0])) for ways, _ in runs]
print(f"{SEEDS} seeds: off by {np.mean(errors):.3f} m in the mean, {max(errors):.3f} m at most")
if PICTURE:
    ways, particles = runs[0]
    axes = qv.plot(map, points=particles)
    axes.plot(*ways[:, 0].T, label="robot")
    axes.plot(*ways[:, 1].T, label="filter")
    axes.legend()
    axes.figure.savefig(PICTURE)
