"""Pickle, copy, closing, the end of the program."""

import copy
import gc
import json
import os
import pathlib
import pickle
import subprocess
import sys
import weakref

import numpy as np
import pandas as pd
import pytest
from conftest import EXAMPLES
from networks import two_pipes, unsolvable

import tavell


@pytest.mark.parametrize(
    "path", sorted(EXAMPLES.glob("*.json")) + [EXAMPLES / "village.inp"], ids=lambda path: path.name
)
def test_networks_and_results_are_the_same_after_pickle(path):
    network = tavell.Network.read(path)
    again = pickle.loads(pickle.dumps(network))
    assert again.to_json() == network.to_json()
    assert again.findings == network.findings
    result = network.solve()
    again_result = pickle.loads(pickle.dumps(result))
    assert again_result.to_json() == result.to_json()
    assert again_result.findings == result.findings
    pd.testing.assert_frame_equal(again_result.nodes, result.nodes, check_exact=True)
    pd.testing.assert_frame_equal(again_result.elements, result.elements, check_exact=True)
    np.testing.assert_array_equal(again_result.element_values("friction"), result.element_values("friction"))
    assert dict(again_result.certificate()) == dict(result.certificate())


def test_results_without_values_are_the_same_after_pickle(reservoirs):
    for result in (
        unsolvable().solve(must_converge=False),
        reservoirs.solve(on_progress=lambda step: tavell.STOP, must_converge=False),
    ):
        again = pickle.loads(pickle.dumps(result))
        assert again.outcome == result.outcome
        assert again.to_json() == result.to_json()


def test_an_exception_of_a_solve_keeps_its_result_in_pickle():
    with pytest.raises(tavell.NotConverged) as caught:
        unsolvable().solve()
    again = pickle.loads(pickle.dumps(caught.value))
    assert again.findings == caught.value.findings
    assert again.result.to_json() == caught.value.result.to_json()


def test_an_unfinished_network_is_refused_when_it_is_pickled_not_later():
    network = tavell.Network()
    network.add_nodes(["a", "b"])
    with pytest.raises(tavell.BadInput):
        pickle.dumps(network)


def test_copies_of_networks_are_independent(reservoirs):
    for make in (copy.copy, copy.deepcopy):
        other = make(reservoirs)
        assert other.to_json() == reservoirs.to_json()
        other.set_element_values("diameter", 0.5)
        other.add_node("new")
        assert reservoirs.node_count == 4
        assert reservoirs.element_values("diameter", 0) == [0.08]


def test_an_unfinished_network_is_copied():
    network = tavell.Network()
    network.add_node("a", inlet={"pressure": 1e5})
    assert copy.deepcopy(network).to_json() == network.to_json()


def test_results_do_not_change_and_are_their_own_copies(result):
    assert copy.copy(result) is result
    assert copy.deepcopy({"result": result})["result"] is result


# Closing


def test_a_closed_network_says_so(reservoirs):
    with reservoirs as network:
        assert network.node_count == 4
    for call in (lambda: network.node_count, network.solve, network.to_json, network.copy,
                 lambda: network.add_node("x"), lambda: network.nodes):  # fmt: skip
        with pytest.raises(ValueError, match="the network is closed"):
            call()
    assert repr(network) == "<Network: closed>"
    assert "closed" in network._repr_html_()
    network.close()


def test_a_closed_result_says_so(reservoirs):
    result = reservoirs.solve()
    result.close()
    for call in (lambda: result.nodes, lambda: result.node_names, lambda: result.outcome, result.certificate,
                 lambda: result.network, lambda: result.node_values("pressure"), result.to_json):  # fmt: skip
        with pytest.raises(ValueError, match="the result is closed"):
            call()
    assert repr(result) == "<Result: closed>"
    assert "closed" in result._repr_html_()


def test_memory_is_given_back_once_and_when_nobody_holds_it():
    freed = []
    network = two_pipes()
    handle = weakref.ref(network._live, lambda reference: freed.append("network"))
    result = network.solve()
    weakref.finalize(result._live, lambda: freed.append("result"))
    del network
    gc.collect()
    assert freed == ["network"] and handle() is None
    result.close()
    result.close()
    gc.collect()
    assert freed == ["network", "result"]


def test_the_end_of_the_program_is_quiet():
    """Handles, arrays, a thread that still solves and an object with a late destructor."""
    code = """
import threading, networks
network = networks.two_pipes()
result = network.solve()
values = result.node_values("pressure")
frame = result.elements
class Late:
    def __init__(self, kept): self.kept = kept
    def __del__(self): self.kept
late = Late(result)
late.itself = late
begun = threading.Event()
def solve():
    while True:
        networks.unsolvable().solve(must_converge=False, on_progress=lambda step: begun.set())
threading.Thread(target=solve, daemon=True).start()
begun.wait()
print(values[1] > 0)
"""
    folder = str(pathlib.Path(__file__).parent)
    package = str(pathlib.Path(tavell.__file__).parents[1])
    environment = {**os.environ, "PYTHONPATH": os.pathsep.join([package, folder])}
    ended = subprocess.run(
        [sys.executable, "-c", code], env=environment, capture_output=True, text=True, check=False
    )
    assert (ended.returncode, ended.stdout, ended.stderr) == (0, "True\n", "")


def test_a_process_pool_solves_pickled_networks():
    from concurrent.futures import ProcessPoolExecutor
    from multiprocessing import get_context

    networks = [tavell.Network.read(EXAMPLES / name) for name in ("three_reservoirs.json", "two_loops.json")]
    with ProcessPoolExecutor(1, mp_context=get_context("spawn")) as pool:
        results = list(pool.map(solved, networks))
    for network, result in zip(networks, results):
        expected = json.loads(network.solve().to_json())
        assert json.loads(result.to_json()) == expected


def solved(network):
    return network.solve()
