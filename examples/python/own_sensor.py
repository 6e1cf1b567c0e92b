"""A sensor of one's own: two infrared range finders, in a manager of their own."""

import qv_sensor as qv

VIEW = qv.SensorFieldOfView2D(min_range=0.05, max_range=0.8, angular_range=0.0, ray_count=1)


class InfraredSensor(qv.Sensor):
    """One distance straight ahead, by a device that is switched on while somebody wants it."""

    def __init__(self, name: str, distance: float) -> None:
        super().__init__(name, "Infrared", VIEW)
        self.distance = distance

    def _subscribe_to_hardware(self) -> bool:
        print(self.name, "on")
        return True  # False when that fails: the sensor's diagnosis is then bad.

    def _unsubscribe_from_hardware(self) -> bool:
        print(self.name, "off")
        return True

    def _get_data(self) -> list[qv.Record]:
        points = [[self.distance, 0.0, 0.0]] if self.distance < VIEW.max_range else []
        return [qv.Record(self.name, self.family_name, VIEW, points)]


with qv.SensorManager([InfraredSensor("Left", 0.35), InfraredSensor("Right", 0.95)]) as manager:
    with manager.subscription("my navigation"):
        for record in manager.get_metrical_data("Infrared"):
            print(f"{record.sensor_name}: {len(record.points)} points")
