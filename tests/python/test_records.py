"""Records as numpy sees them, and as columns."""

import gc

import numpy as np
import pandas
import pytest
import qv_sensor as qv


def read_lasers():
    with qv.open_virtual(start=(3.0, 6.3, 0.0)) as session:
        with session.subscription("test", "Laser"):
            session.run(qv.seconds(1))
            return session.manager.get_metrical_data()


def test_points_are_a_read_only_view_that_outlives_everything():
    record = read_lasers()[0]
    points, transform = record.points, record.sensor_transform
    assert points.ctypes.data == record.points.ctypes.data and points.base is record
    expected = points.copy()
    del record
    gc.collect()
    assert (points.dtype, points.shape[1], transform.shape) == (np.float32, 3, (3, 4))
    assert len(points) > 0
    for change in (lambda: points.__setitem__(0, 1.0), lambda: points.setflags(write=True)):
        with pytest.raises(ValueError):
            change()
    np.testing.assert_array_equal(points, expected)


def test_a_reading_is_not_copied_and_is_of_the_names_that_are_asked_for(session):
    session.subscribe("test", ["Laser", "Sonar"])
    session.run(qv.seconds(1))
    first, again = (session.manager.get_metrical_data("FrontLaser") for _ in range(2))
    assert first[0].points.ctypes.data == again[0].points.ctypes.data
    some = session.manager.get_metrical_data(["Sonar", "FrontLaser"])
    assert [record.sensor_name for record in some] == ["FrontLaser", "BackSonar", "FrontSonar"]
    assert isinstance(some[0].timestamp, int)


def test_a_record_of_ones_own_holds_copies_and_places_its_points():
    view = qv.SensorFieldOfView2D(0.1, 2.0, 0.5, 1)
    points = np.array([[1.0, 0.0, 0.0]])
    turned = [[0, -1, 0, 5], [1, 0, 0, 6], [0, 0, 1, 7]]
    record = qv.Record("Left", "Infrared", view, points, turned, 42)
    points[:] = 9.0
    assert record.timestamp == 42 and record.field_of_view == view
    np.testing.assert_array_equal(record.points, [[1, 0, 0]])
    np.testing.assert_array_equal(record.points_in_frame(), [[5, 7, 7]])
    assert qv.Record("Left", "Infrared", view, []).points.shape == (0, 3)
    record.__init__("Right", "Infrared", view, [])
    assert record.sensor_name == "Left" and len(record.points) == 1


@pytest.mark.parametrize(
    ("points", "transform", "error", "text"),
    [
        ([[1, 2]], None, ValueError, r"points of shape \(N, 3\) expected, shape \(1, 2\) given"),
        ([1, 2, 3], None, ValueError, r"shape \(3,\) given"),
        ([["a"] * 3], None, TypeError, r"points of shape \(N, 3\) expected, an array of <U1 given"),
        ([], np.eye(4), ValueError, r"a sensor_transform of shape \(3, 4\) expected, shape \(4, 4\) given"),
        ([], "identity", TypeError, r"a sensor_transform of shape"),
    ],
)
def test_records_of_wrong_shapes_and_types_are_refused(points, transform, error, text):
    with pytest.raises(error, match=text):
        qv.Record("Left", "Infrared", qv.SensorFieldOfView2D(0, 1, 1, 1), points, transform)


def test_columns_have_a_row_for_each_point_and_pandas_takes_them():
    view = qv.SensorFieldOfView2D(0.1, 2.0, 0.5, 1)
    shifted = [[1, 0, 0, 10], [0, 1, 0, 0], [0, 0, 1, 0]]
    records = [
        qv.Record("Left", "Infrared", view, [[1, 2, 3], [4, 5, 6]], shifted, 2**60),
        qv.Record("Silent", "Infrared", view, np.empty((0, 3)), timestamp=1),
        qv.Record("Right", "Infrared", view, [[7, 8, 9]], timestamp=5),
    ]
    table = pandas.DataFrame(qv.records_to_table(records))
    assert list(table.sensor_name) == ["Left", "Left", "Right"]
    assert list(table.record) == [0, 0, 2]
    assert list(table.timestamp) == [2**60, 2**60, 5]
    assert table[["x", "y", "z"]].values.tolist() == [[1, 2, 3], [4, 5, 6], [7, 8, 9]]
    assert list(qv.records_to_table(records, placed=True)["x"]) == [11, 14, 7]
    assert {len(column) for column in qv.records_to_table([]).values()} == {0}
