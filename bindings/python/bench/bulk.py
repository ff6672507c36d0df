#!/usr/bin/env python3
"""How long many values take between Python and the kit.

    bench/bulk.py [NODES]

Prints one line for each way: what crosses, how many values, the shortest of five times [ms] that the
processor worked on it.
"""

import sys
import time
from typing import Any, Callable

import numpy as np

import tavell


def shortest(call: Callable[[], Any]) -> float:
    """The shortest of five times of a call [ms], without waiting for the processor."""
    times = []
    for _ in range(5):
        start = time.process_time()
        call()
        times.append(time.process_time() - start)
    return 1e3 * min(times)


def line_of_pipes(count: int) -> tavell.Network:
    """A pipeline of count nodes, 10 m apart, 0.3 m wide."""
    at = np.zeros((count, 3))
    at[:, 0] = 10.0 * np.arange(count)
    network = tavell.Network()
    network.add_nodes([f"n{i}" for i in range(count)], at)
    positions = np.arange(count)
    names = [f"p{i}" for i in range(count - 1)]
    network.add_elements(names, "pipe", positions[:-1], positions[1:], diameter=0.3)
    network.set_inlet("n0", pressure=5e5)
    network.set_outlet(f"n{count - 1}", mass_flow=10.0)
    return network


def report(what: str, count: int, milliseconds: float) -> None:
    print(f"{what:44}{count:10}{milliseconds:10.2f} ms")


def main() -> None:
    count = int(sys.argv[1]) if len(sys.argv) > 1 else 1_000_000
    start = time.process_time()
    network = line_of_pipes(count)
    report("built, with names", count, 1e3 * (time.process_time() - start))

    heights = np.linspace(0.0, 10.0, count)
    twice = np.concatenate([np.arange(count), np.arange(count)])
    both = np.concatenate([heights, heights])
    report("set_node_values, all", count, shortest(lambda: network.set_node_values("z", heights)))
    report(
        "set_node_values, by position", 2 * count, shortest(lambda: network.set_node_values("z", both, twice))
    )
    widths = np.full(count - 1, 0.25)
    rough = np.full(count - 1, 1e-4)

    def set_pipes() -> None:
        network.set_element_values("diameter", widths)
        network.set_element_values("roughness", rough)

    report("set_element_values, diameter and roughness", 2 * (count - 1), shortest(set_pipes))
    report("node_values, given", count, shortest(lambda: network.node_values("z")))
    report("node_values, given, by position", 2 * count, shortest(lambda: network.node_values("z", twice)))

    def pipes() -> None:
        network.element_values("diameter")
        network.element_values("roughness")

    report("element_values, diameter and roughness", 2 * (count - 1), shortest(pipes))

    small = min(count, 20_000)
    solved = line_of_pipes(small).solve(must_converge=False)
    if solved.has_values:
        pressures = shortest(lambda: solved.node_values("pressure"))
        report("node_values of a result, without a copy", small, pressures)
        report("... and their sum", small, shortest(lambda: solved.node_values("pressure").sum()))
    names = network.node_names
    report("node_names", count, shortest(lambda: (network._reset(), network.node_names)))
    report("node_positions by name", count, shortest(lambda: network.node_positions(list(names))))


if __name__ == "__main__":
    main()
