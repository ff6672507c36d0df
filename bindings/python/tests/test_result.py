"""Results: values without a copy, frames, units, certificate, files, checks."""

import gc
import json
import math
import weakref

import numpy as np
import pandas as pd
import pytest
from conftest import EXAMPLES
from networks import two_pipes, unsolvable

import tavell
from tavell import _units
from tavell._library import LIBRARY


def test_the_published_answer_is_found(result):
    # White, Fluid Mechanics, three reservoirs: 34.53 m of head at the junction, 52.8 m3/h into reservoir 1.
    assert result.node("junction")["head"] == pytest.approx(34.53, abs=0.02)
    assert 3600 * result.element("pipe 1")["volume_flow"] == pytest.approx(52.8, rel=0.01)
    assert result.converged and result.outcome == "converged"
    assert result.iterations > 0
    assert result.has_values


@pytest.mark.parametrize("path", sorted(EXAMPLES.glob("*.json")), ids=lambda path: path.name)
def test_every_example_has_its_answer(path):
    network = tavell.Network.read(path)
    result = network.solve()
    answer = network.to_dict().get("answer", {})
    tolerance = answer.get("tolerance", 0.01)
    for kind, frame in (("nodes", result.nodes), ("elements", result.elements)):
        for name, values in answer.get(kind, {}).items():
            for quantity, expected in values.items():
                if expected != 0:
                    assert frame.loc[name, quantity] == pytest.approx(expected, rel=tolerance)


# Values without a copy


def test_an_array_is_the_memory_of_the_library(result):
    for quantity in ("pressure", "external_mass_flow", "mass_residual"):
        values = result.node_values(quantity)
        assert values.ctypes.data == LIBRARY.tvkNodeResults(result._live.address, quantity.encode())
        assert values.ctypes.data == result.node_values(quantity).ctypes.data
    flows = result.element_values("mass_flow")
    assert flows.ctypes.data == LIBRARY.tvkElementResults(result._live.address, b"mass_flow")
    assert flows.dtype == np.float64 and flows.shape == (3,)


def test_an_array_cannot_be_written(result):
    values = result.node_values("pressure")
    with pytest.raises(ValueError):
        values[0] = 1.0
    with pytest.raises(ValueError):
        values.flags.writeable = True
    with pytest.raises(ValueError):
        values[1:].flags.writeable = True


def test_an_array_keeps_the_result_alive(reservoirs):
    result = reservoirs.solve()
    expected = result.node_values("pressure").copy()
    values = result.node_values("pressure")[1:]
    handle = weakref.ref(result._live)
    del result
    gc.collect()
    assert handle() is not None
    np.testing.assert_array_equal(values, expected[1:])
    del values
    gc.collect()
    assert handle() is None


def test_an_array_outlives_a_closed_result(reservoirs):
    with reservoirs.solve() as result:
        values = result.node_values("pressure")
        frame = result.nodes
        expected = values.copy()
    gc.collect()
    np.testing.assert_array_equal(values, expected)
    np.testing.assert_array_equal(frame["pressure"], expected)


def test_a_frame_shows_the_same_memory(result):
    for frame, values_of in ((result.nodes, result.node_values), (result.elements, result.element_values)):
        for quantity in frame.columns:
            assert np.shares_memory(frame[quantity].to_numpy(), values_of(quantity))


def test_every_quantity_that_is_named_exists(result):
    for quantity in _units.NODE_QUANTITIES:
        assert result.node_values(quantity).shape == (4,)
    for quantity in _units.ELEMENT_QUANTITIES:
        assert result.element_values(quantity).shape == (3,)


def test_an_unknown_quantity_is_refused(result):
    for call in (result.node_values, result.element_values):
        with pytest.raises(tavell.BadInput, match='there is no quantity "colour"; give one of'):
            call("colour")


# Frames and units


def test_frames_are_indexed_by_name_and_know_their_units(result):
    nodes, elements = result.nodes, result.elements
    assert list(nodes.index) == ["reservoir 1", "reservoir 2", "reservoir 3", "junction"]
    assert nodes.index.name == "node" and elements.index.name == "element"
    assert list(nodes.columns) == ["pressure", "head", "temperature", "external_mass_flow"]
    assert list(elements.columns) == [
        "mass_flow", "volume_flow", "velocity", "reynolds", "pressure_difference", "temperature",
    ]  # fmt: skip
    assert nodes.attrs["units"] == {
        "pressure": "Pa", "head": "m", "temperature": "K", "external_mass_flow": "kg/s",
    }  # fmt: skip
    assert elements.attrs["units"]["reynolds"] == ""


def test_a_frame_may_be_given_columns_without_a_change_of_the_result(result):
    frame = result.nodes
    frame["colour"] = "red"
    frame.attrs["units"]["pressure"] = "bar"
    assert "colour" not in result.nodes
    assert result.nodes.attrs["units"]["pressure"] == "Pa"


def test_the_numbers_of_a_frame_stay_as_they_are(result):
    expected = result.node_values("pressure").copy()
    frame = result.nodes
    try:
        frame.loc["junction", "pressure"] = 0.0
    except ValueError:
        pass
    np.testing.assert_array_equal(result.node_values("pressure"), expected)
    own = result.nodes.copy()
    own.loc["junction", "pressure"] = 0.0
    np.testing.assert_array_equal(result.node_values("pressure"), expected)


def test_frames_work_with_the_usual_operations(result):
    frame = result.elements
    assert frame["mass_flow"].sum() == pytest.approx(frame.sum()["mass_flow"])
    assert len(frame[frame["velocity"] > 2]) == 2
    assert list(frame.sort_values("velocity").index) == ["pipe 3", "pipe 1", "pipe 2"]
    assert pd.concat([frame, frame]).shape == (6, 6)
    assert not math.isnan(frame.describe().loc["mean", "velocity"])
    assert frame.join(result.network.elements[["diameter"]])["diameter"].iloc[0] == 0.08
    assert frame.groupby(frame["velocity"] > 2)["mass_flow"].count().sum() == 3


@pytest.mark.parametrize("units", ["metric", "us", "si", "metric,pressure=kPa,mass_flow=kg/h", "head=ft", ""])
def test_frames_in_other_units_are_the_tables_of_the_kit(result, units):
    tables = json.loads(result.tables(format="json", units=units))
    for kind, frame in (("nodes", result.node_frame(units)), ("elements", result.element_frame(units))):
        for row in tables[kind]:
            for quantity in frame.columns:
                if quantity in row and row[quantity] is not None:
                    assert frame.loc[row["name"], quantity] == pytest.approx(row[quantity], rel=1e-12)
                    assert frame.attrs["units"][quantity] == tables["units"][quantity]


def test_temperatures_have_other_units_too():
    result = tavell.Network.read(EXAMPLES / "electric_water_heater.tavell.json").solve()
    kelvins = result.nodes["temperature"]
    np.testing.assert_allclose(result.node_frame("metric")["temperature"], kelvins - 273.15, rtol=1e-12)
    np.testing.assert_allclose(result.node_frame("us")["temperature"], kelvins * 1.8 - 459.67, rtol=1e-12)


def test_unknown_units_are_refused(result):
    for units in ("imperial", "pressure=metre", "us,us"):
        with pytest.raises(tavell.BadInput):
            result.node_frame(units)
        with pytest.raises(tavell.BadInput):
            result.tables(units=units)


# Solving


def test_temperatures_are_solved_on_request():
    network = tavell.Network.read(EXAMPLES / "electric_water_heater.tavell.json")
    for energy, is_solved in ((True, True), (False, False), (None, True)):
        result = network.solve(energy=energy)
        assert json.loads(result.to_json())["temperatures_solved"] is is_solved
        assert (result.certificate()["energy_imbalance"] is not None) is is_solved
    without = tavell.Network.read(EXAMPLES / "two_loops.json").solve(energy=False)
    assert np.ptp(without.node_values("temperature")) == 0


def test_a_solve_without_a_solution_is_an_error_with_its_result():
    with pytest.raises(tavell.NotConverged) as caught:
        unsolvable().solve()
    assert caught.value.findings.codes == ["not-converged"]
    assert "without meeting its criterion" in str(caught.value)
    result = caught.value.result
    assert result.outcome == "not converged"
    assert not result.converged
    assert result.iterations > 100
    assert "solve-failed" in result.diagnose().codes


def test_a_solve_without_a_solution_may_be_a_result():
    result = unsolvable().solve(must_converge=False)
    assert result.findings.codes == ["not-converged"]
    assert not result.certificate().is_good
    if not result.has_values:
        assert list(result.nodes.columns) == []
        assert list(result.nodes.index) == ["main", "joint", "user"]
        with pytest.raises(tavell.BadInput, match="has no values"):
            result.node_values("pressure")


def test_a_network_that_cannot_be_solved_is_bad_input():
    network = tavell.Network()
    with pytest.raises(tavell.BadInput) as caught:
        network.solve()
    assert "empty-network" in caught.value.findings.codes


def test_a_network_may_change_after_its_solve(reservoirs):
    result = reservoirs.solve()
    expected = result.node_values("pressure").copy()
    reservoirs.set_element_values("diameter", 0.2)
    np.testing.assert_array_equal(result.node_values("pressure"), expected)
    assert result.network.element_values("diameter", 0) == [0.08]
    assert reservoirs.solve().node_values("pressure")[3] != expected[3]


# Checks


def test_check_says_what_is_doubtful_before_a_solve(reservoirs):
    assert not reservoirs.check().errors
    reservoirs.set_element_values("diameter", 7.5, "pipe 1")
    assert "diameter-unlikely" in reservoirs.check().codes
    assert "empty-network" in tavell.Network().check().codes


def test_the_doctor_names_what_to_mend_first():
    findings = unsolvable().doctor()
    assert findings[0].severity == "error"
    assert {"valve-against-only-flow", "solve-failed", "smallest-failing-part"} <= set(findings.codes)
    assert "empty-network" in tavell.Network().doctor().codes
    assert not two_pipes().doctor().errors


def test_the_doctor_says_nothing_twice_about_a_network_that_cannot_be_solved():
    network = two_pipes()
    network.set_node_values("inlet/pressure", math.nan, "tank")
    network.set_node_values("outlet/pressure", math.nan, "tap")
    findings = network.doctor()
    assert findings.errors
    assert len(set(findings)) == len(findings)


def test_the_smallest_part_that_fails_is_found(reservoirs):
    part = unsolvable().smallest_failing_part()
    assert "valve" in part.elements
    assert part.why and part.findings.codes == ["smallest-failing-part"]
    assert reservoirs.smallest_failing_part().elements == ()


def test_the_certificate_is_a_mapping_with_words(result):
    certificate = result.certificate()
    assert certificate.is_good is True
    assert certificate["elements_checked"] == 3
    assert certificate["energy_imbalance"] is None
    assert certificate["relative_mass_imbalance"] < 1e-5
    assert "worst_node" in certificate and len(certificate) == len(list(certificate))
    assert str(certificate).startswith("Certificate: good; mass imbalance")
    assert repr(certificate) == "<Certificate: good>"


def test_a_changed_result_file_does_not_verify(result):
    assert not result.verify().errors
    content = json.loads(result.to_json())
    content["elements"]["mass_flow"][0] *= 1.01
    assert "certificate-differs" in tavell.Result.from_json(json.dumps(content)).verify().codes


# Files


def test_the_result_file_reads_back_as_the_same(result, tmp_path):
    text = result.to_json()
    assert tavell.Result.from_json(text).to_json() == text
    assert tavell.Result.from_json(text.encode()).to_json() == text
    result.to_json(tmp_path / "r.json")
    again = tavell.Result.from_json(tmp_path / "r.json")
    assert again.to_json() == text
    assert not again.verify().errors
    pd.testing.assert_frame_equal(again.nodes, result.nodes)
    pd.testing.assert_frame_equal(again.elements, result.elements)


def test_what_is_no_result_file_is_refused(example):
    for source in ("{}", b"[]", example):
        with pytest.raises(tavell.BadInput):
            tavell.Result.from_json(source)


def test_tables_are_text_csv_and_json(result, tmp_path):
    assert "junction" in result.tables()
    assert "bar" in result.tables(units="metric")
    text = result.to_csv(units="metric")
    assert text == result.tables(format="csv", units="metric")
    result.to_csv(tmp_path / "out.csv", units="metric")
    assert (tmp_path / "out.csv").read_text(encoding="utf-8") == text
    result.to_exchange_csv(tmp_path / "exchange.csv")
    assert (tmp_path / "exchange.csv").read_text(encoding="utf-8") == result.to_exchange_csv()
    assert result.to_exchange_csv().startswith('"element","Re [-]"')
    with pytest.raises(tavell.BadInput):
        result.tables(format="xml")


def test_results_are_made_by_a_solve():
    with pytest.raises(TypeError, match="made by Network.solve"):
        tavell.Result()
