"""Balancing valves and failures of single elements."""

import math

import networkx
import numpy as np
import pytest
from conftest import EXAMPLES

import tavell
from tavell import design

VALVES = [f"balancing valve {i}" for i in range(1, 5)]
FLOW = 0.15 / 983.2  # [m3/s] on each floor
KV = 100.10310619938537  # docs/theory.md, section 9


def riser(kv=4.0):
    """The heating riser of the examples with its valves open."""
    network = tavell.Network.from_json(EXAMPLES / "heating_riser.json")
    network.set_element_values("kv", kv, VALVES)
    return network


def wanted(flow=FLOW):
    return {name: flow for name in VALVES}


def test_the_riser_worked_by_hand_has_its_settings():
    network = riser()
    before = network.to_json()
    balanced = design.balance_valves(network, VALVES, wanted(), throttle_index=True)
    # The exercise's own answer, to its four digits (source and working in the example's file).
    np.testing.assert_allclose(balanced.valves["setting"], [1.203, 1.233, 1.274, 1.316], rtol=5e-4)
    np.testing.assert_allclose(balanced.valves["pressure_drop"], [20518, 19519, 18297, 17142], rtol=1e-4)
    np.testing.assert_allclose(balanced.valves["volume_flow"], FLOW, rtol=1e-5)
    assert list(balanced.valves["open"]) == [4.0] * 4
    assert balanced.index == "" and not balanced.valves["is_index"].any()
    assert balanced.valves.attrs["units"]["pressure_drop"] == "Pa"
    assert network.to_json() == before


def test_the_index_circuit_is_left_open_and_the_others_have_their_flow():
    balanced = design.balance_valves(riser(), VALVES, wanted())
    assert balanced.index == VALVES[3]  # the farthest of equal floors
    assert balanced.valves.loc[VALVES[3], "setting"] == 4.0
    np.testing.assert_allclose(balanced.valves["volume_flow"][:3], FLOW, rtol=1e-5)
    assert balanced.valves["volume_flow"][3] > FLOW


def test_a_partner_valve_gives_the_index_circuit_its_flow_too():
    """By hand: the open index valve takes KV rho Q^2 / X^2 instead of 17142 Pa; the partner, which carries
    all four floors, takes the rest."""
    network = riser()
    network.add_node("foot", 0, 0, -0.0001)
    network.set_node_values("inlet/pressure", np.nan, "supply")
    network.set_inlet("foot", pressure=250000)
    network.add_kv_valve("partner", "foot", "supply", 0.032, 20.0)
    balanced = design.balance_valves(network, VALVES, wanted(), partner="partner")
    np.testing.assert_allclose(balanced.valves["volume_flow"], FLOW, rtol=2e-5)
    assert balanced.valves.loc[balanced.index, "setting"] == 4.0
    at_index = KV * 983.2 * FLOW**2 / (4.0 / 3600) ** 2
    rest = 17142.4 - at_index
    assert balanced.partner == pytest.approx(3600 * 4 * FLOW * math.sqrt(KV * 983.2 / rest), rel=2e-4)


def test_a_pump_as_partner_is_slowed_down():
    network = riser()
    curve = [(0.0, 4e4), (3e-4, 3.9e4), (6e-4, 3.6e4), (9e-4, 3.1e4), (12e-4, 2.4e4)]
    network.add_node("foot", 0, 0, -0.5)
    network.set_node_values("inlet/pressure", np.nan, "supply")
    network.set_inlet("foot", pressure=229822.0)  # of the return, at this height
    network.add_pump("pump", "foot", "supply", curve)
    balanced = design.balance_valves(network, VALVES, wanted(), partner="pump")
    np.testing.assert_allclose(balanced.valves["volume_flow"], FLOW, rtol=2e-5)
    assert 0.5 < balanced.partner < 1.0
    assert balanced.valves.loc[balanced.index, "setting"] == 4.0


def test_k_of_pipes_is_found_beside_their_friction():
    """Two parallel pipes alike but for their length: K makes up for what friction is missing."""
    network = tavell.Network()
    network.add_nodes(["in", "out"], [[0, 0, 0], [10, 0, 0]])
    network.add_pipe("short", "in", "out", 0.05, roughness=1e-4, length=20)
    network.add_pipe("long", "in", "out", 0.05, roughness=1e-4, length=100, k=1.0)
    network.set_inlet("in", pressure=2.2e5)
    network.set_outlet("out", pressure=2e5)
    long_flow = network.solve().element("long")["volume_flow"]
    balanced = design.balance_valves(network, ["short", "long"], {"short": long_flow, "long": long_flow})
    assert balanced.index == "long"
    short = balanced.result.element("short")
    assert short["volume_flow"] == pytest.approx(long_flow, rel=1e-5)
    # Swamee and Jain (1976); the long pipe has K = 1 and 80 m more.
    friction = 0.25 / math.log10(1e-4 / 0.05 / 3.7 + 5.74 / short["reynolds"] ** 0.9) ** 2
    assert balanced.valves.loc["short", "setting"] == pytest.approx(1.0 + friction * 80 / 0.05, rel=1e-4)
    assert list(balanced.valves["key"]) == ["k", "k"]


def test_cv_valves_are_set_by_their_own_number():
    """Kv is 0.865 Cv (docs/theory.md, section 9)."""
    content = riser().to_dict()
    for element in content["elements"]:
        if element["type"] == "kv_valve":
            element.update(type="cv_valve", cv=element.pop("kv") / 0.865)
    balanced = design.balance_valves(tavell.Network.from_json(content), VALVES, wanted(), throttle_index=True)
    np.testing.assert_allclose(balanced.valves["setting"] * 0.865, [1.203, 1.233, 1.274, 1.316], rtol=5e-4)
    assert set(balanced.valves["key"]) == {"cv"}


def test_the_height_between_the_ends_of_a_valve_is_no_pressure_drop():
    """A valve alone on a vertical way of 10 m, by hand: what is left of 3 bar is 2 bar less rho g 10 m."""
    network = tavell.Network()
    network.add_nodes(["in", "out"], [[0, 0, 0], [0, 0, 10]])
    network.add_kv_valve("valve", "in", "out", 0.05, 50.0)
    network.set_inlet("in", pressure=3e5)
    network.set_outlet("out", pressure=1e5)
    network.patch({"fluid": {"name": "test water", "density": 1000.0, "viscosity": 1e-3}})
    balanced = design.balance_valves(network, "valve", {"valve": 1e-3}, throttle_index=True)
    left = 2e5 - 1000.0 * 9.80665 * 10
    assert balanced.valves.loc["valve", "pressure_drop"] == pytest.approx(left, rel=1e-6)
    setting = 3600 * 1e-3 * math.sqrt(KV * 1000.0 / left)
    assert balanced.valves.loc["valve", "setting"] == pytest.approx(setting, rel=1e-6)
    # 20 l/s would take 100.1 * 1000 * 0.02^2 / (50 / 3600)^2 = 207574 Pa.
    with pytest.raises(tavell.BadInput, match="its open valve takes 207574 Pa and 10193[34] Pa are left"):
        design.balance_valves(network, "valve", {"valve": 0.02})


def test_k_of_a_rising_pipe_leaves_its_height_out():
    """The friction of 10 m of smooth pipe is that of the network's own solve with K = 0."""
    network = tavell.Network()
    network.add_nodes(["in", "out"], [[0, 0, 0], [0, 0, 10]])
    network.add_pipe("pipe", "in", "out", 0.05)
    network.set_inlet("in", pressure=3e5)
    network.set_outlet("out", volume_flow=1e-3)
    network.patch({"fluid": {"name": "test water", "density": 1000.0, "viscosity": 1e-3}})
    at_end = network.solve().node("out")["pressure"]
    network.set_node_values("outlet/volume_flow", np.nan, "out")
    network.set_outlet("out", pressure=1e5)
    balanced = design.balance_valves(network, "pipe", {"pipe": 1e-3}, throttle_index=True)
    dynamic = 1000.0 * (1e-3 / (math.pi * 0.05**2 / 4)) ** 2 / 2
    assert balanced.valves.loc["pipe", "setting"] == pytest.approx((at_end - 1e5) / dynamic, rel=1e-6)


def test_flows_that_the_pressure_cannot_drive_are_refused():
    with pytest.raises(tavell.BadInput, match="cannot have") as caught:
        design.balance_valves(riser(), VALVES, wanted(5 * FLOW))
    assert "balancing valve" in str(caught.value) and "are left to it" in str(caught.value)


def test_valves_without_sense_are_refused():
    network = riser()
    with pytest.raises(tavell.BadInput, match="no flow for the valve"):
        design.balance_valves(network, VALVES, {VALVES[0]: FLOW})
    with pytest.raises(tavell.BadInput, match="no valves here"):
        design.balance_valves(network, VALVES[:1], wanted())
    with pytest.raises(tavell.BadInput, match="above 0"):
        design.balance_valves(network, VALVES, wanted(-FLOW))
    with pytest.raises(tavell.BadInput, match="one of the valves"):
        design.balance_valves(network, VALVES, wanted(), partner=VALVES[0])
    with pytest.raises(tavell.BadInput, match="choose one"):
        design.balance_valves(network, VALVES, wanted(), partner="riser 1", throttle_index=True)
    with pytest.raises(tavell.BadInput, match="at least one"):
        design.balance_valves(network, [], {})
    pump = tavell.Network.from_json(EXAMPLES / "pump_static_head.json")
    (name,) = [n for n, kind in zip(pump.element_names, pump.element_types) if kind == "pump"]
    with pytest.raises(tavell.BadInput, match="is a pump"):
        design.balance_valves(pump, name, {name: 1e-3})


# Failures


def ring():
    """A source, a ring of four pipes of which one is a branch's root, and a branch with its own end."""
    network = tavell.Network()
    at = [[0, 0, 0], [100, 0, 0], [200, 0, 0], [100, 100, 0], [300, 0, 0], [400, 0, 0]]
    network.add_nodes(["source", "a", "b", "c", "d", "e"], at)
    network.add_elements(
        ["main", "ab", "ac", "cb", "bd", "de"],
        "pipe",
        ["source", "a", "a", "c", "b", "d"],
        ["a", "b", "c", "b", "d", "e"],
        diameter=0.1,
        roughness=1e-4,
    )
    network.set_inlet("source", pressure=5e5)
    network.set_outlet(["b", "c", "d", "e"], mass_flow=[2.0, 1.0, 0.5, 1.5])
    return network


def test_what_a_closed_pipe_leaves_without_water_is_named():
    table = design.n_minus_1(ring())
    assert list(table.index) == ["main", "ab", "ac", "cb", "bd", "de"]
    assert table.loc["main", "outcome"] == "nothing left"
    assert table.loc["main", "unsupplied"] == ("a", "b", "c", "d", "e")
    assert table.loc["main", "unserved"] == pytest.approx(5.0, rel=1e-9)
    for name in ("ab", "ac", "cb"):
        assert table.loc[name, "unsupplied"] == ()
        assert table.loc[name, "is_good"]
    assert table.loc["bd", "unsupplied"] == ("d", "e")
    assert table.loc["bd", "unserved"] == pytest.approx(2.0, rel=1e-9)
    assert table.loc["de", "unsupplied"] == ("e",)
    assert table.loc["de", "outcome"] == "converged"
    assert not table.loc["de", "is_good"]
    assert table.attrs["units"]["unserved"] == "kg/s"


def test_an_outlet_of_given_pressure_supplies_only_where_liquid_enters_there():
    table = design.n_minus_1(riser(), ["riser 1", "return riser 1"])
    assert len(table.loc["riser 1", "unsupplied"]) == 13  # all but the supply: the return gives nothing
    assert table.loc["return riser 1", "unsupplied"] == ("return",)
    network = tavell.Network()
    network.add_nodes(["high", "user", "low"], [[0, 0, 0], [100, 0, 0], [200, 0, 0]])
    network.add_pipe("p1", "high", "user", 0.1)
    network.add_pipe("p2", "user", "low", 0.1)
    network.set_inlet("high", pressure=3e5)
    network.set_outlet("user", mass_flow=20.0)
    network.set_outlet("low", pressure=2.95e5)
    assert network.solve().element("p2")["mass_flow"] < 0.0
    assert design.n_minus_1(network, "p1").loc["p1", "unsupplied"] == ()


def test_the_values_are_those_of_the_network_without_the_element():
    network = ring()
    before = network.to_json()
    limits = design.Limits(lowest_pressure={"e": "4.8 bar", "b": 1e5}, highest_velocity=0.6)
    table = design.n_minus_1(network, ["ab", "de"], limits)
    closed = network.copy()
    closed.set_element_values("closed", 1, "ab")
    result = closed.solve()
    pressures = result.nodes["pressure"].drop("source")
    speeds = result.elements["velocity"].abs()
    assert table.loc["ab", "lowest_pressure"] == pressures.min()
    assert table.loc["ab", "lowest_at"] == pressures.idxmin()
    assert table.loc["ab", "highest_velocity"] == speeds.max()
    assert table.loc["ab", "highest_at"] == speeds.idxmax()
    assert table.loc["ab", "low"] == (("e",) if pressures["e"] < 4.8e5 else ())
    assert table.loc["ab", "fast"] == tuple(speeds.index[speeds > 0.6])
    assert "main" in table.loc["ab", "fast"]  # 5 kg/s in 100 mm: 0.64 m/s
    assert network.to_json() == before


def test_the_parts_that_are_cut_off_are_those_of_the_graph():
    """Against a search of the graph without each edge, on a network with many bridges and loops."""
    generator = np.random.default_rng(20261121)
    count = 60
    network = tavell.Network()
    network.add_nodes([f"n{i}" for i in range(count)], generator.uniform(0, 1000, (count, 3)) * [1, 1, 0])
    ends = [(int(generator.integers(max(0, i - 6), i)), i) for i in range(1, count)]
    ends += [tuple(sorted(generator.choice(count, 2, replace=False).tolist())) for _ in range(12)]
    ends.append(ends[3])  # two pipes side by side
    names = [f"p{i}" for i in range(len(ends))]
    network.add_elements(names, "pipe", [a for a, _ in ends], [b for _, b in ends], diameter=0.3)
    network.set_inlet(["n0", "n31"], pressure=6e5)
    network.set_outlet([f"n{i}" for i in range(1, count, 3) if i != 31], mass_flow=1.0)
    table = design.n_minus_1(network, threads=2)
    assert set(table["outcome"]) == {"converged"}
    graph = network.to_networkx()
    for name, (a, b) in zip(names, ends):
        without = graph.to_undirected()
        without.remove_edge(f"n{a}", f"n{b}", name)
        reached = networkx.node_connected_component(without, "n0") | networkx.node_connected_component(
            without, "n31"
        )
        assert set(table.loc[name, "unsupplied"]) == set(graph) - reached
    assert table["unsupplied"].map(len).gt(0).sum() > 10


def test_failures_that_have_no_solution_keep_their_findings():
    """With the bypass closed all flow must pass the non-return valve that is built in the wrong way round."""
    network = tavell.Network()
    network.add_nodes(["main", "joint", "user"], [[0, 0, 0], [10, 0, 0], [20, 0, 0]])
    network.add_element("valve", "non_return", "joint", "main", diameter=0.02)
    network.add_pipe("bypass", "main", "joint", 0.02)
    network.add_pipe("pipe", "joint", "user", 0.02)
    network.set_inlet("main", pressure=3e5)
    network.set_outlet("user", mass_flow=0.5)
    table = design.n_minus_1(network)
    assert table.loc["bypass", "outcome"] == "not converged"
    assert "not-converged" in table.loc["bypass", "findings"].codes
    assert math.isnan(table.loc["bypass", "lowest_pressure"])
    assert table.loc["valve", "is_good"]


def test_closed_and_unknown_elements_cannot_fail():
    network = ring()
    network.set_element_values("closed", 1, "ab")
    assert "ab" not in design.n_minus_1(network).index
    with pytest.raises(tavell.BadInput, match='"ab" is closed'):
        design.n_minus_1(network, "ab")
    with pytest.raises(tavell.BadInput, match="nowhere"):
        design.n_minus_1(network, ["nowhere"])
    with pytest.raises(tavell.BadInput, match="not below 0"):
        design.n_minus_1(network, limits=design.Limits(highest_velocity=-1.0))
