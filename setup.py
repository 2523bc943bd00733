"""What scikit-build takes from a call alone: the version, the packages, the options of CMake."""

import pathlib
import re

from skbuild import setup

LISTS = pathlib.Path(__file__).resolve().parent / "CMakeLists.txt"
OFF = ("APPS", "JAVA", "TESTS", "BENCHMARKS")

setup(
    # CMakeLists.txt is the one place that states it.
    version=re.search(r"^project\(orva VERSION (\S+)", LISTS.read_text("utf-8"), re.MULTILINE)[1],
    packages=["orva", "orva.batch"],
    package_dir={"": "python"},
    package_data={"orva": ["py.typed", "*.pyi"]},
    cmake_args=["-DORVA_BUILD_PYTHON=ON", *(f"-DORVA_BUILD_{part}=OFF" for part in OFF)],
    zip_safe=False,
)
