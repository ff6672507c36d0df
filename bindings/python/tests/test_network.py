"""Networks: files, building in code, values, scenarios."""

import json
import math
import pathlib

import numpy as np
import pandas as pd
import pytest
from conftest import EXAMPLES, ROOT
from networks import two_pipes

import tavell

CURVE = [(0, 4e5), (1e-3, 3.9e5), (2e-3, 3.5e5), (3e-3, 2.5e5)]


def codes_of(call):
    with pytest.raises(tavell.BadInput) as caught:
        call()
    return caught.value.findings.codes


# In and out


def test_a_file_is_read_by_path_text_bytes_and_dict(example):
    by_path = tavell.Network.from_json(example)
    text = example.read_text(encoding="utf-8")
    for source in (str(example), text, "\ufeff\n" + text, text.encode(), json.loads(text)):
        assert tavell.Network.from_json(source).hash() == by_path.hash()
    assert by_path.node_names == ("reservoir 1", "reservoir 2", "reservoir 3", "junction")
    assert by_path.element_names == ("pipe 1", "pipe 2", "pipe 3")
    assert by_path.element_types == ("pipe", "pipe", "pipe")


def test_a_dict_may_hold_numbers_and_arrays_of_numpy(example):
    content = json.loads(example.read_text(encoding="utf-8"))
    content["nodes"][0]["at"] = np.array(content["nodes"][0]["at"])
    content["fluid"]["density"] = np.int64(1000)
    assert tavell.Network.from_json(content).hash() == tavell.Network.from_json(example).hash()


@pytest.mark.parametrize("value", [math.nan, math.inf, object(), {1, 2}])
def test_a_dict_that_is_no_json_is_refused(value):
    assert codes_of(lambda: tavell.Network.from_json({"tavell": value})) == ["bad-option"]


def test_a_file_that_is_not_there_is_bad_input():
    assert codes_of(lambda: tavell.Network.from_json(pathlib.Path("no-such-file.json"))) == [
        "cannot-open-file"
    ]


def test_the_canonical_text_reads_back_as_the_same(reservoirs, tmp_path):
    text = reservoirs.to_json()
    assert tavell.Network.from_json(text).to_json() == text
    reservoirs.to_json(tmp_path / "out.json")
    assert (tmp_path / "out.json").read_text(encoding="utf-8") == text
    assert tavell.Network.from_json(reservoirs.to_dict()).to_json() == text


@pytest.mark.parametrize("path", sorted(EXAMPLES.glob("*.json")), ids=lambda path: path.name)
def test_every_example_reads_back_as_the_same(path):
    network = tavell.Network.read(path)
    assert tavell.Network.from_json(network.to_json()).hash() == network.hash()


def test_tables_read_back_as_the_same(reservoirs, tmp_path):
    nodes, elements = tmp_path / "nodes.csv", tmp_path / "elements.csv"
    warnings = reservoirs.to_csv(nodes, elements)
    assert set(warnings.codes) == {"csv-cannot-hold"}
    again = tavell.Network.from_csv(nodes, elements)
    assert again.to_dict()["nodes"] == reservoirs.to_dict()["nodes"]
    assert again.to_dict()["elements"] == reservoirs.to_dict()["elements"]
    assert tavell.Network.read(f"{nodes},{elements}").hash() == again.hash()


def test_an_epanet_file_is_imported_with_what_could_not_be_carried_over():
    network = tavell.Network.from_inp(EXAMPLES / "village.inp")
    assert network.element_count > 0
    assert network.findings
    assert not network.findings.errors
    assert network.solve().certificate().is_good


def test_an_epanet_file_is_imported_at_a_time():
    path = ROOT / "tests" / "kit" / "networks" / "demands_and_patterns.inp"
    at_start = tavell.Network.from_inp(path)
    assert tavell.Network.from_inp(path, time="00:00").hash() == at_start.hash()
    assert tavell.Network.from_inp(path, time=3 * 3600).hash() != at_start.hash()
    assert codes_of(lambda: tavell.Network.from_inp(path, time="noon")) == ["bad-option"]


def test_pressure_valves_are_frozen_on_request():
    path = ROOT / "tests" / "kit" / "networks" / "frozen_valves.inp"
    assert tavell.Network.from_inp(path, freeze_valves=True).element_count > 0


def test_a_file_with_errors_can_be_examined(tmp_path):
    path = tmp_path / "bad.json"
    path.write_text('{"tavell": 1, "nodes": [], "elements": []}', encoding="utf-8")
    assert tavell.check_file(path).errors
    assert not tavell.check_file(EXAMPLES / "two_loops.json").errors
    assert tavell.check_file(EXAMPLES / "village.inp", time="01:00").codes


def test_a_copy_is_a_network_of_its_own(reservoirs):
    copy = reservoirs.copy()
    assert copy.hash() == reservoirs.hash()
    copy.set_element_values("diameter", 0.1)
    assert copy.hash() != reservoirs.hash()


# Building


def test_a_network_built_in_code_is_that_of_a_file():
    built = two_pipes()
    read = tavell.Network.from_json(
        {
            "tavell": 1,
            "nodes": [
                {"name": "tank", "at": [0, 0, 10], "inlet": {"pressure": 0}},
                {"name": "tee", "at": [30, 0, 0], "outlet": {"volume_flow": "12 l/min"}},
                {"name": "tap", "at": [60, 0, 3], "outlet": {"pressure": 0}},
            ],
            "elements": [
                {"name": "main", "type": "pipe", "from": "tank", "to": "tee", "diameter": "28 mm",
                 "roughness": "1.5 um"},
                {"name": "branch", "type": "pipe", "from": "tee", "to": "tap", "diameter": 0.02, "k": 1.5},
            ],
        }
    )  # fmt: skip
    assert built.to_json() == read.to_json()


def test_every_type_can_be_added_and_read_back():
    network = tavell.Network()
    network.add_nodes(["a", "b"], [[0, 0, 0], [10, 0, 0]])
    network.set_inlet("a", pressure=2e5, temperature=300)
    network.set_outlet("b", pressure="1 bar")
    network.add_pipe("pipe", "a", "b", 0.1, length=12, roughness="0.1 mm", k=1, check_valve=True, closed=True)
    network.add_hazen_williams_pipe("hw", "a", 1, "100 mm", 130, length="11 m", k=0.5)
    network.add_pump("pump", 0, "b", CURVE, reference_density=998.2)
    network.add_loss("loss", "a", "b", [("0 l/min", 0), ("60 l/min", "0.1 bar"), (2e-3, 4e4), (3e-3, 9e4)])
    network.add_kv_valve("kv", "a", "b", 0.05, 12)
    network.add_cv_valve("cv", "a", "b", "5 cm", 14)
    network.add_element("orifice", "orifice", "a", "b", diameter=0.1, bore_diameter="50 mm")
    network.add_element("loss law", "general_loss", "a", "b", diameter=0.1, ck=0.1, a=1, b=0, c=4, d=2)
    network.add_element("limiter", "control_valve", "a", "b", diameter=0.1, mass_flow_limit="600 kg/min")
    network.add_element("check", "non_return", "a", "b", diameter=0.1)
    network.add_element("duct", "pipe", "a", "b", wetted_perimeter=0.4, area=0.01)
    again = tavell.Network.from_json(network.to_json())
    assert again.to_json() == network.to_json()
    frame = again.elements
    assert list(frame["type"]) == [
        "pipe", "hazen_williams_pipe", "pump", "loss", "kv_valve", "cv_valve", "orifice", "general_loss",
        "control_valve", "non_return", "pipe",
    ]  # fmt: skip
    assert frame.loc["pipe", "roughness"] == 1e-4
    assert frame.loc["pipe", "closed"] and frame.loc["pipe", "check_valve"]
    assert frame.loc["hw", "coefficient"] == 130
    assert frame.loc["limiter", "mass_flow_limit"] == 10
    assert frame.loc["duct", "area"] == 0.01
    assert frame.loc["orifice", "bore_diameter"] == 0.05
    assert math.isnan(frame.loc["pump", "diameter"])
    assert frame.attrs["units"]["diameter"] == "m"
    loss = [each for each in network.to_dict()["elements"] if each["name"] == "loss"][0]
    assert loss["curve"][1] == [1e-3, 1e4]


def test_the_given_nodes_are_a_frame_by_name():
    frame = two_pipes().nodes
    assert list(frame.index) == ["tank", "tee", "tap"]
    assert list(frame["boundary"]) == ["inlet", "outlet", "outlet"]
    assert frame.loc["tee", "volume_flow"] == 2e-4
    assert math.isnan(frame.loc["tee", "pressure"])
    assert frame.loc["tap", "x"] == 60
    assert frame.attrs["units"]["volume_flow"] == "m3/s"


@pytest.mark.parametrize(
    "call",
    [
        lambda network: network.add_node("tank"),
        lambda network: network.add_node(""),
        lambda network: network.add_node("new", math.nan),
        lambda network: network.add_node("new", inlet={"colour": 1}),
        lambda network: network.add_node("new", inlet={"pressure": math.inf}),
        lambda network: network.add_node("new", inlet={"pressure": "3 m"}),
        lambda network: network.add_node("new", inlet={"pressure": 1}, outlet={"pressure": 1}),
        lambda network: network.add_node("n\0w"),
        lambda network: network.add_node("\ud800"),
        lambda network: network.add_nodes(["one", "one"]),
        lambda network: network.add_nodes(["one", "two"], [[0, 0, 0]]),
        lambda network: network.add_pipe("main", "tank", "tap", 0.1),
        lambda network: network.add_pipe("new", "tank", "nowhere", 0.1),
        lambda network: network.add_pipe("new", "tank", 7, 0.1),
        lambda network: network.add_pipe("new", "tank", -1, 0.1),
        lambda network: network.add_pipe("new", "tank", 1.5, 0.1),
        lambda network: network.add_pipe("new", "tank", "tap", -0.1),
        lambda network: network.add_pipe("new", "tank", "tap", "thick"),
        lambda network: network.add_pipe("new", "tank", "tap", 0.1, kv=3),
        lambda network: network.add_pipe("new", "tank", "tap", 0.1, colour=3),
        lambda network: network.add_pipe("new", "tank", "tap", 0.1, k="25 mm"),
        lambda network: network.add_pipe("new", "tank", "tap", 0.1, material="copper"),
        lambda network: network.add_element("new", "tube", "tank", "tap"),
        lambda network: network.add_element("new", "pipe", "tank", "tap", diameter=0.1, curve=CURVE),
        lambda network: network.add_pump("new", "tank", "tap", []),
        lambda network: network.add_pump("new", "tank", "tap", CURVE, diameter=0.1),
        lambda network: network.add_elements(["new"], ["pipe", "pipe"], ["tank"], ["tap"]),
        lambda network: network.add_elements(["new"], "pipe", ["tank", "tee"], ["tap"]),
        lambda network: network.add_elements(["new"], "pipe", ["tank"], ["tap"], diameter=[0.1, 0.2]),
        lambda network: network.add_elements(["o", "p", "q", "r"], "pipe", [0] * 4, [1] * 4,
                                             diameter=[0.1, -0.2, 0.3, 0.4]),
        lambda network: network.set_node_values("colour", 1.0),
        lambda network: network.set_node_values("z", [1.0, 2.0]),
        lambda network: network.set_node_values("z", ["1 m", "2 s", "3 m"]),
        lambda network: network.set_node_values("z", 1.0, ["tank", "nowhere"]),
        lambda network: network.set_element_values("length", [1.0, -1.0]),
        lambda network: network.set_element_values("roughness", "1 bar", "main"),
        lambda network: network.set_element_values("k", "one"),
        lambda network: network.set_element_values("k", [object(), object()]),
        lambda network: network.set_curve("main", [0, 1, 2, 3], [3, 2, 1, 0]),
        lambda network: network.set_curve("main", [0, 1, 2, 3], [3, 2, 1]),
        lambda network: network.patch({"elements": {"main": {"material": "coper"}}}),
        lambda network: network.patch({"colour": 1}),
        lambda network: network.patch("no JSON"),
        lambda network: network.patch({"nodes": {"tank": {"at": [0, 0, math.nan]}}}),
        lambda network: network.scenario("night"),
    ],
)  # fmt: skip
def test_what_is_refused_changes_nothing(call):
    network = two_pipes()
    before = network.to_json()
    with pytest.raises(tavell.BadInput) as caught:
        call(network)
    assert caught.value.findings.errors
    assert network.to_json() == before


def test_a_refused_element_among_many_is_named():
    network = two_pipes()
    names = [f"p{i}" for i in range(10)]
    widths = np.full(10, 0.1)
    widths[6] = -1
    with pytest.raises(tavell.BadInput) as caught:
        network.add_elements(names, "pipe", [0] * 10, [1] * 10, diameter=widths)
    assert caught.value.findings[0].object == "element p6"


def test_many_elements_of_several_types_are_added_at_once():
    network = tavell.Network()
    network.add_nodes([f"n{i}" for i in range(7)], np.arange(21.0).reshape(7, 3))
    network.add_elements(
        [f"e{i}" for i in range(6)],
        ["pipe", "kv_valve"] * 3,
        [f"n{i}" for i in range(6)],
        np.arange(1, 7),
        diameter=[0.1, 0.2, 0.3, 0.4, 0.5, 0.6],
        kv=[math.nan, 1, math.nan, 2, math.nan, 3],
        k=[1, math.nan, math.nan, math.nan, math.nan, math.nan],
    )
    start, end = network.ends
    assert list(start) == [0, 1, 2, 3, 4, 5]
    assert list(end) == [1, 2, 3, 4, 5, 6]
    assert network.element_types == ("pipe", "kv_valve") * 3
    np.testing.assert_array_equal(network.element_values("diameter"), [0.1, 0.2, 0.3, 0.4, 0.5, 0.6])
    np.testing.assert_array_equal(network.element_values("kv"), [math.nan, 1, math.nan, 2, math.nan, 3])
    assert network.element_values("k", "e0") == [1]
    assert list(network.nodes.loc["n6"][["x", "y", "z"]]) == [18, 19, 20]


def test_names_may_hold_what_unicode_has():
    network = tavell.Network()
    names = ["Zähler", "弁", "a\tb", "🚰", "\u202e"]
    network.add_nodes(names)
    assert network.node_names == tuple(names)
    assert list(network.node_positions(names)) == [0, 1, 2, 3, 4]


def test_nothing_can_be_added():
    network = tavell.Network()
    network.add_nodes([])
    network.add_elements([], "pipe", [], [])
    network.set_node_values("z", [])
    assert network.node_names == network.element_names == network.element_types == ()
    assert network.ends[0].shape == (0,)
    assert network.node_values("z").shape == (0,)
    assert len(network.nodes) == len(network.elements) == 0


# Values


def test_values_are_chosen_by_name_position_mask_and_slice():
    network = two_pipes()
    network.set_node_values("z", [1.0, 2.0, 3.0])
    for which, expected in [
        (None, [1, 2, 3]),
        ("tee", [2]),
        (["tap", "tank"], [3, 1]),
        (np.array(["tap"]), [3]),
        (1, [2]),
        (-1, [3]),
        ([2, -3], [3, 1]),
        (np.array([True, False, True]), [1, 3]),
        (slice(1, None), [2, 3]),
        ([], []),
        (pd.Index(["tee", "tap"]), [2, 3]),
    ]:
        np.testing.assert_array_equal(network.node_values("z", which), expected)


def test_positions_that_there_are_none_of_are_index_errors():
    network = two_pipes()
    for which in (3, -4, [0, 3], np.array([True, False])):
        with pytest.raises(IndexError):
            network.node_values("z", which)
        with pytest.raises(IndexError):
            network.set_node_values("z", 1.0, which)


def test_all_unknown_names_are_found_at_once():
    with pytest.raises(tavell.BadInput) as caught:
        two_pipes().element_values("diameter", ["main", "x", "y"])
    assert [finding.message for finding in caught.value.findings] == [
        'there is no element "x"', 'there is no element "y"',
    ]  # fmt: skip


def test_values_are_one_for_all_or_one_for_each():
    network = two_pipes()
    network.set_element_values("diameter", "3 cm")
    np.testing.assert_array_equal(network.element_values("diameter"), [0.03, 0.03])
    network.set_element_values("diameter", ["20 mm", 0.04])
    np.testing.assert_array_equal(network.element_values("diameter"), [0.02, 0.04])
    network.set_element_values("diameter", np.float32([0.5, 0.25]), ["branch", "main"])
    np.testing.assert_array_equal(network.element_values("diameter"), [0.25, 0.5])
    network.set_element_values("closed", True, "main")
    np.testing.assert_array_equal(network.element_values("closed"), [1, 0])


def test_a_strided_array_is_taken_as_it_is_seen():
    network = two_pipes()
    wide = np.arange(1.0, 7.0)
    network.set_node_values("x", wide[::2])
    network.set_node_values("y", wide[::-2])
    np.testing.assert_array_equal(network.node_values("x"), [1, 3, 5])
    np.testing.assert_array_equal(network.node_values("y"), [6, 4, 2])


def test_a_series_brings_its_names_along():
    network = two_pipes()
    network.set_node_values("z", pd.Series({"tap": 7.0, "tank": 8.0}))
    np.testing.assert_array_equal(network.node_values("z"), [8, 0, 7])
    network.set_node_values("z", pd.Series([1.0, 2.0, 3.0]))
    np.testing.assert_array_equal(network.node_values("z"), [1, 2, 3])


def test_a_boundary_is_made_changed_and_taken_away():
    network = two_pipes()
    network.set_inlet("tee", mass_flow=0.2, temperature="20 degC")
    assert network.nodes.loc["tee", "boundary"] == "inlet"
    assert network.node_values("inlet/temperature", "tee") == [293.15]
    network.set_outlet(["tee", "tap"], mass_flow=[0.1, 0.2])
    assert list(network.node_values("outlet/mass_flow")[1:]) == [0.1, 0.2]
    network.set_node_values("outlet/mass_flow", math.nan, "tee")
    network.set_node_values("outlet/temperature", math.nan, "tee")
    assert network.nodes.loc["tee", "boundary"] == ""


def test_a_curve_is_given_by_name():
    network = two_pipes()
    network.add_pump("pump", "tank", "tee", CURVE)
    network.set_curve("pump", [0, 1e-3, 2e-3, 3e-3], [5e5, 4e5, 3e5, 1e5])
    assert network.to_dict()["elements"][-1]["curve"] == [[0, 5e5], [1e-3, 4e5], [2e-3, 3e5], [3e-3, 1e5]]


# Patches and scenarios


def test_a_patch_changes_what_has_no_method(reservoirs):
    reservoirs.patch({"settings": {"friction": "haaland"}, "fluid": {"density": 990}})
    reservoirs.patch(
        '{"elements": {"pipe 1": {"type": "hazen_williams_pipe", "roughness": null, "coefficient": 130}}}'
    )
    content = reservoirs.to_dict()
    assert content["settings"]["friction"] == "haaland"
    assert content["fluid"]["density"] == 990
    assert reservoirs.element_types[0] == "hazen_williams_pipe"


def test_scenarios_are_networks_of_their_own(example):
    content = json.loads(example.read_text(encoding="utf-8"))
    content["scenarios"] = {
        "dry": {"nodes": {"reservoir 3": {"inlet": {"pressure": 1e4}}}},
        "night": {"elements": {"pipe 3": {"closed": True}}},
    }
    network = tavell.Network.from_json(content)
    assert network.scenarios == ("dry", "night")
    night = network.scenario("night")
    assert night.element_values("closed", "pipe 3") == [1]
    direct = night.solve().node("junction")["pressure"]
    assert network.solve(scenario="night").node("junction")["pressure"] == direct
    assert network.solve().node("junction")["pressure"] != direct
    assert codes_of(lambda: network.solve(scenario="noon")) == ["unknown-scenario"]


# Fluids and units


def test_quantities_are_read_with_their_units():
    assert tavell.quantity("25 mm", "length") == 0.025
    assert tavell.quantity("60 degC", "temperature") == 333.15
    assert codes_of(lambda: tavell.quantity("25 mm", "pressure")) == ["bad-option"]
    assert codes_of(lambda: tavell.quantity("25 mm", "colour")) == ["bad-option"]


def test_fluids_have_properties():
    water = tavell.fluid("water", 293.15)
    # IAPWS-95 at 20 degC and 1 atm: 998.207 kg/m3; IAPWS R12-08: 1.0016 mPa s.
    assert water.density == pytest.approx(998.207, abs=0.01)
    assert water.viscosity == pytest.approx(1.0016e-3, rel=1e-2)
    assert "water" in [each["name"] for each in tavell.fluids()]
    assert tavell.fluid("ethylene glycol", 293.15, 0.3).density > 1030
    assert codes_of(lambda: tavell.fluid("lava", 1500)) == ["bad-option"]


def test_names_are_found_however_additions_and_questions_alternate():
    network = tavell.Network()
    for i in range(300):
        network.add_node(f"node with a longer name {i}")
        assert list(
            network.node_positions([f"node with a longer name {i}", "node with a longer name 0"])
        ) == [i, 0]
        if i % 50 == 0:
            network = network.copy()
    for i in range(1, 300):
        network.add_pipe(f"p{i}", f"node with a longer name {i - 1}", i, 0.1)
        assert network.element_names[-1] == f"p{i}"
        network.set_node_values("z", 1.0, f"node with a longer name {i}")
    assert network.node_names == tuple(f"node with a longer name {i}" for i in range(300))
    assert list(network.element_positions(network.element_names)) == list(range(299))
