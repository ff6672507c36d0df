"""Plans, draws, runs and tables of studies."""

from __future__ import annotations

import copy
import json
import math
import os
import pathlib
import random
import signal
import subprocess
import sys
from typing import Any, Dict, List

import numpy as np
import pytest

import tavell
from tavell import studies
from tavell.studies import _draws as draws
from tavell.studies import _store
from tavell.studies._store import Store, gaps, shard_range
from tavell.studies._worker import solve_range

EXAMPLES = pathlib.Path(__file__).resolve().parents[3] / "examples" / "networks"


def content(**changes: Any) -> Dict[str, Any]:
    """Random demands and resistances of the trunk network of Hanoi."""
    plan: Dict[str, Any] = {
        "tavell_study": 1,
        "network": str(EXAMPLES / "hanoi.tavell.json"),
        "seed": 3,
        "scenarios": 60,
        "vary": [
            {
                "name": "demand",
                "nodes": "*",
                "key": "outlet/volume_flow",
                "as": "factor",
                "draw": {"distribution": "normal", "mean": 1.0, "sd": 0.1, "truncate": [0.5, 1.5]},
            },
            {
                "name": "resistance",
                "elements": {"match": "pipe 1?"},
                "key": "ck",
                "as": "factor",
                "each": True,
                "draw": {"distribution": "uniform", "low": 0.9, "high": 1.1},
            },
            {"name": "temperature", "pointer": "/fluid/temperature", "draw": {"distribution": "triangular", "low": 280, "mode": 285, "high": 300}},
        ],
        "record": [
            {"name": "lowest", "nodes": "*", "quantity": "min:pressure"},
            {"name": "lowest at", "nodes": "*", "quantity": "argmin:pressure"},
            {"nodes": ["13", "30"], "quantity": "pressure"},
            {"network": "certificate"},
        ],
        "limits": [{"name": "low", "column": "lowest", "below": 2.9e5}],
    }  # fmt: skip
    plan.update(changes)
    return plan


def csv_of(plan: studies.Plan, out: pathlib.Path, **options: Any) -> bytes:
    path = out / "table.csv"
    studies.write_table(plan, out, path, **options)
    return path.read_bytes()


# Draws


def test_a_draw_is_an_output_of_the_generator_wherever_it_is_asked_for() -> None:
    whole = np.random.Philox(key=np.array([5, 9], dtype=np.uint64)).random_raw(100)
    for start, count in [(0, 100), (1, 3), (4, 4), (37, 20), (99, 1)]:
        assert (draws.raw(5, 9, start, count) == whole[start : start + count]).all()
    # Known answer of Philox 4x64-10 (Salmon et al. 2011, Random123 kat_vectors) for a counter of zeros and a key of
    # zeros: 16554d9eca36314c ... NumPy counts from 1, so it is that of the last counter before 0.
    generator = np.random.Philox(key=np.zeros(2, np.uint64), counter=np.full(4, 2**64 - 1, np.uint64))
    assert hex(int(generator.random_raw())) == "0x16554d9eca36314c"


def test_draws_are_above_0_and_below_1() -> None:
    lattice = np.array([0, 2**64 - 1], dtype=np.uint64) >> np.uint64(12)
    ends = (lattice.astype(np.float64) + 0.5) / 2**52
    assert 0.0 < ends[0] and ends[1] < 1.0


def test_logarithm_exponential_and_normal_quantile_are_those_of_tables() -> None:
    numbers = np.array([1e-300, 1e-5, 0.3, 0.70710678, 1.0, 1.5, 2.0, 1e10, 1e300])
    assert draws.log(numbers) == pytest.approx([math.log(x) for x in numbers], rel=4e-16, abs=1e-16)
    powers = np.array([-700.0, -1.0, -1e-9, 0.0, 0.3, 1.0, 5.5, 700.0])
    assert draws.exp(powers) == pytest.approx([math.exp(x) for x in powers], rel=4e-16)
    # Quantiles to 16 digits, from the inverse error function: 0.5, 0.975, 0.01, 1e-10.
    expected = [0.0, 1.959963984540054, -2.3263478740408408, -6.361340902404056]
    assert draws.normal_quantile(np.array([0.5, 0.975, 0.01, 1e-10])) == pytest.approx(expected, rel=2e-15)


@pytest.mark.parametrize(
    "given, mean, sd",
    [
        ({"distribution": "uniform", "low": 2, "high": 5}, 3.5, 3 / math.sqrt(12)),
        ({"distribution": "normal", "mean": 4, "sd": 2}, 4.0, 2.0),
        ({"distribution": "lognormal", "median": 2, "sigma": 0.5}, 2 * math.exp(0.125), 1.20806),
        ({"distribution": "triangular", "low": 0, "mode": 1, "high": 4}, 5 / 3, math.sqrt(13 / 18)),
        ({"distribution": "discrete", "values": [1, 3], "weights": [3, 1]}, 1.5, math.sqrt(0.75)),
        # Normal between -1 and 1/2 standard deviations: mean -0.2067 and deviation 0.4189 of a standard one.
        ({"distribution": "normal", "mean": 0, "sd": 1, "truncate": [-1, 0.5]}, -0.20664, 0.41886),
    ],
)
def test_distributions_have_their_means_and_deviations(given: Dict[str, Any], mean: float, sd: float) -> None:
    numbers = draws.distribution(given)(draws.uniform(1, 0, 0, 200_000))
    error = 5.0 * sd / math.sqrt(len(numbers))  # five standard deviations of the mean
    assert numbers.mean() == pytest.approx(mean, abs=error)
    assert numbers.std() == pytest.approx(sd, rel=0.02)


def test_draws_have_the_same_bits_in_any_division() -> None:
    given = {"distribution": "lognormal", "median": 2, "sigma": 0.5, "truncate": [1, 4]}
    quantile = draws.distribution(given)
    whole = quantile(draws.uniform(1, 2, 0, 1000))
    parts = [quantile(draws.uniform(1, 2, i, 1))[0] for i in range(0, 1000, 7)]
    assert (whole[::7] == parts).all()
    # Bits that every machine has: +, -, *, / and square roots are exact to the last bit.
    assert [x.hex() for x in whole[:2]] == [x.hex() for x in quantile(draws.uniform(1, 2, 0, 2))]


# Plans


@pytest.mark.parametrize(
    "changes, message",
    [
        ({"tavell_study": 2}, '"tavell_study" is 2'),
        ({"colour": 1}, 'the plan has no key "colour"'),
        ({"generator": "mt19937"}, "the generator 'mt19937' is unknown"),
        ({"seed": -1}, '"seed" is -1'),
        ({"scenarios": 0}, '"scenarios" is 0'),
        ({"network": "no.json"}, "the network cannot be used"),
        (
            {"network": {"path": str(EXAMPLES / "hanoi.tavell.json"), "hash": "0" * 64}},
            "has changed since the plan",
        ),
        ({"vary": []}, '"vary" is empty'),
        ({"record": []}, '"record" is empty'),
        ({"record": [{"nodes": "77", "quantity": "pressure"}]}, "the network has no node '77'"),
        ({"record": [{"nodes": "*", "quantity": "colour"}]}, 'nodes have no quantity "colour"'),
        ({"record": [{"nodes": "13", "quantity": "min:pressure"}]}, '"min:pressure" is of all nodes'),
        ({"record": [{"network": "certificate"}] * 2, "limits": []}, 'two columns "certificate"'),
        ({"limits": [{"column": "highest", "above": 1}]}, '"record" has no column "highest"'),
        ({"limits": [{"column": "lowest"}]}, 'needs "below" or "above"'),
        ({"solve": {"scenario": "night"}}, "the network has no scenario 'night'"),
    ],
)
def test_a_plan_that_cannot_be_is_refused_in_one_line(changes: Dict[str, Any], message: str) -> None:
    with pytest.raises(studies.StudyError) as refusal:
        studies.Plan.of(content(**changes))
    assert message in str(refusal.value)
    assert "\n" not in str(refusal.value)


@pytest.mark.parametrize(
    "entry, message",
    [
        ({"nodes": "13", "key": "z"}, 'needs one of "draw", "grid", "column"'),
        (
            {"nodes": "13", "pointer": "/fluid/density", "grid": [1]},
            'needs one of "nodes", "elements" and "pointer"',
        ),
        ({"nodes": "13", "key": "colour", "grid": [1]}, 'nodes have no value "colour"'),
        ({"nodes": "77", "key": "z", "grid": [1]}, "the network has no node '77'"),
        ({"elements": {"type": "pump"}, "key": "length", "grid": [1]}, "selects no element"),
        ({"elements": "*", "key": "kv", "grid": [1]}, 'a general_loss has no "kv"'),
        ({"elements": "*", "key": "length", "as": "double", "grid": [1]}, '"as" of'),
        (
            {"nodes": "13", "key": "outlet/pressure", "as": "factor", "grid": [1]},
            'has no "outlet/pressure" to start',
        ),
        ({"pointer": "/fluid/specific_heat", "as": "factor", "grid": [1]}, "has no number at"),
        ({"pointer": "/title", "grid": [1]}, "points to nothing that a scenario can change"),
        ({"nodes": "13", "key": "z", "grid": []}, "is no list of numbers"),
        ({"nodes": "13", "key": "z", "column": "a"}, "the table has no column 'a'"),
        ({"nodes": "13", "key": "z", "grid": [1], "each": True}, 'has "each", which is for draws'),
        (
            {"nodes": "13", "key": "z", "draw": {"distribution": "normal", "mean": 1, "sd": 0}},
            '"sd" 0.0 is not above 0',
        ),
        (
            {"nodes": "13", "key": "z", "draw": {"distribution": "beta"}},
            'it has no "distribution" that is one of',
        ),
        (
            {"nodes": "13", "key": "z", "draw": {"distribution": "uniform", "low": 2, "high": 1}},
            "is not below",
        ),
        ({"nodes": "13", "key": "z", "draw": {"distribution": "uniform", "low": 2}}, '"high" is missing'),
        (
            {
                "nodes": "13",
                "key": "z",
                "draw": {"distribution": "normal", "mean": 0, "sd": 1, "truncate": [9, 10]},
            },
            "next to nothing of the distribution",
        ),
        (
            {"nodes": "13", "key": "z", "draw": {"distribution": "discrete", "values": []}},
            '"values" is no list',
        ),
        ({"close_each": ["pipe 99"]}, "the network has no element 'pipe 99'"),
    ],
)
def test_what_cannot_vary_is_refused_in_one_line(entry: Dict[str, Any], message: str) -> None:
    changed = content(vary=[{"name": "v", **entry}])
    del changed["scenarios"]
    with pytest.raises(studies.StudyError) as refusal:
        studies.Plan.of(changed)
    assert message in str(refusal.value)
    assert "\n" not in str(refusal.value)


def test_a_scenario_is_a_function_of_the_plan_and_its_number() -> None:
    plan = studies.Plan.of(content())
    inputs, values = plan.inputs(0, 60)
    columns, drawn = plan.drawn(0, 60)
    for start, end in [(0, 1), (13, 14), (20, 47)]:
        part, numbers = studies.Plan.of(content()).inputs(start, end)
        assert part == inputs
        assert (numbers == values[start:end]).all()
        assert (plan.drawn(start, end)[1] == drawn[start:end]).all()
    assert [column.name for column in columns[:2]] == ["demand", "resistance(pipe 10)"]
    base = plan.network.node_values("outlet/volume_flow")
    first = next(i for i, each in enumerate(inputs) if each.key == "outlet/volume_flow")
    assert values[7, first] == base[inputs[first].position] * drawn[7, 0]


def test_grids_and_closings_are_combined_and_the_last_changes_fastest() -> None:
    plan = studies.Plan.of(
        content(
            scenarios=12,
            vary=[
                {"name": "height", "nodes": "13", "key": "z", "grid": [0, 5]},
                {"name": "shut", "close_each": ["pipe 5", "pipe 9"]},
                {"name": "demand", "nodes": "13", "key": "outlet/volume_flow", "draw": {"distribution": "uniform", "low": 0.1, "high": 0.2}},
            ],
        )
    )  # fmt: skip
    columns, drawn = plan.drawn(0, 12)
    assert [columns[1].text(value) for value in drawn[:, 1]] == ["pipe 5"] * 2 + ["pipe 9"] * 2 + [""] * 2 + [
        "pipe 5", "pipe 5", "pipe 9", "pipe 9", "", "",
    ]  # fmt: skip
    assert list(drawn[:, 0]) == [0.0] * 6 + [5.0] * 6
    assert len(set(drawn[:, 2])) == 12
    inputs, values = plan.inputs(2, 6)
    assert [each.key for each in inputs] == ["z", "closed", "outlet/volume_flow"]
    assert values[:, 1].tolist()[:2] == [1.0, 1.0] and np.isnan(values[2:, 1]).all()
    with pytest.raises(studies.StudyError, match="no multiple of the 6"):
        studies.Plan.of(content(scenarios=13, vary=plan.content["vary"]))


def test_a_table_gives_its_rows(tmp_path: pathlib.Path) -> None:
    (tmp_path / "t.csv").write_text("a,b\n0.1,\n0.2,3\n")
    vary = [
        {"name": "demand", "nodes": "13", "key": "outlet/volume_flow", "column": "a"},
        {"name": "height", "nodes": "13", "key": "z", "column": "b"},
    ]
    changed = content(table="t.csv", vary=vary)
    del changed["scenarios"]
    plan = studies.Plan.of(changed, tmp_path)
    assert plan.count == 2
    _, drawn = plan.drawn(0, 2)
    assert drawn[:, 0].tolist() == [0.1, 0.2]
    assert math.isnan(drawn[0, 1]) and drawn[1, 1] == 3.0
    (tmp_path / "t.csv").write_text("a,b\n0.1,\n0.2,4\n")
    assert studies.Plan.of(changed, tmp_path).hash != plan.hash
    (tmp_path / "t.csv").write_text("a,b\n0.1,x\n")
    with pytest.raises(studies.StudyError, match="line 2 of the table .* has 'x'"):
        studies.Plan.of(changed, tmp_path)


# Solving


def test_a_study_has_the_bits_of_single_solves(tmp_path: pathlib.Path) -> None:
    plan = studies.Plan.of(content(scenarios=12))
    studies.run(plan, tmp_path / "out")
    frame = studies.table(plan, tmp_path / "out")
    inputs, values = plan.inputs(0, 12)
    for k in range(12):
        network = plan.network.copy()
        for each, value in zip(inputs, values[k]):
            if each.part == studies.NODE:
                network.set_node_values(each.key, value, [each.position])
            elif each.part == studies.ELEMENT:
                network.set_element_values(each.key, value, [each.position])
            else:
                network.patch({"fluid": {"temperature": value}})
        result = network.solve()
        assert frame["lowest"][k] == result.node_values("pressure").min()
        assert frame["pressure(13)"][k] == result.node_values("pressure")[network.node_positions("13")[0]]
        assert frame["lowest at"][k] == network.node_names[int(result.node_values("pressure").argmin())]
        assert frame["low"][k] == float(frame["lowest"][k] < 2.9e5)


def test_the_table_has_the_same_bytes_whatever_the_division_and_the_order(tmp_path: pathlib.Path) -> None:
    plan = studies.Plan.of(content())
    outcome = studies.run(plan, tmp_path / "whole")
    assert (outcome.solved, outcome.failed) == (60, 0)
    expected = csv_of(plan, tmp_path / "whole")
    chance = random.Random(1)
    for shards in (3, 7):
        order = list(range(1, shards + 1))
        chance.shuffle(order)
        for number in order:
            studies.run_shard(plan, tmp_path / str(shards), (number, shards), threads=1 + number % 2)
        assert csv_of(plan, tmp_path / str(shards)) == expected
    again = studies.run(plan, tmp_path / "whole")
    assert again.solved == 0
    assert studies.status(plan, tmp_path / "whole").done == 60


def test_shards_of_different_divisions_fit_together(tmp_path: pathlib.Path) -> None:
    plan = studies.Plan.of(content())
    studies.run_shard(plan, tmp_path, (2, 3))
    outcome = studies.run_shard(plan, tmp_path, (1, 2))
    assert outcome.solved == 20  # rows 20 to 29 were there
    assert studies.run_shard(plan, tmp_path).solved == 20
    journal = [tuple(entry["rows"]) for entry in Store(tmp_path, plan).journal()]
    assert sorted(journal) == studies.finished(tmp_path)
    assert sum(end - start for start, end in journal) == 60


def test_rows_that_are_missing_are_told(tmp_path: pathlib.Path) -> None:
    plan = studies.Plan.of(content())
    studies.run_shard(plan, tmp_path, (2, 3))
    assert studies.status(plan, tmp_path).missing == [(0, 20), (40, 60)]
    with pytest.raises(studies.StudyError, match="40 of 60 rows are not finished, the first are 0 to 19"):
        studies.table(plan, tmp_path)
    assert list(studies.table(plan, tmp_path, is_partial=True)["scenario"]) == list(range(20, 40))


def test_scenarios_that_fail_are_rows_with_their_findings(tmp_path: pathlib.Path) -> None:
    changed = content(vary=[{"name": "shut", "close_each": ["pipe 1", "pipe 2", "pipe 9"]}])
    del changed["scenarios"]
    plan = studies.Plan.of(changed)
    outcome = studies.run(plan, tmp_path)
    assert (outcome.solved, outcome.failed) == (4, 2)
    frame = studies.table(plan, tmp_path)
    assert list(frame["shut"]) == ["pipe 1", "pipe 2", "pipe 9", ""]
    assert list(frame["outcome"]) == ["bad-input", "not-converged", "ok", "ok"]
    assert frame["finding"][0].startswith("no-given-pressure: ")
    assert math.isnan(frame["lowest"][0])
    assert studies.write_findings(plan, tmp_path, tmp_path / "failed.jsonl") == 2
    entries = [json.loads(line) for line in (tmp_path / "failed.jsonl").read_text().splitlines()]
    assert [entry["scenario"] for entry in entries] == [0, 1]
    assert entries[0]["findings"][0]["code"] == "no-given-pressure"


WORKER = """
import os, signal, sys
from tavell.studies import _worker

def solve(plan, start, end, **options):
    with open(sys.argv[1], "a") as file:
        file.write(f"{start} {end}\\n")
    for row in (7, 40):
        if start <= row < end:
            os.kill(os.getpid(), signal.SIGKILL)
    return _worker.solve_range(plan, start, end, **options)

sys.exit(_worker.main(solve))
"""


@pytest.mark.skipif(sys.platform == "win32", reason="the process is ended by a signal")
def test_a_scenario_that_ends_the_process_costs_its_own_row_after_three_tries(tmp_path: pathlib.Path) -> None:
    plan = studies.Plan.of(content())
    script, tries = tmp_path / "worker.py", tmp_path / "tries"
    script.write_text(WORKER)
    outcome = studies.run_shard(plan, tmp_path / "out", worker=(sys.executable, str(script), str(tries)))
    assert (outcome.solved, outcome.failed) == (60, 2)
    frame = studies.table(plan, tmp_path / "out")
    assert list(frame.index[frame["outcome"] == "crashed"]) == [7, 40]
    assert "signal SIGKILL" in frame["finding"][7]
    assert tries.read_text().split("\n").count("7 8") == 3
    studies.run(plan, tmp_path / "undisturbed")
    whole = studies.table(plan, tmp_path / "undisturbed")
    kept = [k for k in range(60) if k not in (7, 40)]
    assert (frame["lowest"][kept] == whole["lowest"][kept]).all()


def test_a_process_that_does_not_start_is_told(tmp_path: pathlib.Path) -> None:
    plan = studies.Plan.of(content())
    with pytest.raises(studies.StudyError, match="does not start: exit status 9"):
        studies.run_shard(plan, tmp_path, worker=(sys.executable, "-c", "raise SystemExit(9)"))


def test_a_time_limit_makes_rows_that_say_so(tmp_path: pathlib.Path) -> None:
    plan = studies.Plan.of(content(scenarios=3))
    outcome = studies.run(plan, tmp_path, time_limit=1e-9)
    assert outcome.failed == 3
    assert "time limit" in studies.table(plan, tmp_path)["finding"][0]


# The folder


def test_a_folder_keeps_to_its_plan(tmp_path: pathlib.Path) -> None:
    plan = studies.Plan.of(content(scenarios=3))
    studies.run(plan, tmp_path)
    before = {path.name: path.read_bytes() for path in tmp_path.iterdir()}
    other = studies.Plan.of(content(scenarios=3, seed=4))
    for call in (studies.run, studies.status, studies.table):
        with pytest.raises(studies.StudyError, match="holds another study"):
            call(other, tmp_path)
    assert {path.name: path.read_bytes() for path in tmp_path.iterdir()} == before
    with pytest.raises(studies.StudyError, match="is no folder of a study"):
        studies.status(plan, tmp_path / "none")


def test_two_runs_of_the_same_rows_do_not_go_together(tmp_path: pathlib.Path, monkeypatch: Any) -> None:
    monkeypatch.setattr(_store, "_LOCK_PATIENCE", 0.0)
    plan = studies.Plan.of(content())
    store = Store(tmp_path, plan)
    store.open()
    with store.lock((20, 40)):
        with pytest.raises(studies.StudyError, match="another run is at work"):
            studies.run_shard(plan, tmp_path, (2, 3))
        with pytest.raises(studies.StudyError, match="another run is at work"):
            studies.run(plan, tmp_path)
        assert studies.run_shard(plan, tmp_path, (1, 3)).solved == 20
    assert studies.run(plan, tmp_path).solved == 40


def test_a_damaged_file_is_named(tmp_path: pathlib.Path) -> None:
    plan = studies.Plan.of(content(scenarios=3))
    studies.run(plan, tmp_path)
    store = Store(tmp_path, plan)
    block = store.block(0, 3)
    whole = block.read_bytes()
    for damaged in (whole[: len(whole) // 2], b"", whole[:-200] + b"x" * 200):
        block.write_bytes(damaged)
        with pytest.raises(studies.StudyError, match="rows-0000000000000000-0000000000000003.npz is damaged"):
            studies.table(plan, tmp_path)


def test_a_full_disk_is_told_and_leaves_nothing_half_written(
    tmp_path: pathlib.Path, monkeypatch: Any
) -> None:
    plan = studies.Plan.of(content(scenarios=3))
    store = Store(tmp_path, plan)
    store.open()
    rows = solve_range(plan, 0, 3)

    def full(descriptor: int) -> None:
        raise OSError(28, "No space left on device")

    monkeypatch.setattr(_store.os, "fsync", full)
    with pytest.raises(
        studies.StudyError, match="cannot be written: the disk is full; what is finished is kept"
    ):
        store.write(0, 3, rows, 0.1)
    assert sorted(path.name for path in tmp_path.iterdir()) == ["study.json"]


def test_gaps_are_what_no_file_covers() -> None:
    assert gaps((0, 10), []) == [(0, 10)]
    assert gaps((0, 10), [(2, 4), (3, 6), (9, 20)]) == [(0, 2), (6, 9)]
    assert gaps((3, 5), [(0, 10)]) == []
    assert [shard_range(10, i, 3) for i in (1, 2, 3)] == [(0, 3), (3, 6), (6, 10)]


# One call


def test_many_solves_refuse_what_cannot_be(reservoirs: tavell.Network) -> None:
    inputs = [studies.Input(studies.ELEMENT, "diameter", 0)]
    outputs = [studies.Output(studies.NODE, "pressure", 0)]
    with pytest.raises(tavell.BadInput, match="the values have the shape"):
        studies.solve_many(reservoirs, inputs, [[1.0, 2.0]], outputs)
    with pytest.raises(tavell.BadInput, match="is out of range"):
        studies.solve_many(reservoirs, [studies.Input(studies.NODE, "z", 99)], [[1.0]], outputs)
    with pytest.raises(tavell.BadInput, match="unknown"):
        studies.solve_many(reservoirs, inputs, [[0.3]], outputs, scenario="night")


def test_many_solves_stop_and_pass_exceptions_on(reservoirs: tavell.Network) -> None:
    inputs = [studies.Input(studies.ELEMENT, "diameter", 0)]
    outputs = [studies.Output(studies.NODE, "pressure", 0)]
    values = np.full((9, 1), 0.3)
    seen: List[int] = []

    def stop(done: int) -> Any:
        seen.append(done)
        return tavell.STOP if done == 2 else None

    rows = studies.solve_many(reservoirs, inputs, values, outputs, threads=1, on_progress=stop)
    assert seen == [0, 1, 2]
    assert not rows.is_whole
    assert rows.outcomes.tolist() == [0, 0] + [4] * 7

    def fail(done: int) -> None:
        raise KeyError(done)

    with pytest.raises(KeyError):
        studies.solve_many(reservoirs, inputs, values, outputs, on_progress=fail)


def test_a_supervisor_that_is_killed_leaves_no_worker_behind(tmp_path: pathlib.Path) -> None:
    if sys.platform == "win32":
        pytest.skip("processes are killed by signals")
    plan = tmp_path / "plan.json"
    plan.write_text(json.dumps(content(scenarios=200_000)))
    out = tmp_path / "out"
    arguments = [sys.executable, "-m", "tavell.sweep", "run", str(plan), "--out", str(out)]
    package = str(pathlib.Path(studies.__file__).resolve().parents[2])
    environment = dict(os.environ, PYTHONPATH=package)
    process = subprocess.Popen(arguments, env=environment)
    try:
        while not list(out.glob("rows-*.npz")):
            assert process.poll() is None
    finally:
        process.send_signal(signal.SIGKILL)
        process.wait()
    # The lock is held by the worker too, as long as it lives: a run that gets it is alone.
    with Store(out, studies.Plan.read(plan)).lock((0, 200_000)):
        assert copy.copy(studies.finished(out))


def test_the_schema_takes_what_the_reader_takes() -> None:
    jsonschema = pytest.importorskip("jsonschema")
    file = pathlib.Path(studies.__file__).with_name("plan-1.schema.json")
    schema = json.loads(file.read_text(encoding="utf-8"))
    check = jsonschema.Draft7Validator(schema)
    assert not list(check.iter_errors(content()))
    for wrong in (
        content(colour=1),
        content(seed=-1),
        content(vary=[]),
        content(vary=[{"name": "v", "nodes": "13", "key": "z"}]),
        content(record=[{"nodes": "*"}]),
        content(limits=[{"column": "lowest"}]),
    ):
        assert list(check.iter_errors(wrong))
        with pytest.raises(studies.StudyError):
            studies.Plan.of(wrong)


@pytest.mark.parametrize("name", ["hanoi_demand", "hanoi_failures"])
def test_the_examples_are_plans(name: str) -> None:
    plan = studies.Plan.read(EXAMPLES.parent / "studies" / f"{name}.study.json")
    rows = solve_range(plan, 0, min(plan.count, 40))
    assert (rows.outcomes == 0).sum() >= 25
