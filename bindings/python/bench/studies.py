#!/usr/bin/env python3
"""What a study costs: per scenario, per shard, per Dask task, and how much two threads gain over one.

    bench/studies.py [SCENARIOS]

Prints a table of medians of three runs [s] and ratios of runs of the same session. Needs an idle machine.
"""

import statistics
import sys
import tempfile
import time
from pathlib import Path
from typing import Callable

import numpy as np

import tavell
from tavell import studies

SIDE = 7  # nodes along an edge of the grid: 49 nodes, 84 pipes
REPEATS = 3


def grid_of_pipes() -> tavell.Network:
    """A town of 49 junctions with an inlet at a corner and a demand at every fourth junction."""
    network = tavell.Network()
    for y in range(SIDE):
        for x in range(SIDE):
            network.add_node(f"n{x}-{y}", 100.0 * x, 100.0 * y, 0.0)
    for y in range(SIDE):
        for x in range(SIDE):
            for dx, dy in ((1, 0), (0, 1)):
                if x + dx < SIDE and y + dy < SIDE:
                    ends = (f"n{x}-{y}", f"n{x + dx}-{y + dy}")
                    network.add_pipe("-".join(ends), *ends, 0.15, roughness=1e-4)
    network.add_node("tank", -50.0, 0.0, 0.0, inlet={"pressure": 5e5})
    network.add_pipe("main", "tank", "n0-0", 0.3, roughness=1e-4)
    for i in range(0, SIDE * SIDE, 4):
        x, y = i % SIDE, i // SIDE
        network.add_node(f"tap {i}", 100.0 * x, 100.0 * y + 10.0, 0.0, outlet={"mass_flow": 0.5})
        network.add_pipe(f"to tap {i}", f"n{x}-{y}", f"tap {i}", 0.05, roughness=1e-4)
    return network


def seconds(call: Callable[[], object]) -> float:
    """Median time of a call [s]."""
    times = []
    for _ in range(REPEATS):
        start = time.perf_counter()
        call()
        times.append(time.perf_counter() - start)
    return statistics.median(times)


def plan_of(folder: Path, scenarios: int) -> studies.Plan:
    grid_of_pipes().to_json(folder / "town.tavell.json")
    text = (
        '{"tavell_study": 1, "network": "town.tavell.json", "seed": 1, "scenarios": %d, "vary": [{"name": "demand",'
        ' "nodes": "*", "key": "outlet/mass_flow", "as": "factor", "each": true,'
        ' "draw": {"distribution": "normal", "mean": 1, "sd": 0.1, "truncate": [0.5, 1.5]}}],'
        ' "record": [{"name": "lowest", "nodes": "*", "quantity": "min:pressure"}]}' % scenarios
    )
    path = folder / "town.study.json"
    path.write_text(text)
    return studies.Plan.read(str(path))


def main() -> None:
    scenarios = int(sys.argv[1]) if len(sys.argv) > 1 else 4000
    network = grid_of_pipes()
    inputs = [studies.Input(studies.ELEMENT, "roughness", 0)]
    outputs = [studies.Output(studies.NODE, "min:pressure")]
    values = np.linspace(1e-5, 1e-3, scenarios).reshape(-1, 1)

    def solve(threads: int) -> float:
        return seconds(lambda: studies.solve_many(network, inputs, values, outputs, threads=threads))

    one, two = solve(1), solve(2)
    print(f"{scenarios} scenarios of 49 junctions, 84 pipes and 13 taps")
    print(f"per scenario, one thread       {1e3 * one / scenarios:.3f} ms")
    print(f"two threads over one           {one / two:.2f} times as many scenarios a second")

    with tempfile.TemporaryDirectory() as folder:
        small = plan_of(Path(folder), 10)
        count = iter(range(1000))
        per_shard = seconds(lambda: studies.run(small, f"{folder}/small{next(count)}", threads=1))
        print(f"a shard of ten scenarios       {per_shard:.2f} s")
        large = plan_of(Path(folder), scenarios)
        as_study = [seconds(lambda: studies.run(large, f"{folder}/large{next(count)}", threads=n)) for n in (1, 2)]
        print(f"the study, one thread          {as_study[0]:.2f} s, {1e3 * as_study[0] / scenarios:.3f} ms a scenario")
        print(f"the study, two threads         {as_study[1]:.2f} s, {as_study[0] / as_study[1]:.2f} times as fast")
        try:
            import distributed
        except ImportError:
            return
        for workers in (1, 2):
            start = time.perf_counter()
            with distributed.LocalCluster(
                n_workers=workers, threads_per_worker=1, dashboard_address=None
            ) as cluster, distributed.Client(cluster) as client:
                ready = time.perf_counter() - start
                run = seconds(lambda: studies.run(large, f"{folder}/dask{next(count)}", client=client))
            print(f"Dask, {workers} worker{'s' * (workers > 1)}                 {run:.2f} s, ready after {ready:.1f} s")


if __name__ == "__main__":
    main()
