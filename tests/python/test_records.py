"""Records as numpy sees them."""

import gc

import numpy as np
import pytest
import qv_sensor as qv


def read_front_laser():
    with qv.open_virtual(start=(3.0, 6.3, 0.0)) as session:
        session.subscribe("test", "FrontLaser")
        session.run(qv.seconds(1))
        (record,) = session.manager.get_metrical_data("Laser")
        return record


def test_points_are_a_read_only_view_that_outlives_everything():
    points = read_front_laser().points
    expected = points.copy()
    gc.collect()
    assert points.dtype == np.float32 and points.ndim == 2 and points.shape[1] == 3
    assert not points.flags.owndata
    assert len(points) > 0
    for change in (lambda: points.__setitem__(0, 1.0), lambda: points.setflags(write=True)):
        with pytest.raises(ValueError):
            change()
    np.testing.assert_array_equal(points, expected)
