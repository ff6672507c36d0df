#!/usr/bin/env python3
"""Reads one network from its three exports with independent readers and compares them with each other.

    exports_check.py OUT.vtu OUT.geojson OUT.graphml [--nodes N] [--elements N] [--solved | --unsolved]
                     [--expect OBJECT:QUANTITY=VALUE[~RELATIVE_TOLERANCE] ...]

OBJECT is the name of a node or of an element, QUANTITY a column such as pressure_pa or mass_flow_kg_s. The readers:
VTK and meshio for the grid, GDAL/OGR for GeoJSON, networkx for GraphML. Exit status 0 when all agree, 1 when they do not,
77 when a reader is missing.
"""

import argparse
import contextlib
import io
import math
import os
import re
import sys
import tempfile
import xml.etree.ElementTree

try:
    import meshio
    import networkx
    import vtk
    from osgeo import ogr
except ImportError as error:
    print(f"a reader is missing: {error}")
    sys.exit(77)

SAME = 1e-15  # relative; the shortest form of a number reads back as the same one
VTK_LINE = 3
VTK_POLY_LINE = 4

failures = []


def check(is_so, message):
    if not is_so:
        failures.append(message)


def is_close(a, b, tolerance):
    if a is None or b is None:
        return a is b
    return abs(a - b) <= tolerance * max(abs(a), abs(b))


def plain(name):
    """A name as XML can hold it: what XML 1.0 has no place for is U+FFFD."""
    return re.sub("[\x00-\x08\x0b\x0c\x0e-\x1f\ufffe\uffff]", "\ufffd", name)


class Graph:
    """What one reader found: {name: {"at": point, column: value}} of nodes and {name: {"line": points, ...}} of elements."""

    def __init__(self, reader):
        self.reader = reader
        self.nodes = {}
        self.elements = {}

    def add(self, objects, name, values):
        name = plain(name)
        check(name not in objects, f"{self.reader}: {name!r} is there twice")
        objects[name] = {key: plain(value) if isinstance(value, str) else value
                         for key, value in values.items() if value is not None}


def number(value):
    """A value of a column; nothing for NaN."""
    if isinstance(value, float) and math.isnan(value):
        return None
    return value


def vtk_columns(data):
    arrays = [data.GetAbstractArray(i) for i in range(data.GetNumberOfArrays())]
    return {array.GetName(): array for array in arrays}


def read_vtu(path):
    graph = Graph("vtk")
    errors = []
    reader = vtk.vtkXMLUnstructuredGridReader()
    reader.AddObserver("ErrorEvent", lambda _caller, _event: errors.append("the reader reported an error"))
    reader.SetFileName(path)
    reader.Update()
    grid = reader.GetOutput()
    for error in errors:
        check(False, f"vtk: {error}")

    points = vtk_columns(grid.GetPointData())
    for i in range(grid.GetNumberOfPoints()):
        if not points["is_node"].GetValue(i):
            check(points["name"].GetValue(i) == "", f"vtk: the vertex {i} has a name")
            continue
        values = {"at": grid.GetPoint(i)}
        for name, array in points.items():
            if name not in ("name", "is_node"):
                values[name] = number(array.GetValue(i))
        graph.add(graph.nodes, points["name"].GetValue(i), values)

    cells = vtk_columns(grid.GetCellData())
    for i in range(grid.GetNumberOfCells()):
        ids = grid.GetCell(i).GetPointIds()
        line = [grid.GetPoint(ids.GetId(k)) for k in range(ids.GetNumberOfIds())]
        kind = VTK_LINE if len(line) == 2 else VTK_POLY_LINE
        check(grid.GetCellType(i) == kind, f"vtk: cell {i} has type {grid.GetCellType(i)}, not {kind}")
        values = {"line": line}
        for name, array in cells.items():
            if name not in ("name", "type_number"):
                values[name] = number(array.GetValue(i))
        values["closed"] = bool(values.pop("is_closed"))
        graph.add(graph.elements, cells["name"].GetValue(i), values)
    return graph


def check_meshio(path, graph):
    """meshio knows no texts, so it reads a copy without them, and no polylines; the rest must be what VTK read."""
    tree = xml.etree.ElementTree.parse(path)
    for parent in tree.iter():
        for array in list(parent):
            if array.get("type") == "String":
                parent.remove(array)
    with tempfile.TemporaryDirectory() as folder:
        copy = os.path.join(folder, "numbers.vtu")
        tree.write(copy)
        with contextlib.redirect_stdout(io.StringIO()), contextlib.redirect_stderr(io.StringIO()):
            mesh = meshio.read(copy)

    is_node = mesh.point_data["is_node"].astype(bool)
    check(int(is_node.sum()) == len(graph.nodes), "meshio: another number of nodes than vtk")
    straight = sum(len(element["line"]) == 2 for element in graph.elements.values())
    check(sum(len(block.data) for block in mesh.cells if block.type == "line") == straight,
          "meshio: another number of lines than vtk")
    for point, node in zip(mesh.points[is_node], graph.nodes.values()):
        check(tuple(point) == tuple(node["at"]), f"meshio: a point at {point}, vtk has {node['at']}")
    for name, values in mesh.point_data.items():
        if name == "is_node":
            continue
        for value, node in zip(values[is_node], graph.nodes.values()):
            check(is_close(number(float(value)), node.get(name), SAME), f"meshio: {name} {value}, vtk {node.get(name)}")


def read_geojson(path):
    graph = Graph("ogr")
    ogr.UseExceptions()
    source = ogr.Open(path)
    check(source.GetDriver().GetName() == "GeoJSON", "ogr: not read as GeoJSON")
    layer = source.GetLayer(0)
    reference = layer.GetSpatialRef()
    check(reference is not None and reference.IsLocal(), "ogr: coordinates in metres are taken for longitudes and latitudes")
    for feature in layer:
        properties = feature.items()
        geometry = feature.GetGeometryRef()
        points = [geometry.GetPoint(i) for i in range(geometry.GetPointCount())]
        is_node = properties.pop("kind") == "node"
        check(geometry.GetGeometryType() == (ogr.wkbPoint25D if is_node else ogr.wkbLineString25D),
              f"ogr: {properties['name']!r} is a {geometry.GetGeometryName()}")
        name = properties.pop("name")
        if is_node:
            own = {key: value for key, value in properties.items() if key not in ("from", "to", "type", "closed")}
            graph.add(graph.nodes, name, {"at": points[0], **own})
        else:
            properties.pop("boundary")
            properties["closed"] = bool(properties["closed"])
            graph.add(graph.elements, name, {"line": points, **properties})
    return graph


def read_graphml(path):
    graph = Graph("networkx")
    read = networkx.read_graphml(path, force_multigraph=True)
    check(read.is_directed(), "networkx: the graph is not directed")
    for _, data in read.nodes(data=True):
        values = dict(data)
        at = tuple(values.pop(axis) for axis in ("x_m", "y_m", "z_m"))
        values.setdefault("boundary", "")
        graph.add(graph.nodes, values.pop("name"), {"at": at, **values})
    for start, end, data in read.edges(data=True):
        values = dict(data)
        values.pop("id", None)
        values.setdefault("closed", False)
        values["from"] = read.nodes[start]["name"]
        values["to"] = read.nodes[end]["name"]
        graph.add(graph.elements, values.pop("name"), values)
    return graph


def compare(one, other):
    """Everything that two readers both found must be the same."""
    for kind in ("nodes", "elements"):
        mine, yours = getattr(one, kind), getattr(other, kind)
        check(mine.keys() == yours.keys(),
              f"{one.reader} and {other.reader}: only one has the {kind} {sorted(mine.keys() ^ yours.keys())[:5]}")
        for name in mine:
            for key in mine[name].keys() & yours.get(name, {}).keys():
                a, b = mine[name][key], yours[name][key]
                same = is_close(a, b, SAME) if isinstance(a, float) and isinstance(b, float) else a == b
                check(same, f"{name!r} {key}: {one.reader} has {a!r}, {other.reader} has {b!r}")
            only = {key for key in mine[name].keys() ^ yours.get(name, {}).keys()} - {"line", "from", "to"}
            check(not only, f"{name!r}: {sorted(only)} not found by both {one.reader} and {other.reader}")


def check_expected(graphs, text):
    name, _, rest = text.rpartition(":")
    quantity, _, rest = rest.partition("=")
    value, _, tolerance = rest.partition("~")
    for graph in graphs:
        found = {**graph.elements, **graph.nodes}.get(name, {}).get(quantity)
        good = found is not None and is_close(float(found), float(value), float(tolerance or 1e-6))
        check(good, f"{graph.reader}: {quantity} of {name!r} is {found}, expected {value}")


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("vtu")
    parser.add_argument("geojson")
    parser.add_argument("graphml")
    parser.add_argument("--nodes", type=int)
    parser.add_argument("--elements", type=int)
    state = parser.add_mutually_exclusive_group()
    state.add_argument("--solved", action="store_true")
    state.add_argument("--unsolved", action="store_true")
    parser.add_argument("--expect", action="append", default=[])
    arguments = parser.parse_args()

    grid = read_vtu(arguments.vtu)
    check_meshio(arguments.vtu, grid)
    graphs = [grid, read_geojson(arguments.geojson), read_graphml(arguments.graphml)]
    compare(graphs[0], graphs[1])
    compare(graphs[1], graphs[2])
    compare(graphs[2], graphs[0])

    for graph in graphs:
        if arguments.nodes is not None:
            check(len(graph.nodes) == arguments.nodes, f"{graph.reader}: {len(graph.nodes)} nodes")
        if arguments.elements is not None:
            check(len(graph.elements) == arguments.elements, f"{graph.reader}: {len(graph.elements)} elements")
        has_results = any("pressure_pa" in node for node in graph.nodes.values())
        check(has_results or not arguments.solved, f"{graph.reader}: no results")
        check(not has_results or not arguments.unsolved, f"{graph.reader}: results without a solve")
    for text in arguments.expect:
        check_expected(graphs, text)

    for failure in failures[:20]:
        print(failure)
    if not failures:
        print(f"{len(grid.nodes)} nodes and {len(grid.elements)} elements agree in vtk, meshio, ogr and networkx")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
