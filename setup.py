"""Installs the Python package: pip install --no-build-isolation ."""

import pathlib
import re

from skbuild import setup

ROOT = pathlib.Path(__file__).resolve().parent
# The one place that states the version.
PROJECT = re.search(
    r"^project\(orva VERSION (\S+) DESCRIPTION \"([^\"]+)\"",
    (ROOT / "CMakeLists.txt").read_text(encoding="utf-8"),
    re.MULTILINE,
)

setup(
    name="orva",
    version=PROJECT[1],
    description=PROJECT[2],
    packages=["orva", "orva.batch"],
    package_dir={"": "python"},
    package_data={"orva": ["py.typed", "*.pyi"]},
    python_requires=">=3.11",
    install_requires=["numpy>=1.20"],
    extras_require={"batch": ["dask", "distributed", "matplotlib"]},
    cmake_args=[
        "-DORVA_BUILD_PYTHON=ON",
        "-DORVA_BUILD_APPS=OFF",
        "-DORVA_BUILD_JAVA=OFF",
        "-DORVA_BUILD_TESTS=OFF",
        "-DORVA_BUILD_BENCHMARKS=OFF",
    ],
    zip_safe=False,
)
