"""What the documents say about building and installing, done as they say in a copy of the sources."""

import os
import pathlib
import re
import shutil
import subprocess

import pytest

import orva

ROOT = pathlib.Path(__file__).resolve().parents[2]
SAMPLE = ROOT / "data" / "images" / "dsb_large_a.pgm"

# Installs nothing into the system: packages must be there, the rest goes to the folder of DESTDIR.
SUDO = """#!/bin/bash
case $1 in
  apt)
    for name in "${@:3}"; do
      [ "$(dpkg-query -W -f='${db:Status-Status}' "$name")" = installed ] || exit 1
    done ;;
  cmake) DESTDIR=$ORVA_DESTDIR "$@" ;;
  ldconfig) ;;
  *) exit 1 ;;
esac
"""


def blocks(document, language):
    """The blocks of code in a document that are in this language."""
    text = (ROOT / document).read_text(encoding="utf-8")
    return re.findall(rf"^```{language}\n(.*?)^```$", text, re.DOTALL | re.MULTILINE)


def block(document, language, word):
    """The one among them that has the word."""
    (found,) = [b for b in blocks(document, language) if word in b]
    return found


def program(path, text):
    path.write_text(text, encoding="utf-8")
    path.chmod(0o755)


class Newcomer:
    """Somebody with a copy of the sources and a home of their own."""

    def __init__(self, place):
        self.sources = place / "orva"
        others = shutil.ignore_patterns(".git", "build", "_skbuild", "*.egg-info", "__pycache__")
        shutil.copytree(ROOT, self.sources, ignore=others)
        (place / "bin").mkdir()
        program(place / "bin" / "sudo", SUDO)
        # Code that is made sooner, for it hardly runs.
        program(place / "bin" / "unoptimised", '#!/bin/sh\nexec "$@" -O0\n')
        keep = {k: v for k, v in os.environ.items() if not k.startswith(("PYTHON", "PIP_"))}
        self.root = place / "root"
        self.environment = {
            **keep,
            "HOME": str(place),
            "PATH": f"{place / 'bin'}:/usr/local/bin:/usr/bin:/bin",
            "CMAKE_CXX_COMPILER_LAUNCHER": str(place / "bin" / "unoptimised"),
            "ORVA_DESTDIR": str(self.root),
            "PIP_NO_INDEX": "1",
        }

    def run(self, code, folder=None):
        done = subprocess.run(
            ["bash", "-e", "-c", code],
            cwd=folder or self.sources,
            env=self.environment,
            capture_output=True,
            text=True,
            timeout=800,
        )
        assert done.returncode == 0, done.stdout + done.stderr
        return done.stdout


@pytest.fixture(scope="module")
def newcomer(tmp_path_factory):
    return Newcomer(tmp_path_factory.mktemp("newcomer"))


@pytest.fixture(scope="module")
def prefix(newcomer):
    """Where the library and the command are, after the README's own lines."""
    newcomer.run(block("README.md", "sh", "sudo cmake --install"))
    return newcomer.root / "usr" / "local"


def test_the_installed_command_finds_the_nuclei(newcomer, prefix, command):
    line = f"{prefix}/bin/orva vote --quiet --max-radius 36 {SAMPLE}"
    expected = command("vote", "--quiet", "--max-radius", 36, SAMPLE)
    assert newcomer.run(line) == expected
    assert expected.count("\n") > 20


def test_a_project_finds_the_installed_library(newcomer, prefix, tmp_path):
    (tmp_path / "main.cpp").write_text(blocks("README.md", "cpp")[0], encoding="utf-8")
    head = "cmake_minimum_required(VERSION 3.25)\nproject(p CXX)\nadd_executable(my_program main.cpp)\n"
    lists = head + block("README.md", "cmake", "find_package")
    (tmp_path / "CMakeLists.txt").write_text(lists, encoding="utf-8")
    newcomer.run(f"CMAKE_PREFIX_PATH={prefix} cmake -B b && cmake --build b", tmp_path)
    found = newcomer.run(f"LD_LIBRARY_PATH={prefix}/lib b/my_program {SAMPLE}", tmp_path)
    assert len(re.findall(r"^[\d.]+ [\d.]+ [\d.]+ [\d.]+$", found, re.MULTILINE)) > 10
    line = f"LD_LIBRARY_PATH={prefix}/lib b/my_program 2>&1 || [ $? = 2 ]"
    assert newcomer.run(line, tmp_path) == "usage: b/my_program IMAGE.pgm\n"


def test_the_jar_serves_java_and_imagej(newcomer, prefix, tmp_path):
    newcomer.run(block("docs/java.md", "sh", "-DORVA_BUILD_JAVA=ON"))
    jar = newcomer.sources / "build" / "release" / "java" / "orva_imagej.jar"
    (tmp_path / "plugins").mkdir()
    for folder in (tmp_path, tmp_path / "plugins"):
        shutil.copy(jar, folder)

    source = block("docs/java.md", "java", "class FindNuclei")
    (tmp_path / "FindNuclei.java").write_text(source, encoding="utf-8")
    newcomer.run(f"{prefix}/bin/orva convert {SAMPLE} nuclei.png", tmp_path)
    found = newcomer.run(block("docs/java.md", "sh", "java -cp"), tmp_path)
    assert len(found.splitlines()) > 20

    macro = block("docs/java.md", "javascript", "Find Objects")
    save = f'saveAs("Results", "{tmp_path}/rows.csv");\n'
    (tmp_path / "macro.ijm").write_text(f'open("{SAMPLE}");\n{macro}{save}', encoding="utf-8")
    line = block("docs/java.md", "sh", "xvfb-run")
    newcomer.run(line.replace("FOLDER", str(tmp_path)), tmp_path)
    assert len((tmp_path / "rows.csv").read_text(encoding="utf-8").splitlines()) > 20


def test_pip_installs_the_whole_package(newcomer):
    newcomer.run(block("README.md", "sh", "pip install"))
    python = f"{newcomer.environment['HOME']}/orva/bin/python"
    lines = newcomer.run(
        f"{python} -c '\n"
        "import numpy, orva, orva.batch, os\n"
        "print(orva.__file__)\n"
        "print(*sorted(os.listdir(os.path.dirname(orva.__file__))))\n"
        "print(orva.chamfer(numpy.full((5, 5), 255, numpy.uint8))[2, 2])\n"
        "'",
        "/",
    ).splitlines()
    assert lines[0].startswith(newcomer.environment["HOME"] + "/orva/lib/")
    assert {"py.typed", "_orva.pyi", "batch"} <= set(lines[1].split())
    assert float(lines[2]) > 0
    assert "find round objects" in newcomer.run(f"{python} -m orva.batch --help", "/").lower()


def test_the_line_for_the_build_tree(tmp_path):
    built = pathlib.Path(orva.__file__).parents[1]
    (tmp_path / "build" / "release").mkdir(parents=True)
    (tmp_path / "build" / "release" / "python").symlink_to(built)
    line = block("README.md", "sh", "PYTHONPATH")
    code = f"{line}\npython3 -B -c 'import orva; print(orva.__file__)'"
    environment = {k: v for k, v in os.environ.items() if k != "PYTHONPATH"}
    done = subprocess.run(
        ["bash", "-c", code], cwd=tmp_path, env=environment, check=True, capture_output=True, text=True
    )
    assert done.stdout == f"{tmp_path}/build/release/python/orva/__init__.py\n"


def test_the_demo_makes_a_table_and_a_picture(newcomer):
    (code,) = [b for b in blocks("README.md", "sh") if b.startswith("scripts/demo")]
    assert "objects in data/images/dsb_large_a.pgm" in newcomer.run(code.splitlines()[0])
    for name in ("nuclei.csv", "nuclei.png"):
        assert (newcomer.sources / "build" / "demo" / name).stat().st_size > 100
