"""Obstacle avoidance: a virtual robot drives about and turns where something is near."""

import numpy as np
import qv_sensor as qv


def nearest(records: list[qv.Record]) -> tuple[float, float]:
    """How near something is ahead, and on which side more of it is (1 left, -1 right)."""
    points = np.concatenate([np.empty((0, 3), np.float32)] + [r.points_in_frame() for r in records])
    ahead = points[(points[:, 0] > 0.0) & (np.abs(points[:, 1]) < 0.45)]
    if len(ahead) == 0:
        return np.inf, 1.0
    return float(ahead[:, 0].min()), 1.0 if ahead[:, 1].mean() > 0.0 else -1.0


with qv.SimulatedTime() as time:
    world = qv.WorldOptions(start=(3.0, 6.3, 0.0), range_noise=0.01)
    with qv.VirtualRobot("porter", qv.load_map("apartment"), world) as robot:
        with qv.RealSensorManager(robot.broker) as manager:
            with manager.subscription("avoider", "Laser"):
                turn = 0.0
                for step in range(900):
                    distance, side = nearest(manager.get_metrical_data())
                    if distance < 0.8:
                        turn = turn or -side  # One way until there is room.
                        robot.set_velocity(0.0, 0.0, 0.8 * turn)
                    else:
                        turn = 0.0
                        robot.set_velocity(0.3, 0.0, 0.0)
                    time.advance(qv.seconds(0.1))
                    if step % 150 == 0:
                        print(f"at {robot.pose.x:.2f}, {robot.pose.y:.2f} m, {distance:.2f} m ahead")
        print(f"{robot.collision_count} collisions in a minute and a half")
