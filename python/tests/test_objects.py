"""find_objects() and estimate_settings(): the command, discs, and what is refused."""

import concurrent.futures
import dataclasses
import json

import numpy as np
import pytest
from plain_pgm import read_pgm

import orva

FIELDS = ("x", "y", "radius", "score", "coverage")

# Options of the function, and the command's.
SETTINGS = [
    ({}, []),
    ({"radius": 10}, ["--radius", 10]),
    ({"radius": (6, 14.5)}, ["--radius", "6:14.5"]),
    ({"polarity": "dark", "min_score": 0.25}, ["--polarity", "dark", "--min-score", 0.25]),
    ({"polarity": "bright", "radius": [8.0, 30.0]}, ["--polarity", "bright", "--radius", "8:30"]),
]


@pytest.mark.parametrize("options, arguments", SETTINGS)
def test_objects_are_those_of_the_command(command, sample, options, arguments):
    document = json.loads(command("find", "--quiet", "--format", "json", *arguments, sample))
    objects = orva.find_objects(read_pgm(sample), **options)
    assert objects.dtype == [(name, np.float32) for name in FIELDS]
    assert len(objects) == len(document["objects"])
    # Only one of the samples has dark objects.
    assert len(objects) > 0 or options.get("polarity") == "dark"
    for name in FIELDS:
        # The command writes thousandths.
        expected = [o[name] for o in document["objects"]]
        np.testing.assert_allclose(objects[name], expected, rtol=0, atol=0.00051)
    assert np.all(np.diff(objects["score"]) <= 0)


def test_the_estimate_is_that_of_the_command(command, sample):
    settings = json.loads(command("find", "--quiet", "--format", "json", sample))["settings"]
    estimate = orva.estimate_settings(read_pgm(sample))
    assert settings["estimated"] == ["radius", "polarity"]
    assert estimate.polarity == settings["polarity"]
    assert estimate.radius == pytest.approx(settings["radius"], abs=0.00051)
    assert estimate.confidence == pytest.approx(settings["confidence"], abs=0.00051)
    other = estimate.runner_up
    assert {estimate.polarity, other.polarity} == {"bright", "dark"}
    assert other.confidence <= estimate.confidence
    assert other.runner_up is None
    with pytest.raises(dataclasses.FrozenInstanceError):
        estimate.radius = 3.0


@pytest.fixture
def discs():
    """A plane (150, 190) of uint8 with noise and soft discs, and their rows (x, y, radius)."""
    places = [(30, 40.5, 12), (80.25, 30, 10), (150, 50, 15), (60, 100, 12), (120, 110.5, 11)]
    y, x = np.mgrid[:150, :190]
    picture = 20 + np.random.default_rng(2).normal(0, 4, y.shape)
    for cx, cy, radius in places:
        picture += 150 * np.clip(radius + 0.5 - np.hypot(x - cx, y - cy), 0, 1)
    return np.clip(picture, 0, 255).astype(np.uint8), np.array(places)


@pytest.mark.parametrize("polarity", ["bright", "dark"])
def test_discs_have_their_centers_and_radii(discs, polarity):
    image, places = discs
    image = image if polarity == "bright" else 255 - image
    objects = orva.find_objects(image)
    assert len(objects) == len(places)
    found = np.stack([objects[name] for name in FIELDS[:3]], axis=1)
    nearest = np.hypot(*(found[:, np.newaxis, :2] - places[:, :2]).T).T.argmin(axis=1)
    assert sorted(nearest) == list(range(len(places)))
    assert np.abs(found - places[nearest]).max() < 0.5
    assert np.all((objects["score"] > 0.5) & (objects["score"] <= 1))
    estimate = orva.estimate_settings(image)
    assert estimate.polarity == polarity
    assert estimate.radius == pytest.approx(12, abs=1)
    assert len(orva.find_objects(image, polarity={"bright": "dark", "dark": "bright"}[polarity])) == 0


def test_settings_limit_what_is_found(discs):
    image, _ = discs
    objects = orva.find_objects(image)
    ranged = orva.find_objects(image, radius=(11.5, 13))
    assert np.all((ranged["radius"] > 11) & (ranged["radius"] < 13.5))
    assert 0 < len(ranged) < len(objects)
    assert len(orva.find_objects(image, radius=60)) == 0
    assert len(orva.find_objects(image, min_score=1)) < len(objects)
    assert len(orva.find_objects(image, min_score=0)) >= len(objects)


@pytest.mark.parametrize(
    "image",
    [
        np.full((40, 50), 7, np.uint8),
        np.random.default_rng(1).normal(0, 3, (120, 150)).astype(np.float32),
        np.zeros((3, 4), np.int16),
    ],
)
def test_nothing_is_found_where_there_is_nothing(image):
    objects = orva.find_objects(image)
    assert (objects.shape, objects.dtype.names) == ((0,), FIELDS)
    estimate = orva.estimate_settings(image)
    assert (estimate.radius, estimate.confidence) == (0, 0)


def test_a_frame_of_a_stack_is_that_plane(discs):
    image, _ = discs
    stack = np.stack([[image, image[::-1]], [255 - image, image * 0]])
    for frame, (c, z) in enumerate(np.ndindex(2, 2)):
        plane = np.ascontiguousarray(stack[c, z])
        objects = orva.find_objects(stack, frame=frame)
        np.testing.assert_array_equal(objects, orva.find_objects(plane))
        assert len(objects) == (0 if frame == 3 else 5)
        assert orva.estimate_settings(stack, frame=frame) == orva.estimate_settings(plane)


@pytest.mark.parametrize("dtype", ["uint8", "int16", "int32", "uint32", "float32"])
def test_all_pixel_types_and_views_give_the_same_objects(discs, dtype):
    image, _ = discs
    expected = orva.find_objects(image)
    typed = image.astype(dtype)
    view = np.repeat(typed, 2, axis=1)[:, ::2]
    for array in (typed, np.asfortranarray(typed), view):
        np.testing.assert_array_equal(orva.find_objects(array), expected)
    assert orva.estimate_settings(typed) == orva.estimate_settings(image)


def test_a_pixel_that_is_no_number_is_the_smallest_one(discs):
    image = discs[0].astype(np.float32)
    image[5, 5] = image.min()
    expected = orva.find_objects(image)
    for value in (np.nan, np.inf, -np.inf):
        image[5, 5] = value
        np.testing.assert_array_equal(orva.find_objects(image), expected)


@pytest.mark.parametrize(
    "option, value",
    [
        ("radius", 0), ("radius", -3), ("radius", 1e7), ("radius", float("nan")), ("radius", (5,)),
        ("radius", (1, 2, 3)), ("radius", (-1, 5)), ("radius", (9, 5)), ("radius", (2, float("inf"))),
        ("polarity", "both"), ("polarity", "grey"), ("min_score", -0.1), ("min_score", 1.1),
        ("min_score", float("nan")), ("frame", 1), ("frame", -1),
    ],
)
def test_options_out_of_range_are_refused_by_name(blobs, option, value):
    with pytest.raises(ValueError, match=option):
        orva.find_objects(blobs, **{option: value})


@pytest.mark.parametrize(
    "option, value",
    [
        ("radius", "9"), ("radius", True), ("radius", ("4", 5)), ("radius", {4, 5}), ("polarity", 1),
        ("min_score", None), ("frame", 1.0),
    ],
)
def test_options_of_another_type_are_refused_by_name(blobs, option, value):
    with pytest.raises(TypeError, match=option):
        orva.find_objects(blobs, **{option: value})


def test_options_need_their_names(blobs):
    with pytest.raises(TypeError, match="positional"):
        orva.find_objects(blobs, 20)
    with pytest.raises(TypeError, match="positional"):
        orva.estimate_settings(blobs, 0)


def test_results_are_the_same_in_many_threads(discs):
    image, _ = discs
    images = [np.roll(image, 7 * k, axis=1) for k in range(8)]
    expected = [orva.find_objects(i) for i in images]
    with concurrent.futures.ThreadPoolExecutor(4) as threads:
        for _ in range(3):
            for result, once in zip(threads.map(orva.find_objects, images), expected):
                np.testing.assert_array_equal(result, once)


@pytest.mark.parametrize("colours", [3, 4])
def test_arrays_of_colours_are_refused(colours):
    picture = np.zeros((40, 50, colours), np.uint8)
    for call in (orva.find_objects, orva.estimate_settings):
        with pytest.raises(ValueError, match="looks like colour; pass channel_axis=-1"):
            call(picture)
