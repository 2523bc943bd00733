"""The code of the guides, run as it stands, and the pictures that belong to them.

A block ```sh or ```python runs in a directory with the files that the guides name. A block ```text behind
it is what it prints, on either stream; a line ... stands for any lines.
"""

import contextlib
import io
import os
import pathlib
import re
import subprocess
import sys

import numpy as np
import pytest

import orva

ROOT = pathlib.Path(__file__).resolve().parents[2]
BLOCK = re.compile(r"^```(\w+)\n(.*?)^```$", re.DOTALL | re.MULTILINE)
PICTURES = [
    "parameters_factor.png",
    "parameters_sigma.png",
    "parameters_threshold.png",
    "voting_centers.png",
    "voting_cone.png",
    "voting_gradient.png",
    "voting_passes.png",
]


def text_of(document):
    return (ROOT / document).read_text(encoding="utf-8")


def steps(text):
    """(language, code, what it prints or None) of each block that runs."""
    blocks = BLOCK.findall(text)
    for (language, code), after in zip(blocks, [*blocks[1:], ("", "")]):
        if language in ("sh", "python"):
            yield language, code, after[1] if after[0] == "text" else None


def matches(shown, printed):
    """Whether the lines are the same, but for those that ... stands for."""
    pattern = "".join(
        r"(?:.*\n)*?" if line == "...\n" else re.escape(line) for line in shown.splitlines(True)
    )
    return re.fullmatch(pattern, printed) is not None


def run_sh(code):
    line = ["bash", "-e", "-o", "pipefail", "-c", code]
    done = subprocess.run(
        line, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, timeout=120
    )
    assert done.returncode == 0, f"{code}\n{done.stdout}"
    return done.stdout


def run_python(code, names):
    printed = io.StringIO()
    with contextlib.redirect_stdout(printed):
        exec(compile(code, "block", "exec"), names)
    return printed.getvalue()


def run(text):
    """Runs the blocks of a text one after the other and returns their number by language."""
    names = {"__name__": "__main__"}
    counts = {"sh": 0, "python": 0, "text": 0}
    for language, code, shown in steps(text):
        printed = run_sh(code) if language == "sh" else run_python(code, names)
        counts[language] += 1
        if shown is not None:
            counts["text"] += 1
            assert matches(shown, printed), f"{code}\nprints\n{printed}\nand not\n{shown}"
    return counts


@pytest.fixture
def place(tmp_path, monkeypatch):
    """A directory with the sample images in data/, and the command on the path."""
    (tmp_path / "data").symlink_to(ROOT / "data")
    (tmp_path / "bin").mkdir()
    (tmp_path / "bin" / "orva").symlink_to(os.environ["ORVA_COMMAND"])
    monkeypatch.setenv("PATH", f"{tmp_path / 'bin'}:{os.environ['PATH']}")
    monkeypatch.setenv("LC_ALL", "C")
    monkeypatch.chdir(tmp_path)
    return tmp_path


def test_what_a_document_shows_is_compared_line_by_line():
    assert matches("a\n...\nd\n", "a\nb\nc\nd\n")
    assert matches("a\n...\n", "a\n")
    assert not matches("a\n...\nd\n", "a\nb\nc\n")
    assert not matches("a\n", "a\nb\n")
    assert not matches("a.c\n", "abc\n")


def test_the_command_guide(place):
    assert run(text_of("docs/command.md")) == {"sh": 15, "python": 0, "text": 12}
    results = ("nuclei.png", "labels.tif", "outlines.png", "segmented/summary.csv", "regions.csv")
    for result in (*results, "labels.iht", "edges.png", "results/summary.csv"):
        assert (place / result).stat().st_size > 50
    assert not (place / "edges.pgm").exists()


def test_the_formats_guide(place):
    assert run(text_of("docs/formats.md")) == {"sh": 1, "python": 3, "text": 3}


def test_the_detect_guide(place):
    assert run(text_of("docs/detect.md")) == {"sh": 1, "python": 0, "text": 1}
    assert (place / "nuclei.png").stat().st_size > 50


def test_the_segment_guide(place):
    assert run(text_of("docs/segment.md")) == {"sh": 1, "python": 1, "text": 1}
    assert (place / "outlines.png").stat().st_size > 50


def test_the_voting_guide(place):
    assert run(text_of("docs/voting.md")) == {"sh": 1, "python": 1, "text": 1}


def test_the_commands_of_the_readme(place):
    sample = orva.read(ROOT / "data" / "images" / "dsb_large_a.pgm")
    orva.write("nuclei.tif", np.asarray(sample))
    (section,) = re.findall(r"^## Use the command$(.*?)^## ", text_of("README.md"), re.S | re.M)
    assert run(section)["sh"] >= 1
    for result in ("nuclei.csv", "nuclei.png", "regions.csv"):
        assert (place / result).stat().st_size > 50


def test_the_lines_of_the_contributors_are_what_the_tests_do():
    """Who reads this has run them."""
    script = text_of("scripts/test")
    ((language, code),) = BLOCK.findall(text_of("CONTRIBUTING.md"))
    assert (language, len(code.splitlines())) == ("sh", 3)
    for line in code.splitlines():
        of_any = line.replace("release", '"$what"').replace("cmake --build", "build")
        assert re.search(f"^{re.escape(of_any)}", script, re.MULTILINE), line


def test_the_macro_of_the_readme_is_that_of_its_guide():
    """Which a test of the jar runs."""
    macros = [block for block in BLOCK.findall(text_of("README.md")) if block[0] == "javascript"]
    assert len(macros) == 1
    assert macros[0] in BLOCK.findall(text_of("docs/java.md"))


def test_the_pictures_and_tables_are_those_of_the_script(tmp_path):
    line = [sys.executable, str(ROOT / "scripts" / "guide_pictures"), str(tmp_path)]
    done = subprocess.run(line, capture_output=True, text=True, timeout=500)
    assert done.returncode == 0, done.stderr
    assert sorted(p.name for p in tmp_path.glob("*.png")) == PICTURES
    for name in PICTURES:
        assert 5_000 < (tmp_path / name).stat().st_size < 200_000
        assert (ROOT / "docs" / "images" / name).stat().st_size < 200_000
    assert (tmp_path / "parameters.md").read_text("utf-8") == text_of("docs/parameters.md")
    guides = text_of("docs/voting.md") + text_of("docs/parameters.md")
    assert sorted(re.findall(r"!\[.*?\]\(images/(.*?)\)", guides)) == PICTURES


DOCUMENTS = ["README.md", "CONTRIBUTING.md", *(f"docs/{p.name}" for p in (ROOT / "docs").glob("*.md"))]


@pytest.mark.parametrize("document", sorted(DOCUMENTS))
def test_relative_links_lead_to_files(document):
    folder = (ROOT / document).parent
    links = re.findall(r"\]\((?!https?:)([^)#]*)(?:#[^)]*)?\)", text_of(document))
    for link in filter(None, links):
        assert (folder / link).exists(), link
    # Doxygen makes no link of a text that goes over a line break.
    prose = BLOCK.sub("", text_of(document))
    assert re.findall(r"\[[^][\n]*\n[^][]*\]\(", prose) == []


# Who runs the blocks of code of each document, and how many there are of each language.
TESTED = {
    "CONTRIBUTING.md": ("test_guides.py", {"sh": 1}),
    "README.md": ("test_install.py", {"sh": 5, "cpp": 1, "cmake": 1, "javascript": 1, "python": 1}),
    "docs/batch.md": ("test_workflows.py", {"sh": 3, "python": 1, "snakemake": 1}),
    "docs/command.md": ("test_guides.py", {"sh": 15}),
    "docs/detect.md": ("test_guides.py", {"sh": 1}),
    "docs/formats.md": ("test_guides.py", {"sh": 1, "python": 3}),
    "docs/java.md": ("test_install.py", {"sh": 3, "javascript": 3, "java": 4}),
    "docs/segment.md": ("test_guides.py", {"sh": 1, "python": 1}),
    "docs/tutorial.md": ("test_tutorial.py", {"python": 15}),
    "docs/voting.md": ("test_guides.py", {"sh": 1, "python": 1, "cpp": 1}),
    "docs/web.md": ("../../web/tests/package.test.mjs", {"js": 1}),
}


@pytest.mark.parametrize("document", sorted(DOCUMENTS))
def test_every_block_of_code_has_a_test(document):
    languages = [language for language, _ in BLOCK.findall(text_of(document)) if language != "text"]
    counts = {language: languages.count(language) for language in languages}
    test, tested = TESTED.get(document, ("", {}))
    assert counts == tested
    if test:
        assert pathlib.Path(document).name in (ROOT / "python" / "tests" / test).read_text("utf-8")
    # A block without a language would be missed.
    assert text_of(document).count("\n```") == 2 * len(BLOCK.findall(text_of(document)))
