"""The files of vote, find and segment, read by other libraries. ORVA_COMMAND is the command."""

import gzip
import io
import json
import os
import pathlib
import subprocess
import zipfile

import jsonschema
import numpy as np
import pandas as pd
import pytest
import shapely.geometry
import shapely.vectorized
import tifffile

HERE = pathlib.Path(__file__).resolve().parent
IMAGES = HERE.parents[1] / "data" / "images"
SAMPLE = IMAGES / "dsb_dense_a.pgm"
PIXEL_SIZE = 0.25


def orva(*arguments):
    command = [os.environ["ORVA_COMMAND"], *map(str, arguments)]
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


def table_of(*arguments):
    return pd.read_csv(io.StringIO(orva(*arguments)))


def validated(text):
    collection = json.loads(text, parse_constant=pytest.fail)
    schema = json.loads((HERE / "feature_collection.schema.json").read_text(encoding="utf-8"))
    jsonschema.Draft7Validator.check_schema(schema)
    jsonschema.validate(collection, schema)
    return collection["features"]


def polygons_of(feature):
    shape = shapely.geometry.shape(feature["geometry"])
    assert shape.is_valid
    polygons = list(getattr(shape, "geoms", [shape]))
    for polygon in polygons:
        assert polygon.exterior.is_ccw
        assert not any(hole.is_ccw for hole in polygon.interiors)
    for rings in (
        feature["geometry"]["coordinates"]
        if shape.geom_type == "MultiPolygon"
        else [feature["geometry"]["coordinates"]]
    ):
        assert all(ring[0] == ring[-1] for ring in rings)
    return shape


@pytest.mark.parametrize("damage", ["open", "type", "nan", "measurement"])
def test_the_schema_refuses_what_is_wrong(damage):
    """The check itself."""
    collection = json.loads(orva("find", "--quiet", "--format", "geojson", SAMPLE))
    feature = collection["features"][0]
    if damage == "open":
        feature["geometry"]["coordinates"][0] = [[0, 0], [1, 0], [0, 1]]
    elif damage == "type":
        feature["geometry"]["type"] = "Circle"
    elif damage == "nan":
        feature["properties"]["measurements"]["score"] = float("nan")
    else:
        feature["properties"]["measurements"]["score"] = "high"
    wrong = pytest.fail.Exception if damage == "nan" else jsonschema.ValidationError
    with pytest.raises(wrong):
        validated(json.dumps(collection))


def test_find_gives_circles():
    features = validated(orva("find", "--format", "geojson", SAMPLE))
    table = table_of("find", SAMPLE)
    assert len(features) == len(table) > 100
    for feature, row in zip(features, table.itertuples()):
        shape = polygons_of(feature)
        left, top, right, bottom = shape.bounds
        assert left == pytest.approx(row.x + 0.5 - row.radius, abs=0.002)
        assert top == pytest.approx(row.y + 0.5 - row.radius, abs=0.002)
        assert right - left == pytest.approx(2 * row.radius, abs=0.004)
        assert bottom - top == pytest.approx(2 * row.radius, abs=0.004)
        assert 0.97 < shape.area / (np.pi * row.radius**2) < 1
        assert feature["properties"]["measurements"]["score"] == row.score


def test_vote_gives_points():
    features = validated(orva("vote", "--format", "geojson", SAMPLE))
    table = table_of("vote", SAMPLE)
    assert [f["geometry"]["coordinates"] for f in features] == [
        [x + 0.5, y + 0.5] for x, y in zip(table.x, table.y)
    ]
    assert len(features) > 100


@pytest.mark.parametrize("name", ["dsb_dense_a", "dsb_sparse_a"])
def test_segment_gives_the_pixels_of_each_label(tmp_path, name):
    image = IMAGES / (name + ".pgm")
    labels_file = tmp_path / "labels.tif"
    file = tmp_path / "regions.geojson.gz"
    orva("segment", "--table", file, "--labels", labels_file, image)
    features = validated(gzip.decompress(file.read_bytes()))
    labels = tifffile.imread(labels_file)
    assert len(features) == labels.max() > 0
    drawn = np.zeros_like(labels)
    for k, feature in enumerate(features, 1):
        shape = polygons_of(feature)
        left, top, right, bottom = map(int, shape.bounds)
        x, y = np.meshgrid(np.arange(left, right) + 0.5, np.arange(top, bottom) + 0.5)
        inside = shapely.vectorized.contains(shape, x, y)
        assert shape.area == inside.sum() == feature["properties"]["measurements"]["area"]
        assert not drawn[top:bottom, left:right][inside].any()
        drawn[top:bottom, left:right][inside] = k
    assert np.array_equal(drawn, labels)


def test_gzip_is_the_same_every_time(tmp_path):
    first, second = tmp_path / "a.geojson.gz", tmp_path / "b.geojson.gz"
    for file in (first, second):
        orva("find", "--table", file, SAMPLE)
    assert first.read_bytes() == second.read_bytes()
    assert gzip.decompress(first.read_bytes()).decode() == orva(
        "find", "--format", "geojson", SAMPLE
    )


def test_pandas_reads_micrometres():
    table = table_of("find", "--pixel-size", PIXEL_SIZE, SAMPLE)
    for column in ("x", "y", "radius"):
        assert np.allclose(table[column + "_um"], table[column] * PIXEL_SIZE, atol=2e-4)
    regions = table_of("segment", "--pixel-size", PIXEL_SIZE, SAMPLE)
    assert np.allclose(regions.area_um2, regions.area * PIXEL_SIZE**2)
    for column in (
        "perimeter",
        "major_axis_length",
        "minor_axis_length",
        "equivalent_diameter_area",
    ):
        assert np.allclose(regions[column + "_um"], regions[column] * PIXEL_SIZE)


def test_pandas_reads_napari_points():
    points = table_of("find", "--format", "napari", SAMPLE)
    table = table_of("find", SAMPLE)
    assert list(points.columns) == ["index", "axis-0", "axis-1"]
    assert list(points["index"]) == list(range(len(table)))
    assert np.allclose(points["axis-0"], table.y)
    assert np.allclose(points["axis-1"], table.x)


def test_stacks_have_axes_and_planes(tmp_path):
    image = np.zeros((2, 3, 64, 64), np.uint8)
    y, x = np.mgrid[:64, :64]
    for t in range(2):
        for z in range(3):
            image[t, z][(x - 20 - 10 * z) ** 2 + (y - 22 - 20 * t) ** 2 < 64] = 200
    file = tmp_path / "stack.tif"
    tifffile.imwrite(
        file,
        image,
        ome=True,
        metadata={
            "axes": "TZYX",
            "PhysicalSizeX": 0.5,
            "PhysicalSizeY": 0.5,
            "PhysicalSizeXUnit": "µm",
            "PhysicalSizeYUnit": "µm",
        },
    )
    search = ("find", "--z", "all", "--radius", "4um", file)
    table = table_of(*search)
    columns = ["x", "y", "radius", "score", "x_um", "y_um", "radius_um", "t", "z"]
    assert list(table.columns) == columns
    assert list(zip(table.t, table.z)) == [(t, z) for t in range(2) for z in range(3)]
    assert np.allclose(table.x, 20 + 10 * table.z, atol=1)
    assert np.allclose(table.radius_um, 4, atol=0.5)
    points = table_of("find", "--format", "napari", *search[1:])
    assert list(points.columns) == ["index", "axis-0", "axis-1", "axis-2", "axis-3"]
    assert np.allclose(points.iloc[:, 1:], table[["t", "z", "y", "x"]])
    features = validated(orva("find", "--format", "geojson", *search[1:]))
    planes = [feature["geometry"]["plane"] for feature in features]
    assert planes == [{"c": -1, "z": z, "t": t} for t in range(2) for z in range(3)]


def test_roi_sets_are_zip_files(tmp_path):
    empty = tmp_path / "empty.pgm"
    empty.write_bytes(b"P5 20 20 255\n" + bytes(400))
    for image, count in ((SAMPLE, len(table_of("find", SAMPLE))), (empty, 0)):
        file = tmp_path / "rois.zip"
        orva("find", "--table", file, image)
        with zipfile.ZipFile(file) as archive:
            assert archive.testzip() is None
            assert archive.namelist() == [f"{k}.roi" for k in range(1, count + 1)]
            assert {info.date_time for info in archive.infolist()} <= {(1980, 1, 1, 0, 0, 0)}


def test_a_smaller_level_has_larger_pixels(tmp_path):
    y, x = np.mgrid[:240, :320]
    image = np.full((240, 320), 20, np.uint8)
    for cx, cy in ((60, 60), (200, 80), (120, 170)):
        image[(x - cx) ** 2 + (y - cy) ** 2 < 24**2] = 200
    file = tmp_path / "pyramid.ome.tif"
    metadata = {"axes": "YX", "PhysicalSizeX": 0.5, "PhysicalSizeY": 0.5}
    with tifffile.TiffWriter(file, ome=True) as tiff:
        tiff.write(image, subifds=1, metadata=metadata, tile=(64, 64))
        tiff.write(image[::2, ::2], subfiletype=1, tile=(64, 64))
    full, half = (table_of("find", "--quiet", "--level", k, file) for k in (0, 1))
    assert len(full) == len(half) == 3
    assert np.allclose(sorted(half.radius), sorted(full.radius / 2), atol=1)
    assert np.allclose(sorted(half.radius_um), sorted(full.radius_um), atol=0.5)
    for level, radius in ((0, full.radius_um), (1, half.radius_um)):
        found = table_of("find", "--quiet", "--level", level, "--radius", "12um", file)
        assert np.allclose(found.radius_um, radius)
    page = table_of("find", "--quiet", "--frame", 0, file)
    assert page.equals(full)
