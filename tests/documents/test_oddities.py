"""The table of docs/oddities.md against the sources and the tests."""

import collections
import pathlib
import re

import pytest

ROOT = pathlib.Path(__file__).resolve().parents[2]
WORD = re.compile("intended|deliberate", re.IGNORECASE)
TEST = re.compile(r"^(?:TYPED_)?TEST(?:_F|_P)?\(\s*(\w+),\s*(\w+)\s*\)", re.MULTILINE)


def rows():
    """(what, files, tests) of every row."""
    text = (ROOT / "docs" / "oddities.md").read_text(encoding="utf-8")
    for line in text.splitlines():
        cells = [cell.strip() for cell in line.strip("|").split("|")]
        if line.startswith("| ") and len(cells) == 3 and cells[1] not in ("", "where"):
            yield cells[0], cells[1].split(", "), cells[2].split(", ")


def place(name):
    return ROOT / name if name.startswith("java/") else ROOT / "orva" / name


@pytest.fixture(scope="module")
def existing():
    """Suite.Test of every test in C++."""
    sources = [*(ROOT / "tests").rglob("*.cpp")]
    return {
        f"{suite}.{name}"
        for source in sources
        for suite, name in TEST.findall(source.read_text(encoding="utf-8"))
    }


def test_every_row_names_files_and_tests_that_exist(existing):
    assert len(list(rows())) > 60
    for what, files, tests in rows():
        assert [f for f in files if not place(f).is_file()] == [], what
        assert tests and [t for t in tests if t not in existing] == [], what


def test_every_comment_that_says_intended_has_a_row():
    """Or one row, where the same line stands twice in a source."""
    listed = collections.Counter(place(f) for _, files, _ in rows() for f in files)
    sources = [p for folder in ("orva", "apps", "java") for p in (ROOT / folder).rglob("*.*")]
    texts = [p for p in sources if p.suffix in (".h", ".cpp", ".java")]
    assert len(texts) > 100
    for path in texts:
        lines = path.read_text(encoding="utf-8").splitlines()
        comments = {line.strip() for line in lines if WORD.search(line)}
        assert listed[path] >= len(comments), (path, comments)


def test_every_test_that_says_intended_is_in_the_table(existing):
    listed = {t for _, _, tests in rows() for t in tests}
    saying = {t for t in existing if WORD.search(t)}
    assert len(saying) > 60
    assert sorted(saying - listed) == []
