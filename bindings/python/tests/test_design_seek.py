"""Goal seek and the affinity of pumps, on networks whose answers have closed forms."""

import math
import sys

import numpy as np
import pytest
from conftest import EXAMPLES
from hypothesis import given, settings
from hypothesis import strategies as st

import tavell
from tavell import design
from tavell.design._roots import brent

# dp = KV rho Q^2 / X^2, X = Kv / 3600: the law of valves (docs/theory.md, section 9).
KV = 100.10310619938537


def valve_between_tanks(kv=10.0):
    """A valve alone between 3 and 2 bar; water of 998 kg/m3."""
    network = tavell.Network()
    network.add_nodes(["in", "out"], [[0, 0, 0], [1, 0, 0]])
    network.add_kv_valve("valve", "in", "out", 0.05, kv)
    network.set_inlet("in", pressure=3e5)
    network.set_outlet("out", pressure=2e5)
    network.patch({"fluid": {"name": "test water", "density": 998.0, "viscosity": 1e-3}})
    return network


def pump_and_valve():
    """A pump with the curve dp = 4e5 - 4e9 Q^2 (Pa, m3/s) and a valve behind it, from 0 to 0 Pa."""
    network = tavell.Network()
    network.add_nodes(["in", "mid", "out"], [[0, 0, 0], [1, 0, 0], [2, 0, 0]])
    flows = np.linspace(0.0, 0.01, 5)
    network.add_pump("pump", "in", "mid", list(zip(flows, 4e5 - 4e9 * flows**2)), reference_density=998.0)
    network.add_kv_valve("valve", "mid", "out", 0.05, 10.0)
    network.set_inlet("in", pressure=0.0)
    network.set_outlet("out", pressure=0.0)
    network.patch({"fluid": {"name": "test water", "density": 998.0, "viscosity": 1e-3}})
    return network


FLOW = design.element_result("valve", "volume_flow")
KV_OF_VALVE = design.element_value("valve", "kv")


@pytest.mark.parametrize("flow", [1e-5, 1e-3, 0.02])
def test_the_kv_that_gives_a_flow_is_that_of_its_law(flow):
    network = valve_between_tanks()
    before = network.to_json()
    found = design.goal_seek(network, KV_OF_VALVE, FLOW, flow)
    # Solved by hand from dp = KV rho Q^2 / X^2 with dp = 1e5 Pa.
    assert found.value == pytest.approx(3600 * flow * math.sqrt(KV * 998.0 / 1e5), rel=1e-6)
    assert found.reached == pytest.approx(flow, rel=1e-6)
    assert found.network.element_values("kv", "valve")[0] == found.value
    assert FLOW.of(found.result) == found.reached
    assert network.to_json() == before


def test_a_target_may_have_a_unit():
    found = design.goal_seek(valve_between_tanks(), KV_OF_VALVE, FLOW, "60 l/min")
    assert found.target == pytest.approx(1e-3, rel=1e-12)
    assert str(found).startswith('kv of "valve": 3.59825 ')  # 3.6 sqrt(0.999029), as above


def test_a_pressure_that_gives_a_flow_is_found():
    network = valve_between_tanks(kv=3.6)  # X = 1e-3: dp = KV 998 Q^2 1e6
    found = design.goal_seek(network, design.node_value("in", "inlet/pressure"), FLOW, 2e-3)
    assert found.value == pytest.approx(2e5 + KV * 998.0 * 4.0, rel=1e-6)


def test_a_target_that_holds_already_takes_no_search():
    network = valve_between_tanks()
    flow = FLOW.of(network.solve())
    found = design.goal_seek(network, KV_OF_VALVE, FLOW, flow)
    assert found.value == 10.0
    assert found.solves <= 2


def test_the_speed_of_a_pump_follows_the_square_of_the_flow():
    """The circuit has no static part: all flows are proportional to the speed."""
    network = pump_and_valve()
    flow = FLOW.of(network.solve())
    found = design.goal_seek(network, design.pump_speed("pump"), FLOW, 0.8 * flow)
    assert found.value == pytest.approx(0.8, rel=1e-5)
    drops = [each.element_values("pressure_difference")[0] for each in (found.result, network.solve())]
    assert drops[0] / drops[1] == pytest.approx(0.64, rel=1e-5)


def test_the_diameter_that_gives_a_pressure_obeys_the_pipe_law():
    network = tavell.Network()
    network.add_nodes(["in", "out"], [[0, 0, 0], [100, 0, 0]])
    network.add_pipe("pipe", "in", "out", 0.1, roughness=1e-4)
    network.set_inlet("in", pressure=3e5)
    network.set_outlet("out", mass_flow=10.0)
    network.patch({"fluid": {"name": "test water", "density": 1000.0, "viscosity": 1e-3}})
    found = design.goal_seek(
        network, design.element_value("pipe", "diameter"), design.node_result("out", "pressure"), 2.5e5
    )
    diameter = found.value
    velocity = 0.01 / (math.pi * diameter**2 / 4)
    reynolds = velocity * diameter * 1000.0 / 1e-3
    # Swamee and Jain (1976), Weisbach.
    friction = 0.25 / math.log10(1e-4 / diameter / 3.7 + 5.74 / reynolds**0.9) ** 2
    assert friction * 100.0 / diameter * 1000.0 * velocity**2 / 2 == pytest.approx(5e4, rel=1e-5)


def test_a_k_that_is_not_given_starts_from_nothing():
    """Two pipes at once get the same K; by hand, each takes K rho V^2 / 2."""
    network = tavell.Network()
    network.add_nodes(["in", "mid", "out"], [[0, 0, 0], [10, 0, 0], [20, 0, 0]])
    network.add_elements(["a", "b"], "pipe", ["in", "mid"], ["mid", "out"], diameter=0.1)
    network.set_inlet("in", pressure=3e5)
    network.set_outlet("out", volume_flow=0.01)
    network.patch({"fluid": {"name": "test water", "density": 1000.0, "viscosity": 1e-3}})
    pressure = design.node_result("out", "pressure")
    without = pressure.of(network.solve())
    found = design.goal_seek(network, design.element_value(["a", "b"], "k"), pressure, without - 8e3)
    assert found.value == pytest.approx(4e3 / (1000.0 * (0.01 / (math.pi * 0.1**2 / 4)) ** 2 / 2), rel=1e-6)
    assert list(found.network.element_values("k")) == [found.value] * 2


@settings(max_examples=30)
@given(st.sampled_from([f"pipe {i}" for i in range(1, 9)]), st.floats(0.5, 2.0), st.integers(0, 7))
def test_what_a_change_gives_is_found_again(pipe, ratio, read):
    """On the looped network of the examples: another diameter of any pipe, seen at any pipe's loss."""
    network = tavell.Network.from_json(EXAMPLES / "two_loops.json")
    reading = design.element_result(f"pipe {read + 1}", "pressure_difference")
    change = design.element_value(pipe, "diameter")
    bound = change.bound_to(network)
    target = reading.of(bound.changed(network, bound.present * ratio).solve())
    found = design.goal_seek(network, change, reading, target)
    assert found.reached == pytest.approx(target, rel=1e-5)
    assert reading.of(found.network.solve()) == found.reached


def test_a_target_out_of_reach_is_refused_with_what_is_in_reach():
    network = valve_between_tanks()
    with pytest.raises(tavell.BadInput, match="out of reach") as caught:
        design.goal_seek(network, KV_OF_VALVE, FLOW, 0.01, lower=1.0, upper=20.0)
    text = str(caught.value)
    assert "0.01 m3/s" in text and 'volume_flow of "valve"' in text and "from 1 to 20 " in text
    assert isinstance(caught.value, ValueError)
    with pytest.raises(tavell.BadInput, match="out of reach"):
        design.goal_seek(network, KV_OF_VALVE, FLOW, -0.01)  # a valve does not pump


def test_numbers_that_do_not_solve_bound_the_search():
    """Temperatures beyond the range of the fluid are refused, and what is short of them is looked at."""
    network = pump_and_valve()
    speed = design.pump_speed("pump")
    with pytest.raises(tavell.BadInput, match="out of reach"):
        design.goal_seek(network, speed, FLOW, 1.0, upper=2.0)
    pipe = tavell.Network()
    pipe.add_nodes(["in", "out"], [[0, 0, 0], [30, 40, 0]])
    pipe.add_pipe("pipe", "in", "out", 0.1, length=60.0)
    pipe.set_inlet("in", pressure=3e5)
    pipe.set_outlet("out", mass_flow=10.0)
    pressure = design.node_result("out", "pressure")
    # No shorter than the 50 m between the nodes.
    with pytest.raises(tavell.BadInput, match="does not solve") as caught:
        design.goal_seek(pipe, design.element_value("pipe", "length"), pressure, 2.9999e5)
    assert "from 50." in str(caught.value)


def test_no_pressure_drives_flow_back_through_a_non_return_element():
    network = tavell.Network()
    network.add_nodes(["in", "mid", "out"], [[0, 0, 0], [10, 0, 0], [20, 0, 0]])
    network.add_element("valve", "non_return", "in", "mid", diameter=0.05)
    network.add_pipe("pipe", "mid", "out", 0.05)
    network.set_inlet("in", pressure=3e5)
    network.set_outlet("out", pressure=2e5)
    flow = design.element_result("pipe", "mass_flow")
    with pytest.raises(tavell.BadInput, match="out of reach"):
        design.goal_seek(network, design.node_value("in", "inlet/pressure"), flow, -1.0)


def test_a_jump_is_no_answer():
    """The coefficient of an orifice has a step where the pipe is 71.2 mm wide (docs/theory.md, section 8)."""
    network = tavell.Network()
    network.add_nodes(["in", "out"], [[0, 0, 0], [1, 0, 0]])
    network.add_element("orifice", "orifice", "in", "out", diameter=0.0711, bore_diameter=0.03)
    network.set_inlet("in", pressure=3e5)
    network.set_outlet("out", pressure=2.9e5)
    flow = design.element_result("orifice", "volume_flow")
    narrow = flow.of(network.solve())
    network.set_element_values("diameter", 0.0713)
    wide = flow.of(network.solve())
    assert narrow > 1.01 * wide
    diameter = design.element_value("orifice", "diameter")
    with pytest.raises(tavell.BadInput, match="jumps past the target") as caught:
        design.goal_seek(network, diameter, flow, 0.5 * (narrow + wide), lower=0.0705, upper=0.072)
    assert "0.0712" in str(caught.value)


def test_without_scipy_the_same_is_found(monkeypatch):
    with_scipy = design.goal_seek(valve_between_tanks(), KV_OF_VALVE, FLOW, 1e-3)
    monkeypatch.setitem(sys.modules, "scipy.optimize", None)
    without = design.goal_seek(valve_between_tanks(), KV_OF_VALVE, FLOW, 1e-3)
    assert without.value == pytest.approx(with_scipy.value, rel=1e-7)
    with pytest.raises(ImportError, match="needs SciPy"):
        design.calibrate_roughness(valve_between_tanks(), {}, [])


def test_what_cannot_be_asked_is_refused():
    network = valve_between_tanks()
    with pytest.raises(tavell.BadInput, match='no quantity "flow"'):
        design.element_result("valve", "flow")
    with pytest.raises(tavell.BadInput, match="nowhere"):
        design.goal_seek(network, KV_OF_VALVE, design.node_result("nowhere", "pressure"), 1.0)
    with pytest.raises(tavell.BadInput, match="none"):
        design.goal_seek(network, design.element_value("none", "kv"), FLOW, 1.0)
    with pytest.raises(tavell.BadInput, match="lower one first"):
        design.goal_seek(network, KV_OF_VALVE, FLOW, 1e-3, lower=5.0, upper=2.0)
    with pytest.raises(tavell.BadInput, match="above 0"):
        design.goal_seek(network, KV_OF_VALVE, FLOW, 1e-3, lower=0.0, upper=2.0)
    with pytest.raises(tavell.BadInput, match="no number to start from"):
        design.goal_seek(network, design.node_value("in", "inlet/temperature"), FLOW, 1e-3)
    with pytest.raises(tavell.BadInput, match="no pump"):
        design.goal_seek(network, design.pump_speed("valve"), FLOW, 1e-3)
    with pytest.raises(tavell.BadInput, match="finite"):
        design.goal_seek(network, KV_OF_VALVE, FLOW, math.nan)
    with pytest.raises(tavell.BadInput, match="at least one"):
        design.element_value([], "kv")


def test_brent_finds_what_scipy_finds():
    optimize = pytest.importorskip("scipy.optimize")
    for function, a, b in (
        (lambda x: x**3 - 2 * x - 5, 2.0, 3.0),  # Wallis' equation
        (lambda x: math.cos(x) - x, 0.0, 1.0),
        (lambda x: math.exp(-x) - 1e-9, 0.0, 100.0),
        (lambda x: math.copysign(1.0, x - 0.3), 0.0, 1.0),
        (lambda x: x**3 + x - 1, -1.0, 1.5),
        (lambda x: x - 2.0, 2.0, 3.0),
    ):
        calls = []

        def counted(x):
            calls.append(x)
            return function(x)

        assert brent(counted, a, b, 1e-12) == pytest.approx(optimize.brentq(function, a, b), abs=1e-11)
        assert len(calls) < 120


def test_affinity_scales_flow_with_speed_and_pressure_with_its_square():
    curve = [(0.0, "4 bar"), ("1 l/s", 3.8e5), (2e-3, 3e5), (3e-3, 1.5e5)]
    assert design.pump_affinity(curve, 0.5) == [(0.0, 1e5), (5e-4, 9.5e4), (1e-3, 7.5e4), (1.5e-3, 3.75e4)]
    trimmed = design.pump_affinity(curve, diameter_ratio=0.9)
    assert trimmed[3] == (pytest.approx(2.7e-3), pytest.approx(0.81 * 1.5e5))
    similar = design.pump_affinity(curve, 2.0, 0.5, impeller="similar")
    assert similar[3] == (pytest.approx(3e-3 * 2 / 8), pytest.approx(1.5e5))


def test_affinity_in_a_network_scales_the_flow():
    network = pump_and_valve()
    slower = design.with_pump_affinity(network, "pump", 0.5)
    assert FLOW.of(slower.solve()) == pytest.approx(0.5 * FLOW.of(network.solve()), rel=1e-6)


def test_a_pump_that_names_its_curve_keeps_its_density():
    content = pump_and_valve().to_dict()
    points = content["elements"][0].pop("curve")
    density = content["elements"][0].pop("reference_density")
    content["curves"] = {"type A": {"points": points, "reference_density": density + 200.0}}
    content["elements"][0]["curve"] = "type A"
    network = tavell.Network.from_json(content)
    same = design.with_pump_affinity(network, "pump")
    assert FLOW.of(same.solve()) == pytest.approx(FLOW.of(network.solve()), rel=1e-9)
    assert same.element_values("reference_density", "pump")[0] == density + 200.0


def test_affinity_refuses_what_is_no_ratio():
    curve = [(0.0, 4e5), (1e-3, 3.8e5), (2e-3, 3e5), (3e-3, 1.5e5)]
    for arguments in ({"speed_ratio": 0.0}, {"diameter_ratio": -1.0}, {"speed_ratio": math.inf}):
        with pytest.raises(tavell.BadInput, match="above 0"):
            design.pump_affinity(curve, **arguments)
    with pytest.raises(tavell.BadInput, match="trimmed"):
        design.pump_affinity(curve, impeller="wide")
    with pytest.raises(tavell.BadInput, match="no pump"):
        design.with_pump_affinity(valve_between_tanks(), "valve", 0.5)


def test_the_published_pump_example_is_met_again_from_another_speed():
    """Slowed down and brought back by goal seek, the pump has its speed again."""
    network = tavell.Network.from_json(EXAMPLES / "pump_static_head.json")
    (pump,) = [n for n, kind in zip(network.element_names, network.element_types) if kind == "pump"]
    wanted = design.element_result(pump, "volume_flow")
    slow = design.with_pump_affinity(network, pump, 0.95)
    found = design.goal_seek(slow, design.pump_speed(pump), wanted, wanted.of(network.solve()))
    assert found.value == pytest.approx(1 / 0.95, rel=1e-5)
