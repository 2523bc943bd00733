"""How scripts/scoring.py compares what is found with the truth, on small images made by hand."""

import pathlib
import sys

import numpy as np
import pytest

sys.path.append(str(pathlib.Path(__file__).resolve().parents[2] / "scripts"))
import scoring

NOTHING = np.zeros((4, 6), int)


def labelled(*rows):
    """One digit per pixel; a dot is background."""
    return np.array([[0 if c == "." else int(c) for c in row] for row in rows])


TRUTH = labelled(
    "111.22",
    "111.22",
    "....22",
    "33..22",
)


def test_overlaps_of_the_same_image_are_whole():
    pairs, iou = scoring.overlaps(TRUTH, TRUTH)
    assert pairs.tolist() == [[1, 1], [2, 2], [3, 3]]
    assert iou.tolist() == [1, 1, 1]


def test_overlap_is_intersection_over_union():
    found = labelled(
        ".77.55",
        ".77.5.",
        ".77...",
        "......",
    )
    pairs, iou = scoring.overlaps(found, TRUTH)
    assert pairs.tolist() == [[5, 2], [7, 1]]
    assert iou.tolist() == [3 / 8, 4 / 8]  # of 3 and 8 pixels, 3 shared; of 6 and 6, 4 shared


def test_regions_that_share_no_pixel_are_no_pair():
    pairs, iou = scoring.overlaps(labelled("1..", "..."), labelled("..1", "..."))
    assert (len(pairs), len(iou)) == (0, 0)


def test_labels_may_be_large_and_have_gaps():
    found = np.where(TRUTH > 0, 2**31 - 1 - TRUTH, 0)
    pairs, iou = scoring.overlaps(found.astype(np.int32), 65_000 * TRUTH.astype(np.int32))
    assert sorted(map(tuple, pairs.tolist())) == [(2**31 - 1 - k, 65_000 * k) for k in (3, 2, 1)]
    assert iou.tolist() == [1, 1, 1]


def test_images_of_different_shapes_are_refused():
    with pytest.raises(ValueError, match="different shapes"):
        scoring.overlaps(TRUTH, TRUTH[:, :-1])


def test_an_iou_of_just_the_limit_is_no_hit():
    """Otherwise two halves of a region would both be hits."""
    whole, halves = labelled("1111"), labelled("1122")
    assert scoring.overlaps(halves, whole)[1].tolist() == [0.5, 0.5]
    assert scoring.count_regions(halves, whole) == (0, 2, 1)
    assert scoring.count_regions(labelled("1112"), whole) == (1, 1, 0)
    assert scoring.count_regions(whole, labelled("1112")) == (1, 0, 1)


def test_a_higher_limit_takes_fewer_hits():
    found = labelled(
        "111.22",
        "11..22",
        "....2.",
        "33....",
    )  # of 6 pixels 5, of 8 pixels 5, of 2 pixels both
    counts = {limit: scoring.count_regions(found, TRUTH, limit) for limit in (0.5, 0.7, 0.9)}
    assert counts == {0.5: (3, 0, 0), 0.7: (2, 1, 1), 0.9: (1, 2, 2)}


def test_matches_name_the_labels_of_both():
    found = np.select([TRUTH == 1, TRUTH == 2], [9, 4], 0)
    assert scoring.region_matches(found, TRUTH).tolist() == [[4, 2], [9, 1]]


def test_a_limit_below_one_half_is_refused():
    with pytest.raises(ValueError, match="two regions"):
        scoring.count_regions(TRUTH, TRUTH, 0.49)


@pytest.mark.parametrize("seed", range(20))
def test_hits_are_one_to_one_on_random_labels(seed):
    """Of blocky labels, with what differs by some of the pixels."""
    random = np.random.default_rng(seed)
    truth = np.kron(random.integers(0, 6, (4, 5)), np.ones((3, 3), int))
    found = np.where(random.random(truth.shape) < 0.25, random.integers(0, 6, truth.shape), truth)
    matches = scoring.region_matches(found, truth)
    assert len(set(matches[:, 0])) == len(set(matches[:, 1])) == len(matches)
    by_hand = [
        (a, b)
        for a in range(1, 6)
        for b in range(1, 6)
        if 2 * np.sum((found == a) & (truth == b)) > np.sum((found == a) | (truth == b))
    ]
    assert sorted(map(tuple, matches.tolist())) == by_hand


def test_counts_without_objects_or_regions():
    assert scoring.count_regions(NOTHING, NOTHING) == (0, 0, 0)
    assert scoring.count_regions(TRUTH, NOTHING) == (0, 3, 0)
    assert scoring.count_regions(NOTHING, TRUTH) == (0, 0, 3)
    assert scoring.count_regions(np.zeros((0, 0), int), np.zeros((0, 0), int)) == (0, 0, 0)


def test_f1_of_an_image_without_objects():
    assert scoring.f1(0, 0, 0) == 1
    assert scoring.f1(0, 1, 0) == 0
    assert scoring.f1(0, 0, 1) == 0
    assert scoring.f1(2, 1, 1) == pytest.approx(2 / 3)


def test_centers_are_matched_one_to_one():
    truth = np.array([[10.0, 10, 8], [20, 10, 8], [40, 40, 1]])  # the last is too small to count
    centers = np.array([[11.0, 10], [12, 10], [40, 41]])
    assert scoring.count(centers, truth) == (1, 1, 1)
    assert scoring.count(np.zeros((0, 2)), truth) == (0, 0, 2)
    assert scoring.count(centers, np.zeros((0, 3))) == (0, 3, 0)
