"""The package as a whole: names, texts, types and version."""

import dataclasses
import inspect
import json
import pathlib
import re
import subprocess
import sys

import numpy as np
import pytest

import orva

PACKAGE = pathlib.Path(orva.__file__).parent
ROOT = pathlib.Path(__file__).resolve().parents[2]
# An installed package is found by itself.
IS_INSTALLED = PACKAGE.parent.name in ("site-packages", "dist-packages")

GOOD = """
from typing import Dict
import numpy as np
import numpy.typing as npt
import orva

image = np.zeros((20, 30), np.uint8)
objects: npt.NDArray[np.void] = orva.find_objects(image, radius=(2, 8.5), polarity="dark")
estimate: orva.SettingsEstimate = orva.estimate_settings(image)
radius: float = estimate.radius if estimate.runner_up is None else estimate.runner_up.radius
wide, regions = orva.segment(image, objects=objects, measure=image, max_area=900)
kept: npt.NDArray[np.int32] = wide
regions = orva.measure_labels(kept, image)
centers: npt.NDArray[np.void] = orva.find_centers(image, max_radius=5, polarity="dark")
field: npt.NDArray[np.float32] = orva.vote_field(image)
nuclei = orva.find_objects(orva.read("image.tif", channel="DAPI", z="max"), radius=4)
nuclei = orva.find_objects(np.zeros((20, 30, 3)), channel_axis=-1)
size: float = orva.read("image.tif").pixel_size["x"]
flat: npt.NDArray[np.float32] = orva.gaussian(image, sigma=(1, 2.5), orders=(0, 1))
level: float = orva.compute_threshold(image)
mask: npt.NDArray[np.bool_] = orva.erode(orva.threshold(image, level))
closed: npt.NDArray[np.uint8] = orva.fill_holes(image)
labels, n = orva.label(mask)
grown: npt.NDArray[np.int16] = orva.propagate(orva.erode(labels), max_distance=3)
count: int = n + 1
table: Dict[str, npt.NDArray[np.int32]] = orva.measure(grown, image)
kept = orva.label(mask, background=0)[0]
table = orva.measure(kept, background=0)
orva.write("image.tif", orva.smooth(orva.read("image.tif", frame=0), sigma=1))
orva.write("mask.tif", orva.features(image, sigma=1, kind="hessian_maximum"))
"""

# One mistake a line.
BAD = """
import numpy as np
import orva
orva.smooth([[0.0]], sigma=1)
orva.find_centers(np.zeros((4, 5), np.uint8), 20)
orva.find_objects(np.zeros((4, 5), np.uint8), radius="20")
orva.erode(np.zeros((4, 5), np.float32))
orva.label(np.zeros((4, 5), bool), connectivity="8")
orva.label(np.zeros((4, 5), bool), background=1)
orva.measure(orva.label(np.zeros((4, 5), bool), background=0)[0])
orva.nothing()
"""


@pytest.fixture(scope="module")
def cache(tmp_path_factory):
    """Where mypy keeps what it knows about NumPy and Dask, which takes long to find out."""
    return tmp_path_factory.mktemp("cache")


def report(cache, tmp_path, *arguments):
    """The lines of mypy's report, in strict mode."""
    options = ["--strict", "--cache-dir", str(cache)]
    result = subprocess.run(
        [sys.executable, "-m", "mypy", *options, *arguments],
        env={} if IS_INSTALLED else {"MYPYPATH": str(PACKAGE.parent)},
        cwd=tmp_path,
        capture_output=True,
        text=True,
    )
    assert result.stderr == ""
    return result.stdout.splitlines()


def report_on(program, cache, tmp_path):
    (tmp_path / "program.py").write_text(program)
    return report(cache, tmp_path, "program.py")


def test_a_typed_program_passes_the_strict_checker(cache, tmp_path):
    assert report_on(GOOD, cache, tmp_path) == ["Success: no issues found in 1 source file"]


def test_the_checker_finds_every_mistake(cache, tmp_path):
    found = {
        int(match[1])
        for match in (re.match(r"\S+?:(\d+): error", line) for line in report_on(BAD, cache, tmp_path))
        if match
    }
    assert found == {4, 5, 6, 7, 8, 9, 10, 11}


def test_the_package_itself_passes_the_strict_checker(cache, tmp_path):
    (line,) = report(cache, tmp_path, "-p", "orva")
    assert re.fullmatch(r"Success: no issues found in \d+ source files", line)


def test_the_stubs_name_what_the_compiled_module_has():
    stubs = (PACKAGE / "_orva.pyi").read_text()
    stated = set(re.findall(r"^(?:def |class )?(\w+)(?=[(:])", stubs, re.MULTILINE))
    present = {name for name in vars(orva._orva) if name not in vars(type(sys))}
    present -= {"__file__", "__doc__", "__loader__", "__name__", "__package__", "__spec__"}
    assert stated == present


def test_the_package_is_marked_as_typed():
    assert (PACKAGE / "py.typed").is_file()


def test_every_function_says_what_it_takes_gives_and_raises():
    functions = {name: f for name, f in vars(orva).items() if inspect.isfunction(f)}
    classes = {name: c for name, c in vars(orva).items() if inspect.isclass(c)}
    assert set(orva.__all__) == {"__version__", *functions, *classes}
    for name, c in classes.items():
        fields = [f.name for f in dataclasses.fields(c)] if dataclasses.is_dataclass(c) else c.__annotations__
        for field in fields:
            assert re.search(rf"\b{field}\b", inspect.getdoc(c)), (name, field)
    for name, function in functions.items():
        text = inspect.getdoc(function)
        for heading in ("Parameters", "Returns", "Raises"):
            if heading in ("Parameters", "Raises") and name == "vote_field":
                assert "find_centers()" in text
            elif not (heading == "Returns" and name == "write"):
                assert f"\n{heading}\n{'-' * len(heading)}\n" in text, (name, heading)
        if name != "vote_field":
            for parameter in inspect.signature(function).parameters:
                assert re.search(rf"^{parameter}$", text, re.MULTILINE), (name, parameter)


def test_the_package_says_what_ends_the_process():
    assert "memory" in orva.__doc__ and "ends the process" in orva.__doc__


def test_the_example_of_the_readme_runs(sample, tmp_path, monkeypatch, capsys):
    monkeypatch.chdir(tmp_path)
    orva.write("nuclei.tif", orva.read(sample))
    example = re.search(r"```python\n(.*?)```", (ROOT / "README.md").read_text(), re.DOTALL)[1]
    names = {}
    exec(example, names)
    objects = orva.find_objects(orva.read(sample))
    printed = [tuple(map(float, line.split())) for line in capsys.readouterr().out.splitlines()]
    assert len(printed) == len(objects) > 0
    np.testing.assert_allclose(printed, [row[:4] for row in objects.tolist()], rtol=1e-6)
    centers = orva.find_centers(orva.read(sample), max_radius=36)
    np.testing.assert_array_equal(names["centers"], centers)
    assert len(names["table"]["mean"]) == names["n"] > 0


def test_the_version_is_that_of_the_project():
    project = (ROOT / "CMakeLists.txt").read_text()
    assert orva.__version__ == re.search(r"project\(orva VERSION (\S+)", project)[1]


def test_the_defaults_of_voting_are_those_of_the_command(command, tmp_path):
    image = tmp_path / "image.pgm"
    image.write_bytes(b"P5\n2 1\n255\n\0\xff")
    settings = json.loads(command("vote", "--format", "json", image))["settings"]
    parameters = inspect.signature(orva.find_centers).parameters
    defaults = {name: p.default for name, p in parameters.items() if p.kind is p.KEYWORD_ONLY}
    # Computed from the others.
    computed = {"cone_width", "sigma", "gradient"}
    assert all(defaults[name] is None for name in computed)
    for name in settings.keys() - computed:
        assert defaults[name] == settings[name], name
    assert defaults.keys() == settings.keys() | {
        "threshold",
        "frame",
        "channel_axis",
        "threads",
        "progress",
    }
