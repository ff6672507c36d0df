"""Files for other programs, pictures, reports, notebooks, graphs."""

import json
import xml.etree.ElementTree as ElementTree

import networkx
import numpy as np
import pytest
from conftest import EXAMPLES
from networks import two_pipes, unsolvable

import tavell


@pytest.mark.parametrize("of_result", [False, True])
def test_exports_are_what_their_ending_says(reservoirs, tmp_path, of_result):
    source = reservoirs.solve() if of_result else reservoirs
    source.to_vtu(tmp_path / "n.vtu")
    assert ElementTree.parse(tmp_path / "n.vtu").getroot().tag == "VTKFile"
    source.to_geojson(tmp_path / "n.geojson")
    features = json.loads((tmp_path / "n.geojson").read_text(encoding="utf-8"))["features"]
    assert len(features) == 7
    assert ("pressure_pa" in features[0]["properties"]) is of_result
    source.to_graphml(tmp_path / "n.graphml")
    graph = networkx.read_graphml(tmp_path / "n.graphml", force_multigraph=True)
    assert graph.number_of_edges() == 3
    for write in (source.to_vtu, source.to_geojson, source.to_graphml):
        with pytest.raises(tavell.BadInput, match="does not end with"):
            write(tmp_path / "n.txt")
        with pytest.raises(tavell.BadInput):
            write(tmp_path / "no such folder" / ("n." + write.__name__[3:]))


def test_graphs_have_names_and_what_is_given(reservoirs):
    graph = reservoirs.to_networkx()
    assert set(graph.nodes) == set(reservoirs.node_names)
    assert graph.nodes["reservoir 2"]["z"] == 100
    assert graph.edges["junction", "reservoir 1", "pipe 1"]["diameter"] == 0.08
    assert networkx.is_connected(graph.to_undirected())


def test_graphs_of_results_have_what_was_found(result):
    graph = result.to_networkx()
    flow = graph.edges["reservoir 2", "junction", "pipe 2"]["mass_flow"]
    assert flow == result.element("pipe 2")["mass_flow"]
    assert graph.nodes["junction"]["pressure"] == result.node("junction")["pressure"]
    inflow = sum(data["mass_flow"] for _, _, data in graph.in_edges("junction", data=True))
    outflow = sum(data["mass_flow"] for _, _, data in graph.out_edges("junction", data=True))
    assert inflow == pytest.approx(outflow, rel=1e-5)


def test_parallel_elements_stay_apart_in_a_graph():
    network = two_pipes()
    network.add_pipe("second", "tank", "tee", 0.02)
    graph = network.to_networkx()
    assert graph.number_of_edges("tank", "tee") == 2
    assert graph.edges["tank", "tee", "second"]["diameter"] == 0.02


def test_a_report_is_one_page_about_the_network(reservoirs, tmp_path):
    page = tmp_path / "page.html"
    result = reservoirs.report(page, units="metric")
    assert result.converged
    text = page.read_text(encoding="utf-8")
    assert "Three reservoirs that share a junction" in text
    result.report(page, units="us")
    assert page.read_text(encoding="utf-8") != text
    with pytest.raises(tavell.BadInput):
        result.report(page, units="parsec")


def test_a_report_of_a_failed_solve_names_the_smallest_part(tmp_path):
    result = unsolvable().report(tmp_path / "page.html")
    assert not result.converged
    assert "smallest-failing-part" in (tmp_path / "page.html").read_text(encoding="utf-8")


def test_pictures_are_drawn(reservoirs, tmp_path):
    reservoirs.picture(tmp_path / "n.svg", view="isometric", width=300)
    assert ElementTree.parse(tmp_path / "n.svg").getroot().tag.endswith("svg")
    result = reservoirs.solve()
    result.picture(tmp_path / "r.svg", quantity="velocity", units="us", view="plan")
    assert "ft/s" in (tmp_path / "r.svg").read_text(encoding="utf-8")
    with pytest.raises(tavell.BadInput, match="unknown"):
        result.picture(tmp_path / "r.svg", view="inside")
    with pytest.raises(tavell.BadInput):
        result.picture(tmp_path / "r.jpg")


def test_pictures_in_png_are_drawn_or_refused(reservoirs, tmp_path):
    try:
        reservoirs.picture(tmp_path / "n.png", scale=0.5)
    except tavell.BadInput as error:
        assert error.findings.errors
    else:
        assert (tmp_path / "n.png").read_bytes().startswith(b"\x89PNG")


# Notebooks


def test_a_notebook_shows_the_network_drawn(reservoirs):
    page = reservoirs._repr_html_()
    assert "4 nodes, 3 elements" in page
    assert "<svg" in page
    assert "<?xml" not in page


def test_a_notebook_shows_the_values_with_their_units(result):
    page = result._repr_html_()
    assert "converged" in page and "Certificate: good" in page
    assert "pressure [Pa]" in page and "junction" in page and "<svg" in page


def test_a_notebook_shows_why_there_are_no_values(reservoirs):
    result = reservoirs.solve(on_progress=lambda step: tavell.STOP, must_converge=False)
    assert "solve-cancelled" in result._repr_html_()


def test_a_notebook_shows_networks_of_any_state_and_size():
    assert "0 nodes, 0 elements" in tavell.Network()._repr_html_()
    network = tavell.Network()
    network.add_node('<img src="x">')
    assert "<img" not in network._repr_html_()
    many = tavell.Network()
    many.add_nodes([f"n{i}" for i in range(501)], np.arange(1503.0).reshape(501, 3))
    many.add_elements([f"p{i}" for i in range(500)], "pipe", range(500), range(1, 501), diameter=0.5)
    many.set_inlet(0, pressure=1e5)
    many.set_outlet(500, pressure=0)
    assert "<svg" not in many._repr_html_()
    page = many.solve()._repr_html_()
    assert "and 489 more" in page and "<svg" not in page


def test_a_notebook_shows_a_certificate(result):
    assert "relative_mass_imbalance" in result.certificate()._repr_html_()


def test_a_notebook_shows_names_as_they_are():
    network = two_pipes()
    network.add_node("<b>bold</b>", 5, 5, 5)
    network.add_pipe("<i>", "tee", "<b>bold</b>", 0.1)
    page = network.solve()._repr_html_()
    assert "<b>bold" not in page and "<i>" not in page


@pytest.mark.parametrize("path", sorted(EXAMPLES.glob("*.json")), ids=lambda path: path.name)
def test_every_example_has_a_notebook_view_and_a_graph(path):
    network = tavell.Network.read(path)
    result = network.solve()
    assert "<svg" in network._repr_html_()
    assert "<svg" in result._repr_html_()
    assert result.to_networkx().number_of_edges() == network.element_count
