"""python -m tavell.sweep: plans, runs, states and tables at a prompt."""

from __future__ import annotations

import importlib.util
import json
import os
import pathlib
import shutil
import subprocess
import sys
from typing import Any, List

import pytest

from tavell import studies, sweep

EXAMPLES = pathlib.Path(__file__).resolve().parents[3] / "examples" / "networks"


@pytest.fixture
def folder(tmp_path: pathlib.Path, monkeypatch: Any) -> pathlib.Path:
    """A working folder with a network in it."""
    shutil.copy(EXAMPLES / "hanoi.tavell.json", tmp_path / "town.tavell.json")
    monkeypatch.chdir(tmp_path)
    return tmp_path


def said(capsys: Any, arguments: List[str], expected: int) -> str:
    """What the command prints; its exit status is the expected one, and an error is one line."""
    status = sweep.main(arguments)
    output, errors = capsys.readouterr()
    assert status == expected, errors
    if status == 2:
        assert errors.startswith("tavell sweep: ") and errors.count("\n") == 1
        return str(errors)
    return str(output)


def test_a_study_from_plan_to_table(folder: pathlib.Path, capsys: Any) -> None:
    text = said(capsys, ["plan", "town.tavell.json", "--scenarios", "40", "--seed", "5", "-o", "p.json"], 0)
    assert text == "p.json is written; next: tavell sweep run p.json --out p\n"
    assert said(capsys, ["plan", "p.json"], 0).startswith(
        "40 scenarios of a network of 32 nodes and 34 elements\n"
    )
    assert said(capsys, ["run", "p.json", "--out", "p", "--shard", "2/2"], 0).startswith(
        "20 scenarios solved"
    )
    text = said(capsys, ["status", "p.json", "--out", "p"], 1)
    assert text.startswith("20 of 40 scenarios are finished") and "missing: 0 to 19" in text
    assert "20 of 40 rows are not finished" in said(capsys, ["collect", "p.json", "--out", "p"], 2)
    assert (
        said(capsys, ["run", "p.json", "--out", "p", "--threads", "1"], 0)
        == "20 scenarios solved, 0 of them failed\n"
    )
    assert said(capsys, ["status", "p.json", "--out", "p"], 0).startswith("40 of 40 scenarios are finished")
    text = said(capsys, ["collect", "p.json", "--out", "p", "-o", "t.csv"], 0)
    assert text == "t.csv is written\n0 scenarios failed\n"
    lines = (folder / "t.csv").read_text().splitlines()
    assert len(lines) == 41
    assert lines[0].endswith(",lowest pressure,lowest at,highest velocity,highest at,certificate,below 1 bar,"
                             "outcome,iterations,finding")  # fmt: skip


def test_failures_are_status_1(folder: pathlib.Path, capsys: Any) -> None:
    said(capsys, ["plan", "town.tavell.json", "--kind", "failures", "-o", "n.json"], 0)
    text = said(capsys, ["run", "n.json", "--out", "n"], 1)
    assert text.startswith("35 scenarios solved, ")
    assert "their findings are in n/failed.jsonl" in said(capsys, ["collect", "n.json", "--out", "n"], 1)


def test_input_that_cannot_be_used_is_one_line_and_status_2(folder: pathlib.Path, capsys: Any) -> None:
    assert "there is no file" not in said(capsys, ["run", "no.json", "--out", "o"], 2)
    (folder / "bad.json").write_text("{")
    assert "is no JSON file" in said(capsys, ["run", "bad.json", "--out", "o"], 2)
    assert "is no plan" in said(capsys, ["plan", "town.tavell.json"], 2)
    said(capsys, ["plan", "town.tavell.json", "-o", "p.json", "--scenarios", "3"], 0)
    assert "is there already" in said(capsys, ["plan", "town.tavell.json", "-o", "p.json"], 2)
    for shard in ("0/2", "3/2", "1", "a/b"):
        assert "the shard" in said(capsys, ["run", "p.json", "--out", "o", "--shard", shard], 2)
    network = json.loads((folder / "town.tavell.json").read_text())
    network["nodes"][0]["at"][2] += 1.0
    (folder / "town.tavell.json").write_text(json.dumps(network))
    assert "has changed since the plan was made" in said(capsys, ["run", "p.json", "--out", "o"], 2)
    assert not (folder / "o").exists()


def test_parquet_needs_a_package_and_says_so(folder: pathlib.Path, capsys: Any, monkeypatch: Any) -> None:
    said(capsys, ["plan", "town.tavell.json", "-o", "p.json", "--scenarios", "3"], 0)
    said(capsys, ["run", "p.json", "--out", "p"], 0)
    monkeypatch.setattr("importlib.util.find_spec", lambda name: None)
    assert "pyarrow or fastparquet" in said(
        capsys, ["collect", "p.json", "--out", "p", "--format", "parquet"], 2
    )
    assert not (folder / "p" / "table.parquet").exists()
    said(capsys, ["collect", "p.json", "--out", "p"], 0)
    assert (folder / "p" / "table.csv").exists()
    assert not (folder / "p" / "table.parquet").exists()


# What pandas asks of the package. It writes to a file's name only, as the real one does.
FASTPARQUET = """
import pathlib
__version__ = "9999.1"
def write(filename, data, compression=None, write_index=None, **options):
    assert isinstance(filename, str) and write_index is False
    if compression is None or "full" in pathlib.Path("disk").read_text():
        raise OSError(28, "No space left on device")
    with open(filename, "w") as file:
        file.write(f"{len(data)} rows of {', '.join(data.columns)}")
"""


def test_parquet_is_written_beside_csv_where_a_package_does(
    folder: pathlib.Path, capsys: Any, monkeypatch: Any
) -> None:
    said(capsys, ["plan", "town.tavell.json", "-o", "p.json", "--scenarios", "3"], 0)
    said(capsys, ["run", "p.json", "--out", "p"], 0)
    (folder / "fastparquet.py").write_text(FASTPARQUET)
    (folder / "disk").write_text("empty")
    specification = importlib.util.spec_from_file_location("fastparquet", folder / "fastparquet.py")
    assert specification is not None and specification.loader is not None
    package = importlib.util.module_from_spec(specification)
    specification.loader.exec_module(package)
    monkeypatch.setitem(sys.modules, "fastparquet", package)
    monkeypatch.setattr("tavell.studies._collect._PARQUET", ("fastparquet",))
    text = said(capsys, ["collect", "p.json", "--out", "p"], 0)
    assert text == "p/table.csv is written\np/table.parquet is written\n0 scenarios failed\n"
    written = (folder / "p" / "table.parquet").read_text()
    assert written.startswith("3 rows of scenario, ")
    (folder / "disk").write_text("full")
    assert "No space left" in said(capsys, ["collect", "p.json", "--out", "p", "-o", "t.parquet"], 2)
    assert "No space left" in said(capsys, ["collect", "p.json", "--out", "p", "--format", "parquet"], 2)
    assert (folder / "p" / "table.parquet").read_text() == written
    assert not [path for path in folder.rglob("*") if path.suffix == ".tmp" or path.name == "t.parquet"]


def test_the_same_study_at_a_shell(folder: pathlib.Path, capsys: Any) -> None:
    said(capsys, ["plan", "town.tavell.json", "-o", "p.json", "--scenarios", "20"], 0)
    package = str(pathlib.Path(studies.__file__).resolve().parents[2])
    environment = dict(os.environ, PYTHONPATH=package)
    for shard in ("2/2", "1/2"):
        arguments = [
            sys.executable,
            "-m",
            "tavell.sweep",
            "run",
            "p.json",
            "--out",
            "shell",
            "--shard",
            shard,
        ]
        assert subprocess.run(arguments, env=environment, check=False).returncode == 0
    said(capsys, ["run", "p.json", "--out", "here"], 0)
    for out in ("shell", "here"):
        said(capsys, ["collect", "p.json", "--out", out], 0)
    assert (folder / "shell" / "table.csv").read_bytes() == (folder / "here" / "table.csv").read_bytes()


def test_a_summary_has_numbers_plots_and_the_worst_cases(folder: pathlib.Path, capsys: Any) -> None:
    pytest.importorskip("matplotlib")
    said(capsys, ["plan", "town.tavell.json", "-o", "p.json", "--scenarios", "50"], 0)
    said(capsys, ["run", "p.json", "--out", "p"], 0)
    said(capsys, ["collect", "p.json", "--out", "p", "--summary", "s"], 0)
    summary = json.loads((folder / "s" / "summary.json").read_text())
    frame = studies.table(studies.Plan.read("p.json"), "p")
    assert summary["rows"] == 50 and summary["outcomes"] == {"ok": 50}
    assert summary["columns"]["lowest pressure"]["lowest"] == frame["lowest pressure"].min()
    assert summary["limits"]["below 1 bar"] == int((frame["lowest pressure"] < 1e5).sum())
    worst = frame.sort_values("lowest pressure")["scenario"].iloc[:3].tolist()
    assert summary["worst_scenarios"] == worst
    page = (folder / "s" / "index.html").read_text()
    for name in ["column-1.svg"] + [f"scenario-{scenario}.svg" for scenario in worst]:
        assert (folder / "s" / name).stat().st_size > 1000
        assert name in page
    assert f"scenario {worst[0]}: lowest pressure " in page
    assert summary["columns"]["lowest pressure"]["unit"] == "Pa"
    # the certificate is good in all of them: nothing to be plotted
    assert summary["columns"]["certificate"]["lowest"] == summary["columns"]["certificate"]["highest"] == 1.0
    assert not (folder / "s" / "column-3.svg").exists()
