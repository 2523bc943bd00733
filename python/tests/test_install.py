"""The package as pip installs it from a checkout."""

import os
import pathlib
import shutil
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parents[2]


def test_pip_installs_the_whole_package_from_a_checkout(tmp_path):
    checkout = tmp_path / "checkout"
    others = shutil.ignore_patterns(".git", "build", "_skbuild", "*.egg-info", "__pycache__")
    shutil.copytree(ROOT, checkout, ignore=others)

    # Outside the build tree; unoptimised code is made sooner.
    environment = {k: v for k, v in os.environ.items() if not k.startswith(("PYTHON", "PIP_"))}
    environment["SKBUILD_CONFIGURE_OPTIONS"] = "-DCMAKE_CXX_FLAGS_RELEASE=-O0"
    place = tmp_path / "place"

    def run(*line):
        done = subprocess.run(
            line, cwd=tmp_path, env=environment, capture_output=True, text=True, timeout=400
        )
        assert done.returncode == 0, done.stdout + done.stderr
        return done.stdout

    run(sys.executable, "-m", "venv", "--system-site-packages", str(place))
    run(str(place / "bin" / "pip"), "install", "--no-index", "--no-build-isolation", str(checkout))

    python = str(place / "bin" / "python")
    lines = run(
        python,
        "-c",
        "import numpy, orva, orva.batch, os\n"
        "print(orva.__file__)\n"
        "print(*sorted(os.listdir(os.path.dirname(orva.__file__))))\n"
        "print(orva.chamfer(numpy.full((5, 5), 255, numpy.uint8))[2, 2])\n",
    ).splitlines()
    assert pathlib.Path(lines[0]).is_relative_to(place)
    assert {"py.typed", "_orva.pyi", "batch"} <= set(lines[1].split())
    assert float(lines[2]) > 0
    assert "find the centres" in run(python, "-m", "orva.batch", "--help").lower()
