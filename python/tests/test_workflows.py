"""The code of docs/batch.md."""

import os
import pathlib
import re
import shutil
import subprocess
import sys

import pytest

import orva

ROOT = pathlib.Path(__file__).resolve().parents[2]
SAMPLES = sorted((ROOT / "data" / "images").glob("*.pgm"))


def block(language, word):
    """The block of code in the document that has the word."""
    text = (ROOT / "docs" / "batch.md").read_text(encoding="utf-8")
    (found,) = [b for b in re.findall(rf"```{language}\n(.*?)```", text, re.DOTALL) if word in b]
    return found


@pytest.fixture
def place(tmp_path, monkeypatch):
    """A directory with the sample images in plate/, and the command on the path."""
    (tmp_path / "plate").mkdir()
    for sample in SAMPLES:
        shutil.copy(sample, tmp_path / "plate")
    program = pathlib.Path(os.environ["ORVA_COMMAND"])
    (tmp_path / "bin").mkdir()
    (tmp_path / "bin" / "orva").symlink_to(program)
    monkeypatch.setenv("PATH", f"{tmp_path / 'bin'}:{os.environ['PATH']}")
    monkeypatch.setenv("HOME", str(tmp_path))
    monkeypatch.chdir(tmp_path)
    return tmp_path


def expected(command):
    return {s.stem: command("find", "--quiet", s) for s in SAMPLES}


def results(place):
    return {p.stem: p.read_text(encoding="utf-8") for p in (place / "results").iterdir()}


def test_the_slurm_array_writes_each_table_and_the_same_when_repeated(place, command):
    assert len(SAMPLES) >= 4
    (place / "images.txt").write_text("".join(f"plate/{s.name}\n" for s in SAMPLES), encoding="utf-8")
    script = block("sh", "#SBATCH")
    for task in [*range(1, len(SAMPLES) + 1), 1]:
        environment = {**os.environ, "SLURM_ARRAY_TASK_ID": str(task)}
        subprocess.run(["bash", "-e", "-c", script], check=True, env=environment, timeout=120)
    assert results(place) == expected(command)


def test_the_snakemake_rule_writes_each_table_once(place, command):
    (place / "Snakefile").write_text(block("snakemake", "rule objects"), encoding="utf-8")
    line = ["snakemake", "--cores", "1", "--nocolor"]
    subprocess.run(line, check=True, capture_output=True, timeout=120)
    assert results(place) == expected(command)
    again = subprocess.run(line, check=True, capture_output=True, text=True, timeout=120)
    assert "Nothing to be done" in again.stderr + again.stdout


def batch_tables(place):
    return {s.stem: (place / "results" / f"{s.stem}.csv").read_text(encoding="utf-8") for s in SAMPLES}


@pytest.fixture
def plate_of_tiffs(place):
    for sample in SAMPLES:
        orva.write(place / "plate" / f"{sample.stem}.tif", orva.read(sample))
    (place / "bin" / "python").symlink_to(sys.executable)
    return place


def test_the_batch(plate_of_tiffs, command):
    subprocess.run(["bash", "-e", "-c", block("sh", "--out results --workers")], check=True, timeout=300)
    assert batch_tables(plate_of_tiffs) == expected(command)


def test_the_batch_of_regions(plate_of_tiffs, command):
    subprocess.run(["bash", "-e", "-c", block("sh", "--segment")], check=True, timeout=300)
    for sample in SAMPLES:
        table = (plate_of_tiffs / "regions" / f"{sample.stem}.csv").read_text(encoding="utf-8")
        assert table == command("segment", "--quiet", "--exclude-border", sample)


# A queue of one job at a time, on this machine.
QUEUE = """
from distributed import LocalCluster

class SLURMCluster(LocalCluster):
    def __init__(self, *, cores, processes, memory, walltime):
        assert walltime.count(":") == 2
        super().__init__(
            n_workers=0, threads_per_worker=cores // processes, memory_limit=memory, dashboard_address=None
        )

    def scale(self, n=0, *, jobs=0):
        super().scale(n + min(jobs, 1))
"""


def test_the_cluster_of_a_queue(plate_of_tiffs, command, monkeypatch):
    (plate_of_tiffs / "modules").mkdir()
    (plate_of_tiffs / "modules" / "dask_jobqueue.py").write_text(QUEUE, encoding="utf-8")
    paths = f"{plate_of_tiffs / 'modules'}:{os.environ['PYTHONPATH']}"
    line = [sys.executable, "-u", "-c", block("python", "SLURMCluster")]
    with subprocess.Popen(
        line,
        env={**os.environ, "PYTHONPATH": paths},
        stdin=subprocess.PIPE,
        stdout=subprocess.PIPE,
        text=True,
    ) as running:
        address = running.stdout.readline().strip()
        assert address.startswith("tcp://127.0.0.1:")
        call = block("sh", "--out results --workers").replace("--workers 4", f"--scheduler {address}")
        subprocess.run(["bash", "-e", "-c", call], check=True, timeout=300)
        running.communicate("\n", timeout=120)
    assert running.returncode == 0
    assert batch_tables(plate_of_tiffs) == expected(command)
