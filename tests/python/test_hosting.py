"""Sensors that are hosted in a robot's middleware."""

import gc

import pytest
import qv_sensor as qv
from conftest import IN_THE_FLAT
from test_own_parts import Infrared


class Navigation(qv.NavigationModule):
    def __init__(self, *parts):
        super().__init__(*parts)
        self.bind_method("nearest", self._nearest)

    def _nearest(self, family):
        records = self.manager.get_metrical_data(family)
        return min(float(record.points[:, 0].min()) for record in records)


def test_others_read_hosted_sensors_by_name(flat):
    with qv.SimulatedTime() as time, qv.VirtualRobot("porter", flat, qv.WorldOptions(start=IN_THE_FLAT)) as robot:
        broker = robot.broker
        with qv.ScopedModule(broker, Navigation(broker)) as module:
            assert module.name == "QVNavigation"
            assert broker.call("QVNavigation", "subscribe", "Planner", ["Laser", "Sonar"]) is True
            time.advance(qv.seconds(1))
            (record,) = qv.records_from_value(broker.call("QVNavigation", "getMetricalData", "FrontLaser"))
            (expected,) = module.manager.get_metrical_data("FrontLaser")
            assert record.sensor_name == "FrontLaser" and record.points.tolist() == expected.points.tolist()
            assert 0 < broker.call("QVNavigation", "nearest", "Sonar") < 10
            assert module.manager.get_subscribers() == {"Planner"}
            manager = module.manager
            del module
        gc.collect()
        assert not broker.has_module("QVNavigation")
        with pytest.raises(RuntimeError, match="has gone"):
            manager.get_sensor_list()
    with pytest.raises(qv.QVError):
        qv.records_from_value([["a", "b"]])


def test_a_manager_of_ones_own_is_hosted_and_goes_with_its_module(session):
    sensor, broker = Infrared(), qv.Broker()
    broker.register_module(Navigation(qv.SensorManager([sensor])))
    broker.call("QVNavigation", "subscribeToAll", "Planner")
    assert broker.call("QVNavigation", "nearest", "Infrared") == pytest.approx(0.35)
    broker.unregister_module("QVNavigation")
    gc.collect()
    assert sensor.calls == ["on", "off"]
    with pytest.raises(ValueError, match="a session's given"):
        qv.NavigationModule(session.manager)
    with pytest.raises(TypeError):
        qv.NavigationModule(None)
