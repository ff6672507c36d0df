"""Sensitivities against closed forms."""

import math

import pytest
from test_design_seek import pump_and_valve, valve_between_tanks

import tavell
from tavell import design

FLOW = design.element_result("valve", "volume_flow")


def test_derivatives_of_a_valve_are_those_of_its_law_within_their_errors():
    """Q = X sqrt(dp / (KV rho)): elasticity 1 to Kv; derivative Q / (2 dp) to the inlet's pressure."""
    network = valve_between_tanks()
    before = network.to_json()
    flow = FLOW.of(network.solve())
    pressure = design.node_value("in", "inlet/pressure")
    table = design.sensitivities(network, [design.element_value("valve", "kv"), pressure], [FLOW])
    assert network.to_json() == before
    kv, inlet = table.to_dict("records")
    for row, exact in ((kv, flow / 10.0), (inlet, flow / (2 * 1e5))):
        assert row["derivative"] == pytest.approx(exact, rel=1e-7)
        assert abs(row["derivative"] - exact) <= row["error"] <= 1e-6 * abs(exact)
    assert kv["elasticity"] == pytest.approx(1.0, rel=1e-7)
    assert inlet["elasticity"] == pytest.approx(3e5 / (2 * 1e5), rel=1e-7)  # p / (2 dp)
    assert (kv["unit"], inlet["unit"]) == ("m3/s/(m3/h at 1 bar)", "m3/s/Pa")
    assert (kv["given"], inlet["given"]) == (10.0, 3e5)
    assert table.attrs["units"] == {
        'kv of "valve"': "m3/h at 1 bar",
        'inlet/pressure of "in"': "Pa",
        'volume_flow of "valve"': "m3/s",
    }


def test_the_error_covers_a_strongly_curved_law():
    """Close to no pressure difference the square root has steep higher derivatives: the first step is then a
    fifth of the way to where the flow ends."""
    network = valve_between_tanks()
    network.set_inlet("in", pressure=2.08e5)
    flow = FLOW.of(network.solve())
    inlet = design.node_value("in", "inlet/pressure")
    (row,) = design.sensitivities(network, [inlet], [FLOW], step=0.03).to_dict("records")
    exact = flow / (2 * 8e3)
    assert abs(row["derivative"] - exact) <= row["error"] < 1e-6 * exact
    assert row["step"] < 0.03 * 2.08e5


def test_flow_follows_speed_and_pressure_its_square():
    rise = design.element_result("pump", "pressure_difference")
    table = design.sensitivities(pump_and_valve(), [design.pump_speed("pump")], [FLOW, rise])
    # No static part: Q ~ n, dp ~ n^2.
    assert list(table["elasticity"]) == [pytest.approx(1.0, rel=1e-5), pytest.approx(2.0, rel=1e-5)]
    assert list(table["unit"]) == ["m3/s", "Pa"]


def test_laminar_loss_falls_with_the_fourth_power_of_the_diameter():
    """Hagen and Poiseuille: dp = 128 mu L Q / (pi D^4)."""
    network = tavell.Network()
    network.add_nodes(["in", "out"], [[0, 0, 0], [10, 0, 0]])
    network.add_pipe("pipe", "in", "out", 0.02)
    network.set_inlet("in", pressure=2e5)
    network.set_outlet("out", volume_flow=5e-5)
    network.patch({"fluid": {"name": "test oil", "density": 900.0, "viscosity": 0.1}})
    loss = design.element_result("pipe", "pressure_difference")
    inputs = [design.element_value("pipe", "diameter"), design.node_value("out", "outlet/volume_flow")]
    table = design.sensitivities(network, inputs, [loss])
    assert table["found"][0] == pytest.approx(-128 * 0.1 * 10 * 5e-5 / (math.pi * 0.02**4), rel=1e-6)
    assert table["elasticity"][0] == pytest.approx(-4.0, rel=1e-5)
    assert table["elasticity"][1] == pytest.approx(1.0, rel=1e-5)
    assert (abs(table["elasticity"] - [-4.0, 1.0]) <= table["elasticity_error"]).all()


def test_what_does_not_follow_has_a_derivative_of_nothing():
    inlet = design.node_value("in", "inlet/pressure")
    outlet = design.node_result("out", "pressure")
    (row,) = design.sensitivities(valve_between_tanks(), [inlet], [outlet]).to_dict("records")
    assert abs(row["derivative"]) <= row["error"] < 1e-6


def test_an_input_of_nothing_has_no_elasticity():
    network = pump_and_valve()
    (row,) = design.sensitivities(network, [design.node_value("in", "inlet/pressure")], [FLOW]).to_dict(
        "records"
    )
    assert math.isnan(row["elasticity"])
    assert row["derivative"] > 0.0


def test_steps_that_do_not_solve_are_made_smaller():
    """A pipe of 50.5 m between nodes 50 m apart: 5 % less is refused, 0.6 % is not."""
    network = tavell.Network()
    network.add_nodes(["in", "out"], [[0, 0, 0], [30, 40, 0]])
    network.add_pipe("pipe", "in", "out", 0.1, length=50.5)
    network.set_inlet("in", pressure=3e5)
    network.set_outlet("out", mass_flow=10.0)
    loss = design.element_result("pipe", "pressure_difference")
    (row,) = design.sensitivities(network, [design.element_value("pipe", "length")], [loss]).to_dict(
        "records"
    )
    assert row["elasticity"] == pytest.approx(1.0, rel=1e-6)
    assert row["step"] <= 0.5


def test_inputs_without_a_number_are_refused():
    network = valve_between_tanks()
    with pytest.raises(tavell.BadInput, match="has no number"):
        design.sensitivities(network, [design.node_value("in", "inlet/temperature")], [FLOW])
    with pytest.raises(tavell.BadInput, match="at least one of each"):
        design.sensitivities(network, [], [FLOW])
    with pytest.raises(tavell.BadInput, match="first step"):
        design.sensitivities(network, [design.element_value("valve", "kv")], [FLOW], step=1.5)
    with pytest.raises(tavell.BadInput, match="nowhere"):
        design.sensitivities(
            network, [design.element_value("valve", "kv")], [design.node_result("nowhere", "head")]
        )
