"""Laws that hold for every network: what flows into a node flows out of it, files and pickles keep
everything."""

import pickle

import numpy as np
from hypothesis import HealthCheck, given, settings
from hypothesis import strategies as st

import tavell

NAMES = st.text(st.characters(blacklist_categories=("Cs", "Cc")), min_size=1, max_size=8)
KINDS = ("pipe", "hazen_williams_pipe", "kv_valve", "orifice", "general_loss", "non_return")


@st.composite
def networks(draw):
    """A tree of elements with some loops, an inlet of given pressure, demands, and a second pressure at
    times."""
    count = draw(st.integers(2, 12))
    names = draw(st.lists(NAMES, min_size=count, max_size=count, unique=True))
    network = tavell.Network()
    number = st.floats(-50, 50).map(lambda value: round(value, 1))
    at = np.array([[100.0 * i, draw(number), draw(number)] for i in range(count)])
    network.add_nodes(names, at)
    ends = [(draw(st.integers(0, i - 1)), i) for i in range(1, count)]
    for _ in range(draw(st.integers(0, 4))):
        start = draw(st.integers(0, count - 2))
        ends.append((start, draw(st.integers(start + 1, count - 1))))
    for i, (start, end) in enumerate(ends):
        kind = draw(st.sampled_from(KINDS[:-1] if i < count - 1 else KINDS))
        add_element(draw, network, f"element {i}", kind, start, end)
    network.set_inlet(0, pressure=draw(st.sampled_from([0.0, 2e5, 8e5])))
    for node in draw(st.lists(st.integers(1, count - 1), unique=True, max_size=4)):
        network.set_outlet(node, mass_flow=draw(st.floats(0.01, 3.0)))
    if draw(st.booleans()):
        last = draw(st.integers(1, count - 1))
        network.set_node_values("outlet/mass_flow", np.nan, last)
        network.set_outlet(last, pressure=draw(st.sampled_from([0.0, 1e5])))
    return network


def add_element(draw, network, name, kind, start, end):
    diameter = draw(st.floats(0.02, 0.5))
    values = {
        "pipe": {"roughness": draw(st.floats(0, 1e-4)), "k": draw(st.floats(0, 10))},
        "hazen_williams_pipe": {"coefficient": draw(st.floats(60, 150))},
        "kv_valve": {"kv": draw(st.floats(1, 1000))},
        "orifice": {"bore_diameter": diameter * draw(st.floats(0.2, 0.7))},
        "general_loss": {"ck": draw(st.floats(0.01, 1)), "a": 1, "b": 0, "c": 4, "d": 2},
        "non_return": {},
    }[kind]
    network.add_element(name, kind, start, end, diameter=diameter, **values)


def balances(network, result):
    """What flows into each node less what flows out [kg/s]."""
    start, end = network.ends
    flow = result.element_values("mass_flow")
    balance = result.node_values("external_mass_flow").copy()
    balance[np.isnan(balance)] = 0.0
    np.add.at(balance, end.astype(np.intp), flow)
    np.subtract.at(balance, start.astype(np.intp), flow)
    return balance


@settings(suppress_health_check=[HealthCheck.too_slow, HealthCheck.data_too_large])
@given(networks())
def test_what_flows_into_a_node_flows_out_of_it(network):
    result = network.solve(must_converge=False)
    if not result.converged:
        assert result.findings.errors
        return
    flow = np.abs(result.element_values("mass_flow"))
    # The limit of a good certificate: 1e-5 of the mean flow.
    limit = 1e-5 * max(flow.mean(), 1e-9)
    residual = result.node_values("mass_residual")
    given_flow = np.zeros(network.node_count)
    for key in ("inlet/mass_flow", "outlet/mass_flow"):
        values = np.nan_to_num(network.node_values(key))
        given_flow += values if key.startswith("inlet") else -values
    pressures = np.isfinite(network.node_values("inlet/pressure")) | np.isfinite(
        network.node_values("outlet/pressure")
    )
    external = result.node_values("external_mass_flow")
    free = ~pressures
    assert np.all(np.abs(residual[free]) <= limit)
    assert np.all(np.abs(external[free] - given_flow[free]) <= limit)
    np.testing.assert_allclose(np.where(free, 0.0, balances(network, result)), 0.0, atol=limit)
    assert result.certificate()["relative_mass_imbalance"] <= 1e-5


@settings(suppress_health_check=[HealthCheck.too_slow, HealthCheck.data_too_large])
@given(networks())
def test_files_and_pickles_keep_everything(network):
    text = network.to_json()
    assert tavell.Network.from_json(text).to_json() == text
    assert pickle.loads(pickle.dumps(network)).to_json() == text
    assert network.copy().to_json() == text
    result = network.solve(must_converge=False)
    again = pickle.loads(pickle.dumps(result))
    assert again.to_json() == result.to_json()
    assert again.network.hash() == network.hash()


@settings(suppress_health_check=[HealthCheck.too_slow, HealthCheck.data_too_large])
@given(networks())
def test_the_order_of_building_does_not_matter(network):
    """The same network from its frames, all at once."""
    nodes, elements = network.nodes, network.elements
    built = tavell.Network()
    built.add_nodes(list(nodes.index), nodes[["x", "y", "z"]].to_numpy())
    numbers = [key for key in elements.columns if key in elements.attrs["units"] and key != "area"]
    built.add_elements(
        list(elements.index),
        list(elements["type"]),
        list(elements["from"]),
        list(elements["to"]),
        **{key: elements[key].to_numpy() for key in numbers},
    )
    for side in ("inlet", "outlet"):
        for key in ("pressure", "mass_flow"):
            built.set_node_values(f"{side}/{key}", network.node_values(f"{side}/{key}"))
    assert built.to_json() == network.to_json()


@given(st.lists(NAMES, min_size=1, max_size=40, unique=True))
def test_names_come_back_as_they_were_given(names):
    network = tavell.Network()
    network.add_nodes(names)
    assert network.node_names == tuple(names)
    assert list(network.node_positions(list(reversed(names)))) == list(reversed(range(len(names))))


@given(st.lists(st.floats(allow_nan=False, allow_infinity=False), min_size=1, max_size=40))
def test_values_come_back_as_they_were_given(values):
    network = tavell.Network()
    network.add_nodes([f"n{i}" for i in range(len(values))])
    network.set_node_values("z", values)
    np.testing.assert_array_equal(network.node_values("z"), values)
