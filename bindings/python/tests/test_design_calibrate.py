"""Calibration: roughness is found again from what was computed with it."""

import math

import numpy as np
import pytest

import tavell
from tavell import design

pytest.importorskip("scipy")

TRUTH = {"old": 1.2e-3, "new": 1e-4}
GROUPS = {"old": ["p1", "p2"], "new": ["p3", "p4", "p5"]}


def town(old=TRUTH["old"], new=TRUTH["new"]):
    """Two old pipes and a ring of new ones; a hydrant is open at night."""
    network = tavell.Network()
    at = [[0, 0, 0], [300, 0, 0], [600, 0, 0], [900, 0, 0], [750, 200, 0]]
    network.add_nodes(["source", "a", "b", "c", "d"], at)
    network.add_elements(
        ["p1", "p2", "p3", "p4", "p5"],
        "pipe",
        ["source", "a", "b", "b", "c"],
        ["a", "b", "c", "d", "d"],
        diameter=0.15,
        roughness=[old, old, new, new, new],
    )
    network.set_inlet("source", pressure=6e5)
    network.set_outlet(["c", "d"], mass_flow=[8.0, 10.0])
    content = network.to_dict()
    content["scenarios"] = {"hydrant": {"nodes": {"c": {"outlet": {"mass_flow": 25.0}}}}}
    return tavell.Network.from_json(content)


def measured(network, deviation=None, noise=0.0):
    """Pressures of day and night, and a flow, as the network has them, with noise."""
    generator = np.random.default_rng(11)
    rows = []
    for scenario in (None, "hydrant"):
        result = network.solve(scenario=scenario)
        for name in ("a", "b", "c", "d"):
            reading = design.node_result(name, "pressure")
            value = reading.of(result) + noise * generator.standard_normal()
            rows.append(design.Measurement(reading, value, deviation, scenario))
    return rows


def test_the_roughness_of_two_groups_is_recovered():
    start = town(3e-4, 3e-4)
    before = start.to_json()
    found = design.calibrate_roughness(start, GROUPS, measured(town()))
    assert start.to_json() == before
    for name, truth in TRUTH.items():
        assert found.groups.loc[name, "value"] == pytest.approx(truth, rel=1e-4)
    assert found.deviation < 1.0  # Pa
    assert not found.groups["at_limit"].any()
    np.testing.assert_allclose(found.network.element_values("roughness")[[0, 1]], TRUTH["old"], rtol=1e-4)
    assert list(found.groups["key"]) == ["roughness", "roughness"]
    assert found.groups.attrs["units"] == {"old": "m", "new": "m"}
    assert len(found.residuals) == 8 and set(found.residuals["scenario"]) == {"", "hydrant"}


def test_noisy_measurements_give_the_truth_within_their_errors():
    rows = measured(town(), deviation=500.0, noise=500.0)
    found = design.calibrate_roughness(town(3e-4, 3e-4), GROUPS, rows)
    for name, truth in TRUTH.items():
        row = found.groups.loc[name]
        assert row["low"] < truth < row["high"]
        assert row["low"] < row["value"] < row["high"]
        assert 0.0 < row["standard_error"] < 0.5 * row["value"]
    assert 0.3 < found.deviation < 2.0  # chi of 6 degrees of freedom: 99.9 % are within
    assert abs(found.residuals["weighted"]).max() < 4.0
    residual = found.residuals["computed"] - found.residuals["measured"]
    np.testing.assert_allclose(found.residuals["residual"], residual, atol=1e-6)
    assert found.correlation.loc["old", "old"] == pytest.approx(1.0)
    assert -1.0 < found.correlation.loc["old", "new"] < 0.0


def test_the_standard_error_is_that_of_the_pipe_law():
    """One pipe, one pressure: the error of the roughness is that of the loss by the slope of the law."""
    network = tavell.Network()
    network.add_nodes(["in", "out"], [[0, 0, 0], [1000, 0, 0]])
    network.add_pipe("pipe", "in", "out", 0.2, roughness=1e-3)
    network.set_inlet("in", pressure=6e5)
    network.set_outlet("out", volume_flow=0.04)
    network.patch({"fluid": {"name": "test water", "density": 1000.0, "viscosity": 1e-3}})
    velocity = 0.04 / (math.pi * 0.2**2 / 4)

    def loss(roughness):
        """Weisbach, Swamee and Jain (1976) [Pa]."""
        reynolds = velocity * 0.2 * 1000.0 / 1e-3
        friction = 0.25 / math.log10(roughness / 0.2 / 3.7 + 5.74 / reynolds**0.9) ** 2
        return friction * 1000 / 0.2 * 1000.0 * velocity**2 / 2

    reading = design.node_result("out", "pressure")
    measurement = design.Measurement(reading, 6e5 - loss(5e-4), 1000.0)
    found = design.calibrate_roughness(network, {"all": "pipe"}, [measurement])
    row = found.groups.loc["all"]
    assert row["value"] == pytest.approx(5e-4, rel=1e-4)
    slope = (loss(5.01e-4) - loss(4.99e-4)) / 2e-6
    assert row["standard_error"] == pytest.approx(1000.0 / slope, rel=1e-3)
    # 1.96 of the normal distribution, symmetric in the logarithm.
    assert row["high"] == pytest.approx(5e-4 * math.exp(1.959964 * 1000.0 / slope / 5e-4), rel=1e-3)
    assert math.isnan(found.deviation)


def test_the_coefficient_of_hazen_williams_pipes_is_recovered_from_a_flow():
    network = tavell.Network()
    network.add_nodes(["in", "out"], [[0, 0, 0], [1000, 0, 0]])
    network.add_hazen_williams_pipe("pipe", "in", "out", 0.2, 104.0)
    network.set_inlet("in", pressure=6e5)
    network.set_outlet("out", pressure=5.5e5)
    reading = design.element_result("pipe", "volume_flow")
    flow = reading.of(network.solve())
    network.set_element_values("coefficient", 140.0)
    found = design.calibrate_roughness(
        network, {"main": ["pipe"]}, [design.Measurement(reading, f"{flow * 1000!r} l/s", 1e-5)]
    )
    # Q ~ C at a given loss: the errors are in the ratio of the values.
    assert found.groups.loc["main", "value"] == pytest.approx(104.0, rel=1e-6)
    assert found.groups.loc["main", "standard_error"] == pytest.approx(104.0 * 1e-5 / flow, rel=1e-3)
    assert found.groups.loc["main", "key"] == "coefficient"


def test_a_loss_that_no_roughness_explains_ends_at_the_limit():
    rows = [design.Measurement(design.node_result("b", "pressure"), 6.5e5)]  # above the source
    found = design.calibrate_roughness(town(), {"old": ["p1", "p2"]}, rows + rows)
    assert found.groups.loc["old", "at_limit"]


def test_groups_that_the_measurements_do_not_tell_are_named():
    rows = measured(town())
    only_a = [row for row in rows if row.reading.name == "a"]
    with pytest.raises(tavell.BadInput, match='no measurement depends on the roughness of "new"'):
        design.calibrate_roughness(town(), GROUPS, only_a)
    apart = {"first": "p1", "second": "p2"}
    only_b = [row for row in rows if row.reading.name == "b"]
    with pytest.raises(tavell.BadInput, match='"first", "second" apart'):
        design.calibrate_roughness(town(), apart, only_b)
    # The ring is told by the pressures behind it, and is not named.
    behind = [row for row in rows if row.reading.name in ("b", "c", "d")]
    three = {"ring": ["p3", "p4", "p5"], **apart}
    with pytest.raises(tavell.BadInput, match='tell the groups "first", "second" apart'):
        design.calibrate_roughness(town(), three, behind)


def test_measurements_without_sense_are_refused():
    network, rows = town(), measured(town())
    with pytest.raises(tavell.BadInput, match="1 measurements for 2 groups"):
        design.calibrate_roughness(network, GROUPS, rows[:1])
    with pytest.raises(tavell.BadInput, match="no groups"):
        design.calibrate_roughness(network, {}, rows)
    with pytest.raises(tavell.BadInput, match='"p2" is in the groups'):
        design.calibrate_roughness(network, {"x": ["p1", "p2"], "y": ["p2"]}, rows)
    mixed = rows[:3] + [design.Measurement(rows[3].reading, rows[3].value, 10.0)]
    with pytest.raises(tavell.BadInput, match="1 of 4"):
        design.calibrate_roughness(network, GROUPS, mixed)
    nothing = [design.Measurement(row.reading, row.value, 0.0) for row in rows]
    with pytest.raises(tavell.BadInput, match="above 0"):
        design.calibrate_roughness(network, GROUPS, nothing)
    unknown = [design.Measurement(rows[0].reading, 1e5, None, "day")] * 2
    with pytest.raises(tavell.BadInput, match="day"):
        design.calibrate_roughness(network, GROUPS, unknown)
    network.add_node("e", 1000)
    network.add_kv_valve("valve", "c", "e", 0.1, 10.0)
    with pytest.raises(tavell.BadInput, match='"valve" of the group "x" is a kv_valve'):
        design.calibrate_roughness(network, {"x": ["valve"]}, rows)
