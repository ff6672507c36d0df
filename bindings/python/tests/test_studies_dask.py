"""Studies on workers of dask.distributed, which die."""

from __future__ import annotations

import json
import os
import pathlib
import random
import signal
import subprocess
import sys
import time
from typing import Any, Dict, Iterator, List

import pytest

pytest.importorskip("distributed")
psutil = pytest.importorskip("psutil")

from tavell import studies  # noqa: E402

EXAMPLES = pathlib.Path(__file__).resolve().parents[3] / "examples" / "networks"


def plan_file(folder: pathlib.Path, scenarios: int) -> pathlib.Path:
    """Random demands and resistances of the trunk network of Hanoi: about 1 ms a scenario."""
    content: Dict[str, Any] = {
        "tavell_study": 1,
        "network": str(EXAMPLES / "hanoi.tavell.json"),
        "seed": 20261121,
        "scenarios": scenarios,
        "vary": [
            {
                "name": "demand",
                "nodes": "*",
                "key": "outlet/volume_flow",
                "as": "factor",
                "draw": {"distribution": "lognormal", "median": 1.0, "sigma": 0.1},
            },
            {
                "name": "resistance",
                "elements": "*",
                "key": "ck",
                "as": "factor",
                "each": True,
                "draw": {"distribution": "uniform", "low": 0.9, "high": 1.1},
            },
        ],
        "record": [
            {"name": "lowest", "nodes": "*", "quantity": "min:pressure"},
            {"name": "lowest at", "nodes": "*", "quantity": "argmin:pressure"},
            {"nodes": "*", "quantity": "pressure"},
            {"network": "certificate"},
        ],
        "limits": [{"column": "lowest", "below": 2.9e5}],
        "show_inputs": False,
    }
    path = folder / "plan.json"
    path.write_text(json.dumps(content))
    return path


def table_of(plan: studies.Plan, out: pathlib.Path) -> bytes:
    path = out / "table.csv"
    studies.write_table(plan, out, path)
    return path.read_bytes()


class Cluster:
    """A scheduler and four workers, as processes of this test. The workers' nannies start dead ones anew."""

    def __init__(self, folder: pathlib.Path) -> None:
        folder.mkdir()
        file = folder / "scheduler.json"
        with open(folder / "log", "wb") as log:
            self._scheduler = subprocess.Popen(
                [sys.executable, "-m", "distributed.cli.dask_scheduler", "--port", "0", "--no-dashboard",
                 "--host", "127.0.0.1", "--scheduler-file", str(file)],
                stderr=log, stdout=log,
            )  # fmt: skip
            self._nannies = subprocess.Popen(
                [sys.executable, "-m", "distributed.cli.dask_worker", "--scheduler-file", str(file),
                 "--nworkers", "4", "--nthreads", "1", "--no-dashboard", "--local-directory", str(folder),
                 "--death-timeout", "60"],
                stderr=log, stdout=log,
            )  # fmt: skip
        deadline = time.monotonic() + 60.0
        while not file.exists() and time.monotonic() < deadline:
            time.sleep(0.05)
        self.address: str = json.loads(file.read_text())["address"]

    def workers(self) -> List[Any]:
        try:
            children = psutil.Process(self._nannies.pid).children(recursive=True)
            return [each for each in children if "spawn_main" in " ".join(each.cmdline())]
        except psutil.NoSuchProcess:
            return []

    def kill_a_worker(self, chance: random.Random) -> bool:
        workers = self.workers()
        if not workers:
            return False
        try:
            chance.choice(workers).send_signal(signal.SIGKILL)
        except psutil.NoSuchProcess:
            return False
        return True

    def kill_scheduler(self) -> None:
        self._scheduler.kill()

    def close(self) -> None:
        workers = self.workers()
        for process in (self._scheduler, self._nannies):
            process.kill()
            process.wait()
        for worker in workers:
            try:
                worker.kill()
            except psutil.NoSuchProcess:
                pass


@pytest.fixture
def folders(tmp_path: pathlib.Path) -> Iterator[pathlib.Path]:
    yield tmp_path


def sweep_run(plan: pathlib.Path, out: pathlib.Path, address: str) -> Any:
    package = str(pathlib.Path(studies.__file__).resolve().parents[2])
    environment = dict(os.environ, PYTHONPATH=package + os.pathsep + os.environ.get("PYTHONPATH", ""))
    return subprocess.Popen(
        [sys.executable, "-m", "tavell.sweep", "run", str(plan), "--out", str(out), "--dask", address],
        env=environment, stderr=subprocess.PIPE, stdout=subprocess.PIPE, encoding="utf-8",
    )  # fmt: skip


@pytest.mark.skipif(sys.platform == "win32", reason="processes are killed by signals")
def test_workers_and_a_scheduler_that_die_change_no_byte_and_cost_nothing_that_is_finished(
    folders: pathlib.Path,
) -> None:
    path = plan_file(folders, 10_000)
    plan = studies.Plan.read(path)
    undisturbed = folders / "undisturbed"
    studies.run(plan, undisturbed, threads=1)
    expected = table_of(plan, undisturbed)
    assert expected.count(b"\n") == 10_001

    chance = random.Random(5)
    out = folders / "disturbed"
    killed = 0

    def killing(cluster: Cluster, process: Any, until_rows: int) -> None:
        nonlocal killed
        next_kill = time.monotonic() + 1.0
        while process.poll() is None:
            time.sleep(0.05)
            if time.monotonic() >= next_kill:
                killed += cluster.kill_a_worker(chance)
                next_kill += 1.0
            if out.is_dir() and sum(end - start for start, end in studies.finished(out)) >= until_rows:
                return

    first = Cluster(folders / "first")
    try:
        process = sweep_run(path, out, first.address)
        killing(first, process, 1500)
        first.kill_scheduler()
        _, errors = process.communicate(timeout=300)
    finally:
        first.close()
    assert process.returncode == 2, errors
    assert "the connection to the scheduler of dask is lost" in errors
    before = studies.status(plan, out)
    assert 1500 <= before.done < 10_000

    second = Cluster(folders / "second")
    try:
        process = sweep_run(path, out, second.address)
        killing(second, process, 10_001)
        output, errors = process.communicate(timeout=300)
    finally:
        second.close()
    assert process.returncode == 0, errors
    assert output.startswith(f"{10_000 - before.done} scenarios solved, 0 of them failed")
    assert killed >= 3

    assert table_of(plan, out) == expected
    journal = [json.loads(line) for line in (out / "journal.jsonl").read_text().splitlines()]
    computed = sorted(tuple(entry["rows"]) for entry in journal)
    assert computed == studies.finished(out)  # a line for each file
    assert sum(end - start for start, end in computed) == 10_000  # and no row in two of them
