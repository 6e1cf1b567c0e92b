"""How near is what each sensor of a virtual robot sees, in the project's own map?"""

import qv_sensor as qv

with qv.open_virtual("porter") as session:
    with session.subscription("my navigation", ["Sonar", "Laser", "Asus"]):
        session.run(qv.seconds(2))
        for sensor in session.look().sensors:
            if sensor.nearest is not None:
                print(f"{sensor.name}: {sensor.nearest:.2f} m")
        for record in session.manager.get_metrical_data("Laser"):
            print(f"{record.sensor_name}: {len(record.points)} points, x from "
                  f"{record.points[:, 0].min():.2f} m")  # fmt: skip
