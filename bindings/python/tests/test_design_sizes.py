"""Pipe sizes from a catalogue."""

import math

import numpy as np
import pytest

import tavell
from tavell import design

SIZES = {"DN50": 0.05, "DN80": 0.08, "DN100": 0.1, "DN150": 0.15}


def tree():
    """A branched main: 12, 8 and 3 l/s in its three pipes, whatever their sizes."""
    network = tavell.Network()
    network.add_nodes(["source", "a", "b", "c"], [[0, 0, 0], [200, 0, 0], [400, 0, 0], [600, 0, 0]])
    network.add_elements(
        ["p1", "p2", "p3"], "pipe", ["source", "a", "b"], ["a", "b", "c"], diameter=0.3, roughness=1e-4
    )
    network.set_inlet("source", pressure=6e5)
    network.set_outlet(["a", "b", "c"], volume_flow=["4 l/s", "5 l/s", "3 l/s"])
    network.patch({"fluid": {"name": "test water", "density": 1000.0, "viscosity": 1e-3}})
    return network


def test_each_pipe_of_a_tree_has_the_smallest_size_for_its_velocity():
    network = tree()
    before = network.to_json()
    found = design.size_pipes(network, SIZES, design.Limits(highest_velocity=1.6))
    # By hand, Q / (pi D^2 / 4): 12 l/s needs 97.7 mm, 8 l/s 79.8 mm, 3 l/s 48.9 mm.
    assert list(found.pipes["size"]) == ["DN100", "DN80", "DN50"]
    speeds = [flow / (math.pi * d**2 / 4) for flow, d in ((0.012, 0.1), (0.008, 0.08), (0.003, 0.05))]
    np.testing.assert_allclose(found.pipes["velocity"], speeds, rtol=1e-6)
    assert found.is_good and found.unfit == [] and found.low_nodes == {}
    assert list(found.network.element_values("diameter")) == [0.1, 0.08, 0.05]
    assert found.pipes.attrs["units"] == {"diameter": "m", "velocity": "m/s", "gradient": "Pa/m"}
    assert network.to_json() == before


def test_a_pressure_limit_makes_pipes_larger_where_it_gains_most():
    limits = design.Limits(highest_velocity=1.6, lowest_pressure="5.3 bar")
    found = design.size_pipes(tree(), SIZES, limits)
    assert found.is_good
    assert found.result.nodes["pressure"].drop("source").min() >= 5.3e5
    assert_no_pipe_can_be_smaller(found, limits)


def test_the_pipe_that_gains_most_per_length_becomes_larger_first():
    """By hand, friction [Pa/m] times 1 - (D / next D)^5: about 545 in p3, 242 in p2, 219 in p1."""
    by_velocity = design.size_pipes(tree(), SIZES, design.Limits(highest_velocity=1.6))
    lowest = by_velocity.result.node("c")["pressure"] + 1e3
    limits = design.Limits(highest_velocity=1.6, lowest_pressure=lowest)
    found = design.size_pipes(tree(), SIZES, limits, refine=False)
    assert list(found.pipes["size"]) == ["DN100", "DN80", "DN80"]


def assert_no_pipe_can_be_smaller(found, limits):
    """One size less anywhere breaks a limit."""
    diameters = sorted(SIZES.values())
    for name, diameter in found.pipes["diameter"].items():
        rank = diameters.index(diameter)
        if rank == 0:
            continue
        smaller = found.network.copy()
        smaller.set_element_values("diameter", diameters[rank - 1], name)
        result = smaller.solve()
        speeds = np.abs(result.element_values("velocity"))
        lowest = tavell.quantity(limits.lowest_pressure, "pressure") if limits.lowest_pressure else -np.inf
        given = np.isfinite(smaller.node_values("inlet/pressure"))
        is_low = (result.node_values("pressure")[~given] < lowest).any()
        assert is_low or (speeds > limits.highest_velocity).any(), name


def test_sizes_of_a_looped_network_keep_the_limits_and_cannot_be_smaller():
    network = tavell.Network()
    at = [[x, y, 0] for y in (0, 300, 600) for x in (0, 300, 600)]
    network.add_nodes([f"n{i}" for i in range(9)], at)
    ends = [(i, i + 1) for i in (0, 1, 3, 4, 6, 7)] + [(i, i + 3) for i in range(6)]
    names = [f"p{a}{b}" for a, b in ends]
    network.add_elements(
        names, "pipe", [a for a, _ in ends], [b for _, b in ends], diameter=0.2, roughness=1e-4
    )
    network.set_inlet("n0", pressure=5e5)
    network.set_outlet([f"n{i}" for i in range(1, 9)], volume_flow=2e-3)
    limits = design.Limits(highest_velocity=1.2, lowest_pressure="4 bar")
    found = design.size_pipes(network, SIZES, limits)
    assert found.is_good
    assert found.pipes["velocity"].max() <= 1.2 * (1 + 1e-5)
    assert found.result.nodes["pressure"].min() >= 4e5 * (1 - 1e-5)
    assert_no_pipe_can_be_smaller(found, limits)
    coarse = design.size_pipes(network, SIZES, limits, refine=False)
    assert coarse.is_good and coarse.solves < found.solves
    assert coarse.pipes["diameter"].sum() >= found.pipes["diameter"].sum()


def test_pipes_for_which_nothing_fits_are_listed_with_the_reason():
    found = design.size_pipes(tree(), {"DN50": 0.05, "DN80": "80 mm"}, design.Limits(highest_velocity=1.6))
    assert found.unfit == ["p1"]
    assert not found.is_good
    assert found.pipes.loc["p1", "size"] == "DN80"
    assert found.pipes.loc["p1", "why"] == "2.387 m/s in DN80, the largest, is above 1.6 m/s"
    assert found.pipes.loc["p2", "why"] == ""


def test_a_lowest_velocity_that_no_size_keeps_is_said():
    limits = design.Limits(highest_velocity=1.5, lowest_velocity=1.0)
    found = design.size_pipes(tree(), SIZES, limits)
    # 12 l/s: 1.53 m/s in DN100, 0.68 m/s in DN150; 3 l/s: 1.53 m/s in DN50, 0.60 m/s in DN80.
    assert found.unfit == ["p1", "p3"]
    assert found.pipes.loc["p1", "why"] == "0.6791 m/s in DN150, the smallest that will do, is below 1 m/s"


def test_nodes_that_no_size_lifts_are_named_with_what_is_missing():
    limits = design.Limits(highest_velocity=1.6, lowest_pressure={"c": "6.5 bar"})
    found = design.size_pipes(tree(), SIZES, limits)
    assert list(found.low_nodes) == ["c"]
    pressure = found.result.node("c")["pressure"]
    assert found.low_nodes["c"] == pytest.approx(6.5e5 - pressure, rel=1e-9)
    assert not found.is_good and found.unfit == []


def test_a_tank_of_given_pressure_is_not_too_low():
    """The source is open to the air, 60 m above the rest."""
    network = tree()
    network.set_node_values("z", 60.0, "source")
    network.set_inlet("source", pressure=0.0)
    found = design.size_pipes(network, SIZES, design.Limits(highest_velocity=1.6, lowest_pressure="2 bar"))
    assert found.is_good
    named = design.Limits(highest_velocity=1.6, lowest_pressure={"source": "2 bar"})
    assert design.size_pipes(network, SIZES, named).low_nodes == {"source": 2e5}


def test_a_gradient_of_friction_is_kept():
    found = design.size_pipes(tree(), SIZES, design.Limits(highest_gradient=150.0))
    assert found.is_good
    assert found.pipes["gradient"].max() <= 150.0
    for name, flow in (("p1", 0.012), ("p2", 0.008), ("p3", 0.003)):
        fits = [d for d in sorted(SIZES.values()) if gradient(flow, d) <= 150.0]
        assert found.pipes.loc[name, "diameter"] == fits[0]
        assert found.pipes.loc[name, "gradient"] == pytest.approx(gradient(flow, fits[0]), rel=1e-4)


def gradient(flow, diameter):
    """Friction [Pa/m] in these pipes: Weisbach, Swamee and Jain (1976)."""
    velocity = flow / (math.pi * diameter**2 / 4)
    reynolds = velocity * diameter * 1000.0 / 1e-3
    friction = 0.25 / math.log10(1e-4 / diameter / 3.7 + 5.74 / reynolds**0.9) ** 2
    return friction / diameter * 1000.0 * velocity**2 / 2


def test_some_pipes_only_are_sized():
    found = design.size_pipes(tree(), SIZES, design.Limits(highest_velocity=1.6), "p3")
    assert list(found.pipes.index) == ["p3"]
    assert list(found.network.element_values("diameter")) == [0.3, 0.3, 0.05]


def test_a_size_brings_its_roughness():
    found = design.size_pipes(tree(), "steel EN 10255", design.Limits(highest_velocity=1.6))
    assert list(found.pipes["size"]) == ["DN 100", "DN 80", "DN 50"]
    # EN 10255, medium: 114.3 x 4.5, 88.9 x 4.0, 60.3 x 3.6 mm.
    np.testing.assert_allclose(found.pipes["diameter"], [0.1053, 0.0809, 0.0531], rtol=1e-12)
    np.testing.assert_allclose(found.network.element_values("roughness"), 4.6e-5)
    copper = {size.name: size.diameter for size in design.CATALOGUES["copper EN 1057"]}
    assert copper["Cu 22 x 1"] == pytest.approx(0.020)


def test_a_network_that_does_not_solve_as_it_is_starts_from_the_largest():
    network = tree()
    network.set_element_values("diameter", 5e-5)
    with pytest.raises(tavell.BadInput, match="roughness"):
        network.solve()
    found = design.size_pipes(network, SIZES, design.Limits(highest_velocity=1.6))
    assert list(found.pipes["size"]) == ["DN100", "DN80", "DN50"]


def test_sizes_that_are_refused_are_not_taken():
    """A capillary narrower than the roughness of the pipes is in the catalogue."""
    sizes = {"capillary": 5e-5, **SIZES}
    found = design.size_pipes(tree(), sizes, design.Limits(lowest_pressure="4 bar"))
    same = design.size_pipes(tree(), SIZES, design.Limits(lowest_pressure="4 bar"))
    assert found.is_good and same.is_good
    assert "capillary" not in set(found.pipes["size"])


def test_what_cannot_be_sized_is_refused():
    limits = design.Limits(highest_velocity=1.6)
    with pytest.raises(tavell.BadInput, match="no sizes"):
        design.size_pipes(tree(), {}, limits)
    with pytest.raises(tavell.BadInput, match='no catalogue "steel"'):
        design.size_pipes(tree(), "steel", limits)
    with pytest.raises(tavell.BadInput, match="above 0"):
        design.size_pipes(tree(), [design.Size("none", 0.0)], limits)
    with pytest.raises(tavell.BadInput, match="above 0"):
        design.size_pipes(tree(), SIZES, design.Limits(highest_gradient=0.0))
    network = tree()
    network.add_node("d", 800)
    network.add_kv_valve("valve", "c", "d", 0.05, 10.0)
    network.set_outlet("d", mass_flow=0.1)
    with pytest.raises(tavell.BadInput, match="no pipe"):
        design.size_pipes(network, SIZES, limits, ["valve"])
    network.set_element_values("closed", 1)
    with pytest.raises(tavell.BadInput, match="no open pipes"):
        design.size_pipes(network, SIZES, limits)
