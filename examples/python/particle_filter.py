"""A particle filter follows a robot in a map: particle_filter.py [MAP [SEEDS [PICTURE.png]]]"""
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


def update(particles, way, turn, seen, random):
    """Moves them as the odometry says, and keeps those from which the map looks as it was seen."""
    moved = random.normal(particles + (0.0, 0.0, way[2]), 0.01 + 0.05 * np.abs(way).sum())
    moved[:, 0] += np.cos(turn) * way[0] - np.sin(turn) * way[1]
    moved[:, 1] += np.sin(turn) * way[0] + np.cos(turn) * way[1]
    rays = np.flatnonzero(np.isfinite(seen))
    expected = qv.simulate_scans(map, moved, FAN)[:, rays]
    misfit = np.minimum(np.abs(expected - seen[rays]) / 0.1, 4.0)
    weights = np.exp(-0.5 * (misfit**2).sum(axis=1) / max(1.0, len(rays) / 10))
    return random.choice(moved, len(moved), p=weights / weights.sum())


def follow(seed):
    """Half a minute: the ways of robot, filter and odometry, (N, 3, 2), and the last particles."""
    random, ways, seen = np.random.default_rng(seed), [], np.full(FAN.ray_count, np.nan)
    world = qv.WorldOptions(start=start, seed=seed, range_noise=0.02, odometry_drift=0.1)
    particles = random.normal(start, (0.5, 0.5, 0.2), (3000, 3))
    with qv.SimulatedTime() as time, qv.VirtualRobot("porter", map, world) as robot:
        with qv.RealSensorManager(robot.broker) as manager, manager.subscription("filter", "Laser"):
            for _ in range(150):
                before, is_free = robot.odometry, np.nanmin([5.0, *seen[70:110]]) > 0.7
                robot.set_velocity(0.4 * is_free, 0.0, 0.05 if is_free else 0.8)
                time.advance(qv.seconds(0.2))
                way, seen = np.subtract(robot.odometry, before), ranges_about(manager.get_metrical_data())
                particles = update(particles, way, particles[:, 2] - before[2], seen, random)
                drifted = np.add(start[:2], robot.odometry[:2])  # It starts along the x axis.
                ways.append((robot.pose[:2], particles[:, :2].mean(axis=0), drifted))
    return np.array(ways), particles


with qv.open_simulated(0, map=(map := qv.load_map(MAP))) as session:
    start = session.pose  # Where there is room.
runs = [follow(seed) for seed in range(int(SEEDS))]
errors = [np.hypot(*(ways[-1, 1] - ways[-1, 0])) for ways, _ in runs]
print(f"{SEEDS} seeds: {np.mean(errors):.3f} m off in the mean, {max(errors):.3f} m at most")
if PICTURE:
    axes = qv.plot(map, points=runs[0][1])
    lines = [axes.plot(*way.T, lw=width)[0] for way, width in zip(runs[0][0].swapaxes(0, 1), (6, 2, 2))]
    axes.legend(lines, ("robot", "filter", "odometry"), loc="upper left", bbox_to_anchor=(1, 1))
    axes.figure.savefig(PICTURE)
