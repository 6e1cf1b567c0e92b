"""Records as numpy sees them, and as columns."""

import gc

import numpy as np
import pandas
import pytest
import qv_sensor as qv


def read_lasers():
    """A record, the state of its sensor, and the map, of a session that has ended."""
    map = qv.load_map("apartment")
    with qv.open_virtual(start=(3.0, 6.3, 0.0), map=map) as session:
        with session.subscription("test", "FrontLaser"):
            session.run(qv.seconds(1))
            laser = next(state for state in session.look().sensors if state.name == "FrontLaser")
            return session.manager.get_metrical_data()[0], laser, map


def test_views_are_read_only_and_outlive_everything():
    record, laser, map = read_lasers()
    owners = {"points": record, "sensor_transform": record, "hits": laser, "misses": laser, "cells": map}
    views = {name: getattr(owner, name) for name, owner in owners.items()}
    expected = {name: view.copy() for name, view in views.items()}
    assert [view.shape[1:] for view in views.values()] == [(3,), (4,), (3,), (3,), (420,)]
    assert len(views["points"]) > 0 and len(views["hits"]) > 0
    for name, view in views.items():
        assert view.dtype == np.float32 and view.base is owners[name]
        assert view.ctypes.data == getattr(owners[name], name).ctypes.data
    del record, laser, map, owners
    gc.collect()
    # Takes the place of what has gone, if it has.
    spread = [np.full((300, 3), 9.0, np.float32) for _ in range(1000)]
    for name, view in views.items():
        for change in (lambda: view.__setitem__((), 1.0), lambda: view.setflags(write=True)):
            with pytest.raises(ValueError):
                change()
        np.testing.assert_array_equal(view, expected[name])
    del spread


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


def strict_frame(columns):
    """A table of a library that copies no column and guesses no type, as polars."""
    for name, column in columns.items():
        assert isinstance(name, str) and type(column) is np.ndarray and column.ndim == 1
        assert column.flags.c_contiguous and column.dtype.kind in "Uif", name
    (count,) = {len(column) for column in columns.values()}
    return count, {name: column.dtype for name, column in columns.items() if column.dtype.kind != "U"}


def test_columns_have_a_row_for_each_point_and_tables_take_them():
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
    types = {"record": np.int64, "timestamp": np.int64, **dict.fromkeys("xyz", np.float32)}
    for some in (records, records[1:2], []):
        assert strict_frame(qv.records_to_table(some)) == (sum(len(record.points) for record in some), types)
