"""The names of the C++ tests: a subject and a claim, and one form for each kind of comparison."""

import pathlib
import re

import pytest

TESTS = pathlib.Path(__file__).resolve().parents[1]
TEST = re.compile(r"^(?:TYPED_)?TEST(?:_F|_P)?\(\s*(\w+),\s*(\w+)\s*\)", re.MULTILINE)
MAX_CLAIM = 50


@pytest.fixture(scope="module")
def names():
    """(source, suite, claim) of every test."""
    found = [
        (path.relative_to(TESTS).as_posix(), suite, claim)
        for path in sorted(TESTS.rglob("*_test.cpp"))
        for suite, claim in TEST.findall(path.read_text(encoding="utf-8"))
    ]
    assert len(found) > 1000
    return found


def test_claims_are_short(names):
    assert [name for name in names if len(name[2]) > MAX_CLAIM] == []


def test_suites_of_comparisons_have_one_form(names):
    """tests/CMakeLists.txt labels the comparisons with the reference implementations by it."""
    comparing = re.compile("Match(es)?(The)?Reference")
    form = re.compile("[A-Z]\\w*MatchesReference(AtEveryWidth)?")
    assert [
        name
        for name in names
        if (comparing.search(name[1]) and not form.fullmatch(name[1]))
        or re.search("Match(es)?Reference", name[2])
    ] == []
