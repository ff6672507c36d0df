"""Networks: from files and in code, their values, their solution."""

from __future__ import annotations

import ctypes
import json
import os
import sys
from dataclasses import dataclass
from types import TracebackType
from typing import (
    TYPE_CHECKING,
    Any,
    Callable,
    Dict,
    List,
    Mapping,
    Optional,
    Sequence,
    Tuple,
    Type,
    TypeVar,
    Union,
    overload,
)

import numpy as np
import numpy.typing as npt

from . import _html, _library
from ._arrays import (
    Floats,
    Path,
    Positions,
    Quantity,
    Texts,
    Values,
    Which,
    address_of,
    encoded,
    encoded_path,
    found_positions,
    names_in,
    numbers_of,
    parsed,
    selected,
    texts_at,
)
from ._findings import BadInput, Findings, checked, raise_unless_ok, refusal, run, text_of
from ._handles import Handle
from ._library import LIBRARY, Function
from ._progress import OnProgress, watched

# pandas takes longer to be imported than a small study to be solved: only what makes frames does so.
if TYPE_CHECKING:
    import networkx
    import pandas as pd

    from ._result import Result

# Units of the columns of Network.nodes and Network.elements.
NODE_UNITS: Dict[str, str] = {
    "x": "m",
    "y": "m",
    "z": "m",
    "pressure": "Pa",
    "mass_flow": "kg/s",
    "volume_flow": "m3/s",
    "velocity": "m/s",
    "reynolds": "",
    "temperature": "K",
}
ELEMENT_UNITS: Dict[str, str] = {
    "diameter": "m",
    "wetted_perimeter": "m",
    "area": "m2",
    "length": "m",
    "roughness": "m",
    "k": "",
    "coefficient": "",
    "kv": "m3/h at 1 bar",
    "cv": "US gal/min at 1 psi",
    "bore_diameter": "m",
    "mass_flow_limit": "kg/s",
    "fixed_mass_flow": "kg/s",
    "reference_density": "kg/m3",
    "ck": "",
    "a": "",
    "b": "",
    "c": "",
    "d": "",
}

_BOUNDARY_KEYS = ("pressure", "mass_flow", "volume_flow", "velocity", "reynolds", "temperature")
# What gives an element its section comes before its area.
_FIRST_KEYS = ("diameter", "wetted_perimeter")
_PATCH_KEYS = ("material", "fittings", "heat", "vertices", "description")

# A curve: points of volume flow [m3/s] and pressure [Pa], or texts with units.
Curve = Sequence[Tuple[Quantity, Quantity]]

# The search of doctor() for the smallest part that fails.
_MOST_SOLVES = 60

Made = TypeVar("Made")


@dataclass(frozen=True)
class FailingPart:
    """The smallest part found of a network that does not solve which still does not solve. elements: names of
    its elements, empty when nothing fails or nothing smaller is known. why: a sentence about them."""

    elements: Tuple[str, ...]
    why: str
    findings: Findings


def _json_value(value: Any) -> Any:
    """NumPy's numbers and arrays for json.dumps."""
    if isinstance(value, np.generic):
        return value.item()
    if isinstance(value, np.ndarray):
        return value.tolist()
    if isinstance(value, Mapping):
        return dict(value)
    raise TypeError(f"{type(value).__name__} is no JSON value")


def _json_text(value: Any) -> bytes:
    try:
        text = json.dumps(value, default=_json_value, allow_nan=False, ensure_ascii=False)
    except (TypeError, ValueError) as error:
        remedy = "use texts, finite numbers, lists and dicts"
        raise refusal(f"the object cannot be written as JSON: {error}", remedy) from error
    return encoded(text)


def options_text(**options: Any) -> Optional[bytes]:
    """Options for the kit, without those that are None."""
    given = {key: value for key, value in options.items() if value is not None}
    return _json_text(given) if given else None


def new_handle(make: Function, *arguments: Any, free: Function) -> Tuple[Handle, Findings]:
    """The handle that make(..., &handle, findings) makes. Raises the exception of a call that failed."""
    address = ctypes.c_void_p()
    findings = checked(make, *arguments, ctypes.byref(address))
    if address.value is None:
        raise MemoryError("a call of the kit made nothing")
    return Handle(address.value, free), findings


class Network:
    """A network of nodes and elements, in SI units: m, m2, m3/s, kg/s, Pa, m/s, K.

    It is read with from_json(), from_inp(), from_csv() or read(), or built with add_node(), add_pipe() and
    their like. One network is changed by one thread at a time, and not while it is read; several threads may
    read and solve it at once. What the kit refuses raises BadInput with all that was found.
    """

    def __init__(self) -> None:
        """An empty network: standard gravity along -z, water at 21 degC."""
        handle, self._findings = new_handle(LIBRARY.tvkNewNetwork, free=LIBRARY.tvkFreeNetwork)
        self._handle: Optional[Handle] = handle
        self._reset()

    def _reset(self) -> None:
        """Forgets what was gathered of the network's content."""
        self._node_names: Optional[Tuple[str, ...]] = None
        self._element_names: Optional[Tuple[str, ...]] = None
        self._element_types: Optional[Tuple[str, ...]] = None

    @classmethod
    def _of(cls, handle: Handle, findings: Findings) -> Network:
        network = cls.__new__(cls)
        network._handle = handle
        network._findings = findings
        network._reset()
        return network

    @classmethod
    def _made(cls, make: Function, *arguments: Any) -> Network:
        handle, findings = new_handle(make, *arguments, free=LIBRARY.tvkFreeNetwork)
        return cls._of(handle, findings)

    # In

    @classmethod
    def read(cls, path: Path) -> Network:
        """Reads a network by the ending of its name: "*.inp" is imported, "NODES.csv,ELEMENTS.csv" is a pair
        of tables, everything else is a network file. Raises BadInput with everything that is wrong."""
        return cls._made(LIBRARY.tvkReadNetwork, encoded_path(path))

    @classmethod
    def from_json(cls, source: Union[Path, bytes, Mapping[str, Any]], *, name: str = "") -> Network:
        """Reads a network file: its path, its text, or its content as a dict.

        A str is the text when its first sign is a brace, else the path. name: stands for the file in
        findings. Raises BadInput with everything that is wrong.
        """
        if isinstance(source, Mapping):
            text = _json_text(source)
        elif isinstance(source, bytes):
            text = source
        elif isinstance(source, str) and source.lstrip("\ufeff \t\r\n").startswith("{"):
            text = encoded(source)
        else:
            return cls.read(source)
        return cls._made(LIBRARY.tvkReadNetworkText, text, len(text), encoded(name))

    @classmethod
    def from_inp(
        cls, path: Path, *, time: Union[None, str, float] = None, freeze_valves: Optional[bool] = None
    ) -> Network:
        """Reads an EPANET input file. What could not be carried over is in .findings, as warnings and
        remarks.

        time: when demands and patterns are taken, "HH:MM" or [s]. freeze_valves: keep pressure valves as they
        stand. Raises BadInput.
        """
        options = options_text(time=time, freeze_valves=freeze_valves)
        return cls._made(LIBRARY.tvkImportInp, encoded_path(path), options)

    @classmethod
    def from_csv(cls, nodes_path: Path, elements_path: Path) -> Network:
        """Reads a pair of tables (docs/network-file.md). Raises BadInput."""
        return cls._made(LIBRARY.tvkReadCsv, encoded_path(nodes_path), encoded_path(elements_path))

    def copy(self) -> Network:
        """A network of its own with the same content."""
        with _Reading(self):
            copy = self._made(LIBRARY.tvkCopyNetwork, self._live.address)
        copy._findings = self._findings
        return copy

    __copy__ = copy

    def __deepcopy__(self, memo: Dict[int, Any]) -> Network:
        return self.copy()

    def __reduce__(self) -> Tuple[Callable[[str, Findings], Network], Tuple[str, Findings]]:
        text = self.to_json()
        Network.from_json(text)  # what could not be read again fails here, not when it is too late
        return _unpickled, (text, self._findings)

    # Out

    @overload
    def to_json(self) -> str:
        ...

    @overload
    def to_json(self, path: Path) -> None:
        ...

    def to_json(self, path: Optional[Path] = None) -> Optional[str]:
        """The canonical network file: as text, or written to a path as a whole or not at all. Raises BadInput
        when the file cannot be written."""
        if path is None:
            with _Reading(self):
                return text_of(LIBRARY.tvkNetworkText, self._live.address)
        self._live.read(LIBRARY.tvkWriteNetwork, encoded_path(path))
        return None

    def to_dict(self) -> Dict[str, Any]:
        """The content of the canonical network file."""
        content: Dict[str, Any] = json.loads(self.to_json())
        return content

    def to_csv(self, nodes_path: Path, elements_path: Path) -> Findings:
        """Writes the pair of tables. What they cannot hold is returned as warnings. Raises BadInput when a
        file cannot be written."""
        return self._live.read(LIBRARY.tvkWriteCsv, encoded_path(nodes_path), encoded_path(elements_path))

    def to_vtu(self, path: Path) -> None:
        """Writes a file for ParaView. Raises BadInput when it cannot be written."""
        self._export(path, ".vtu")

    def to_geojson(self, path: Path) -> None:
        """Writes a file for QGIS. Raises BadInput when it cannot be written."""
        self._export(path, ".geojson")

    def to_graphml(self, path: Path) -> None:
        """Writes a directed graph for networkx, Gephi, yEd. Raises BadInput when it cannot be written."""
        self._export(path, ".graphml")

    def _export(self, path: Path, ending: str) -> None:
        self._live.read(LIBRARY.tvkWriteExport, None, path_with_ending(path, ending))

    def to_networkx(self) -> networkx.MultiDiGraph:
        """The network as a directed graph of networkx: nodes and edges by their names, an edge's key being
        the name of its element, with the columns of .nodes and .elements (SI units) as their data."""
        return graph_of(self, self.nodes, self.elements)

    def picture(
        self,
        path: Path,
        *,
        view: Optional[str] = None,
        width: Optional[float] = None,
        scale: Optional[float] = None,
    ) -> Findings:
        """Draws the network to "*.svg" or "*.png". view: "plan", "elevation" or "isometric". width: [pixel].
        scale: pixels of a PNG per pixel of the drawing. Raises BadInput."""
        options = options_text(view=view, width=width, scale=scale)
        return self._live.read(LIBRARY.tvkWritePicture, None, encoded_path(path), options)

    def hash(self) -> str:
        """SHA-256 of everything that the answer depends on, 64 hexadecimal digits."""
        with _Reading(self):
            return text_of(LIBRARY.tvkNetworkHash, self._live.address)

    # Content

    @property
    def findings(self) -> Findings:
        """What there was to say when the network was read."""
        return self._findings

    @property
    def node_count(self) -> int:
        with _Reading(self):
            return int(LIBRARY.tvkNodeCount(self._live.address))

    @property
    def element_count(self) -> int:
        with _Reading(self):
            return int(LIBRARY.tvkElementCount(self._live.address))

    def _texts(self, function: Function, count: Function) -> Tuple[str, ...]:
        """A text of each node or element."""
        with _Reading(self):
            address = self._live.address
            return texts_at(function(address), count(address))

    @property
    def node_names(self) -> Tuple[str, ...]:
        """Names of the nodes, in the order of the network."""
        if self._node_names is None:
            self._node_names = self._texts(LIBRARY.tvkNodeNames, LIBRARY.tvkNodeCount)
        return self._node_names

    @property
    def element_names(self) -> Tuple[str, ...]:
        """Names of the elements, in the order of the network."""
        if self._element_names is None:
            self._element_names = self._texts(LIBRARY.tvkElementNames, LIBRARY.tvkElementCount)
        return self._element_names

    @property
    def element_types(self) -> Tuple[str, ...]:
        """Types of the elements as in the network file: "pipe"."""
        if self._element_types is None:
            self._element_types = self._texts(LIBRARY.tvkElementTypes, LIBRARY.tvkElementCount)
        return self._element_types

    @property
    def ends(self) -> Tuple[Positions, Positions]:
        """Positions of the start nodes and of the end nodes of all elements."""
        count = self.element_count
        start = np.zeros(count, dtype=np.uintp)
        end = np.zeros(count, dtype=np.uintp)
        if count:
            self._live.read(LIBRARY.tvkElementEnds, address_of(start), address_of(end))
        return start, end

    def node_positions(self, which: Which = None) -> Positions:
        """Positions of nodes, from 0. Raises BadInput for names that there are none of, IndexError for
        positions."""
        count = self.node_count
        return _whole(selected(LIBRARY.tvkFindNodes, self._live, which, count), count)

    def element_positions(self, which: Which = None) -> Positions:
        """Positions of elements, from 0. Raises BadInput for names that there are none of, IndexError for
        positions."""
        count = self.element_count
        return _whole(selected(LIBRARY.tvkFindElements, self._live, which, count), count)

    def node_values(self, key: str, which: Which = None) -> Floats:
        """One property of many nodes in SI units, NaN where nothing is given; keys as for set_node_values().
        Raises BadInput for an unknown key or name."""
        count = self.node_count
        positions = selected(LIBRARY.tvkFindNodes, self._live, which, count)
        return self._values(LIBRARY.tvkGetNodeValues, key, count, positions)

    def element_values(self, key: str, which: Which = None) -> Floats:
        """One property of many elements in SI units, NaN where nothing is given; keys as for
        set_element_values(). Raises BadInput for an unknown key or name."""
        count = self.element_count
        positions = selected(LIBRARY.tvkFindElements, self._live, which, count)
        return self._values(LIBRARY.tvkGetElementValues, key, count, positions)

    def _values(self, function: Function, key: str, count: int, positions: Optional[Positions]) -> Floats:
        """positions: None for all count objects."""
        values = np.empty(count if positions is None else len(positions))
        address = None if positions is None else positions.ctypes.data
        self._live.read(function, encoded(key), len(values), address, values.ctypes.data)
        return values

    @property
    def nodes(self) -> pd.DataFrame:
        """What is given of the nodes, by name, in SI units: "x", "y", "z", "boundary" ("inlet", "outlet" or
        ""), and what the boundary gives. Columns without a value are left out; attrs["units"] has the units.
        Made anew each time."""
        columns: Dict[str, Any] = {key: self.node_values(key) for key in ("x", "y", "z")}
        boundary = np.full(self.node_count, "", dtype=object)
        given: Dict[str, Floats] = {}
        for side in ("inlet", "outlet"):
            for key in _BOUNDARY_KEYS:
                values = self.node_values(f"{side}/{key}")
                is_given = ~np.isnan(values)
                boundary[is_given] = side
                if is_given.any():
                    given[key] = np.where(is_given, values, given.get(key, np.full(len(values), np.nan)))
        columns["boundary"] = boundary
        columns.update((key, given[key]) for key in _BOUNDARY_KEYS if key in given)
        return frame_of(columns, self.node_names, "node", NODE_UNITS)

    @property
    def elements(self) -> pd.DataFrame:
        """What is given of the elements, by name, in SI units: "type", "from" and "to" (names of nodes),
        "closed", "check_valve" and the numbers of their types. Columns without a value are left out;
        attrs["units"] has the units. Made anew each time."""
        names = np.array(self.node_names, dtype=object)
        start, end = self.ends
        columns: Dict[str, Any] = {
            "type": np.array(self.element_types, dtype=object),
            "from": names[start],
            "to": names[end],
            "closed": self.element_values("closed") > 0,
            "check_valve": self.element_values("check_valve") > 0,
        }
        for key in ELEMENT_UNITS:
            values = self.element_values(key)
            if not np.isnan(values).all():
                columns[key] = values
        return frame_of(columns, self.element_names, "element", ELEMENT_UNITS)

    # Building

    def add_node(
        self,
        name: str,
        x: Quantity = 0.0,
        y: Quantity = 0.0,
        z: Quantity = 0.0,
        *,
        inlet: Optional[Mapping[str, Quantity]] = None,
        outlet: Optional[Mapping[str, Quantity]] = None,
    ) -> None:
        """Appends a node at x, y, z [m].

        inlet or outlet: what is imposed there, in SI units or as texts with units: "pressure", "mass_flow",
        "volume_flow", "velocity", "reynolds", "temperature". Raises BadInput and changes nothing.
        """
        if inlet is not None and outlet is not None:
            raise refusal(f'the node "{name}" is inlet and outlet', "give one of them")
        at = np.array([[parsed(x, "x"), parsed(y, "y"), parsed(z, "z")]])
        side, given = ("inlet", inlet) if outlet is None else ("outlet", outlet)
        values = {f"{side}/{key}": parsed(value, key) for key, value in (given or {}).items()}
        if values:
            trial = Network()
            trial.add_nodes([name], at)
            for key, value in values.items():
                trial.set_node_values(key, value, 0)
        self.add_nodes([name], at)
        position = np.array([self.node_count - 1], dtype=np.uintp)
        for key, value in values.items():
            self._set(LIBRARY.tvkSetNodeValues, key, 1, position, value)

    def add_nodes(self, names: Sequence[str], at: Optional[npt.ArrayLike] = None) -> None:
        """Appends nodes. at: coordinates x, y, z [m] of each, an array of len(names) rows; zeros when absent.
        Raises BadInput and changes nothing."""
        texts = Texts(names)
        coordinates: Optional[Floats] = None
        if at is not None:
            coordinates = np.ascontiguousarray(at, dtype=np.float64)
            if coordinates.shape != (len(names), 3):
                raise refusal(
                    f"the coordinates have the shape {coordinates.shape}",
                    f"give {len(names)} rows of 3 numbers",
                )
        address = None if coordinates is None else address_of(coordinates)
        self._live.change(LIBRARY.tvkAddNodes, len(names), texts.pointer, address)
        self._node_names = None

    def add_element(
        self,
        name: str,
        type: str,
        start: Union[str, int],
        end: Union[str, int],
        *,
        curve: Optional[Curve] = None,
        **values: Optional[Quantity],
    ) -> None:
        """Appends an element of a type of the network file, "pipe", "pump" ...

        start, end: names or positions of its nodes. curve: of a pump or a loss, points of volume flow [m3/s]
        and pressure rise or drop [Pa], at least 4. values: as for set_element_values(), in SI units or as
        texts with units. Raises BadInput and changes nothing.
        """
        self._add_element(name, type, start, end, values, curve)

    def _add_element(
        self,
        name: str,
        type: str,
        start: Union[str, int],
        end: Union[str, int],
        values: Mapping[str, Optional[Quantity]],
        curve: Optional[Curve] = None,
    ) -> None:
        points = None if curve is None else _curve_points(curve)
        numbers = {key: parsed(value, key) for key, value in values.items() if value is not None}
        self._add_elements([name], type, [start], [end], numbers, points)

    def add_elements(
        self,
        names: Sequence[str],
        types: Union[str, Sequence[str]],
        starts: Which,
        ends: Which,
        **values: Optional[Values],
    ) -> None:
        """Appends elements. types: one for all, or one for each. starts, ends: names or positions of their
        nodes. values: as for set_element_values(), one for all or one for each; NaN where there is none.
        Raises BadInput and changes nothing."""
        given = {key: value for key, value in values.items() if value is not None}
        self._add_elements(names, types, starts, ends, given, None)

    def _add_elements(
        self,
        names: Sequence[str],
        types: Union[str, Sequence[str]],
        starts: Any,
        ends: Any,
        values: Mapping[str, Values],
        curve: Optional[Tuple[Floats, Floats]],
    ) -> None:
        count = len(names)
        kinds = _Types(types, count)
        name_texts = Texts(names)
        start = self._end_positions(starts, count)
        end = self._end_positions(ends, count)
        numbers = {key: numbers_of(values[key], key, count) for key in _in_order(values)}
        if numbers or curve is not None:
            _try_values(name_texts, kinds, numbers, curve)
        self._append(name_texts, kinds.pointers, start, end, numbers, curve)

    def _append(
        self,
        names: Texts,
        kinds: Positions,
        start: Positions,
        end: Positions,
        numbers: Mapping[str, Floats],
        curve: Optional[Tuple[Floats, Floats]],
    ) -> None:
        first = self.element_count
        count = len(names.addresses)
        self._live.change(
            LIBRARY.tvkAddElements,
            count,
            names.pointer,
            address_of(kinds),
            address_of(start),
            address_of(end),
        )
        self._element_names = None
        self._element_types = None
        added = np.arange(first, first + count, dtype=np.uintp)
        for key, values in numbers.items():
            is_given = ~np.isnan(values)
            self._set(LIBRARY.tvkSetElementValues, key, count, added[is_given], values[is_given])
        if curve is not None:
            flows, pressures = curve
            self._live.change(
                LIBRARY.tvkSetCurve, first, len(flows), address_of(flows), address_of(pressures)
            )

    def _end_positions(self, ends: Any, count: int) -> Positions:
        """Positions of the nodes at one end of count elements."""
        names = names_in(ends)
        if names is not None:
            positions = found_positions(LIBRARY.tvkFindNodes, self._live, names)
        else:
            given = np.asarray(ends)
            if given.size and given.dtype.kind not in "iu":
                raise refusal(
                    "the ends are neither names nor positions", "give names, or whole numbers from 0"
                )
            if given.size and given.min() < 0:
                raise refusal("the position of a node is below 0", "give positions from 0")
            positions = np.atleast_1d(given).astype(np.uintp)
        if positions.shape != (count,):
            raise refusal(f"there are {positions.size} ends for {count} elements", "give one for each")
        return np.ascontiguousarray(positions)

    def add_pipe(
        self,
        name: str,
        start: Union[str, int],
        end: Union[str, int],
        diameter: Quantity,
        *,
        length: Optional[Quantity] = None,
        roughness: Optional[Quantity] = None,
        k: Optional[float] = None,
        check_valve: Optional[bool] = None,
        **values: Optional[Quantity],
    ) -> None:
        """Appends a Darcy-Weisbach pipe. diameter, length, roughness: [m] or texts with units; the length is
        the distance between the nodes when absent. k: minor loss coefficient [-]. Raises BadInput and changes
        nothing."""
        given = {
            "diameter": diameter,
            "length": length,
            "roughness": roughness,
            "k": k,
            "check_valve": check_valve,
        }
        self._add_element(name, "pipe", start, end, {**given, **values})

    def add_hazen_williams_pipe(
        self,
        name: str,
        start: Union[str, int],
        end: Union[str, int],
        diameter: Quantity,
        coefficient: float,
        *,
        length: Optional[Quantity] = None,
        k: Optional[float] = None,
        **values: Optional[Quantity],
    ) -> None:
        """Appends a Hazen-Williams pipe. diameter, length: [m] or texts with units. coefficient: C, in SI.
        Raises BadInput and changes nothing."""
        given = {"diameter": diameter, "coefficient": coefficient, "length": length, "k": k}
        self._add_element(name, "hazen_williams_pipe", start, end, {**given, **values})

    def add_pump(
        self,
        name: str,
        start: Union[str, int],
        end: Union[str, int],
        curve: Curve,
        **values: Optional[Quantity],
    ) -> None:
        """Appends a pump. curve: points of volume flow [m3/s] and pressure rise [Pa], or texts with units, at
        least 4 of rising flow. values: reference_density [kg/m3], fixed_mass_flow [kg/s]. Raises BadInput and
        changes nothing."""
        self._add_element(name, "pump", start, end, values, curve)

    def add_loss(
        self,
        name: str,
        start: Union[str, int],
        end: Union[str, int],
        curve: Curve,
        **values: Optional[Quantity],
    ) -> None:
        """Appends a component by its curve: points of volume flow [m3/s] and pressure drop [Pa], or texts
        with units, at least 4 of rising flow. values: as for add_pump(). Raises BadInput and changes
        nothing."""
        self._add_element(name, "loss", start, end, values, curve)

    def add_kv_valve(
        self, name: str, start: Union[str, int], end: Union[str, int], diameter: Quantity, kv: float
    ) -> None:
        """Appends a valve. diameter: [m] or a text with a unit. kv: [m3/h at 1 bar]. Raises BadInput and
        changes nothing."""
        self.add_element(name, "kv_valve", start, end, diameter=diameter, kv=kv)

    def add_cv_valve(
        self, name: str, start: Union[str, int], end: Union[str, int], diameter: Quantity, cv: float
    ) -> None:
        """Appends a valve. diameter: [m] or a text with a unit. cv: [US gal/min at 1 psi]. Raises BadInput
        and changes nothing."""
        self.add_element(name, "cv_valve", start, end, diameter=diameter, cv=cv)

    def set_curve(
        self, element: Union[str, int], volume_flows: npt.ArrayLike, pressures: npt.ArrayLike
    ) -> None:
        """Gives a pump or a loss its curve: volume flows [m3/s] in rising order and pressure rises or drops
        [Pa]. Raises BadInput and changes nothing."""
        flows = np.ascontiguousarray(volume_flows, dtype=np.float64)
        rises = np.ascontiguousarray(pressures, dtype=np.float64)
        if flows.ndim != 1 or flows.shape != rises.shape:
            raise refusal(
                "flows and pressures of the curve are not equally many", "give one pressure for each flow"
            )
        (position,) = self.element_positions(element)
        self._live.change(
            LIBRARY.tvkSetCurve, int(position), len(flows), flows.ctypes.data, rises.ctypes.data
        )

    def set_node_values(self, key: str, values: Values, which: Which = None) -> None:
        """Sets one property of many nodes, all or none.

        key: "x", "y", "z" [m]; of a boundary "inlet/pressure" [Pa], "inlet/mass_flow" [kg/s],
        "inlet/volume_flow" [m3/s], "inlet/velocity" [m/s], "inlet/reynolds", "inlet/temperature" [K], and the
        same with "outlet/". A flow replaces a flow that was given otherwise; a value of an outlet makes an
        inlet an outlet; NaN takes a value away, and a boundary with its last value. values: one for all or
        one for each, in SI units; texts may have units. A Series of pandas brings the names of its index
        along. which: names, positions, a mask or a slice; all nodes when absent. Raises BadInput, or
        IndexError for positions.
        """
        which, values = _with_names(which, values)
        count = self.node_count
        positions = selected(LIBRARY.tvkFindNodes, self._live, which, count)
        self._set(LIBRARY.tvkSetNodeValues, key, count, positions, values)

    def set_element_values(self, key: str, values: Values, which: Which = None) -> None:
        """Sets one property of many elements, all or none.

        key: "diameter", "wetted_perimeter", "length" [m], "area" [m2], "closed", "check_valve" (0 or 1),
        "reference_density" [kg/m3] and the numbers of the element's type as in the network file ("roughness"
        [m], "k", "kv" ...). A diameter makes a round section with its area. values, which: as for
        set_node_values(). Raises BadInput, or IndexError for positions.
        """
        which, values = _with_names(which, values)
        count = self.element_count
        positions = selected(LIBRARY.tvkFindElements, self._live, which, count)
        self._set(LIBRARY.tvkSetElementValues, key, count, positions, values)

    def _set(
        self, function: Function, key: str, count: int, positions: Optional[Positions], values: Values
    ) -> None:
        """positions: None for all count objects."""
        if key in _PATCH_KEYS:
            raise refusal(f'"{key}" is no number', "set it with patch() when the network is complete")
        numbers = numbers_of(values, key, count if positions is None else len(positions))
        address = None if positions is None else positions.ctypes.data
        self._live.change(function, encoded(key), len(numbers), address, numbers.ctypes.data)

    def set_inlet(self, which: Which, **values: Values) -> None:
        """Makes nodes inlets and sets what is imposed there: pressure [Pa], mass_flow [kg/s], volume_flow
        [m3/s], velocity [m/s], reynolds, temperature [K], in SI units or as texts with units; flows count
        into the network. Raises BadInput; values before the one that is refused are set."""
        for key, value in values.items():
            self.set_node_values(f"inlet/{key}", value, which)

    def set_outlet(self, which: Which, **values: Values) -> None:
        """Makes nodes outlets; as set_inlet(), but flows count out of the network."""
        for key, value in values.items():
            self.set_node_values(f"outlet/{key}", value, which)

    def patch(self, changes: Union[str, Mapping[str, Any]]) -> Findings:
        """Changes a complete network by an object in the form of a scenario (docs/network-file.md), for what
        has no method of its own: {"settings": {"temperatures": True}, "nodes": {"tap": {"outlet": None}}}.
        Dicts are merged, None removes a key. Returns what there is to say. Raises BadInput and changes
        nothing."""
        text = encoded(changes) if isinstance(changes, str) else _json_text(changes)
        findings = self._live.change(LIBRARY.tvkPatchNetwork, text)
        self._element_types = None
        return findings

    @property
    def scenarios(self) -> Tuple[str, ...]:
        """Names of the scenarios, in alphabetical order."""
        with _Reading(self):
            address = self._live.address
            count = LIBRARY.tvkScenarioCount(address)
            return tuple(LIBRARY.tvkScenarioName(address, i).decode() for i in range(count))

    def scenario(self, name: str) -> Network:
        """The network with the patches of one of its scenarios. Raises BadInput."""
        with _Reading(self):
            return self._made(LIBRARY.tvkNetworkScenario, self._live.address, encoded(name))

    # Solving and checking

    def solve(
        self,
        *,
        scenario: Optional[str] = None,
        energy: Optional[bool] = None,
        on_progress: Optional[OnProgress] = None,
        must_converge: bool = True,
    ) -> Result:
        """Solves the network.

        scenario: name of one. energy: whether temperatures are solved too; as the network's settings say when
        absent. on_progress: called with the number of each step, from 1, on the thread of the call; when it
        returns tavell.STOP the solve stops. What it raises goes on when the solve has stopped, and so does a
        KeyboardInterrupt. Raises BadInput for a network that cannot be solved; NotConverged and Cancelled
        with .result, or returns that result when must_converge is False.
        """
        from ._result import Result

        options = options_text(scenario=scenario, temperatures=energy)
        address = ctypes.c_void_p()
        handle: Optional[Handle] = None
        try:
            status, findings = watched(
                lambda progress: self._live.run_reading(
                    LIBRARY.tvkSolve, options, progress, None, ctypes.byref(address)
                ),
                on_progress,
            )
        finally:
            if address.value is not None:
                handle = Handle(address.value, LIBRARY.tvkFreeResult)
        if handle is None:
            raise_unless_ok(status, findings)
            raise MemoryError("a solve made no result")
        result = Result._of(handle, findings)
        if must_converge:
            raise_unless_ok(status, findings, result)
        return result

    def check(self) -> Findings:
        """What there is to say about the network before a solve. Raises nothing for a network with errors."""
        status, findings = self._live.run_reading(LIBRARY.tvkExamine)
        if status != _library.BAD_INPUT:
            raise_unless_ok(status, findings)
        return findings

    def doctor(self, *, on_progress: Optional[OnProgress] = None) -> Findings:
        """Examines the network, solves it and examines the result: what is wrong and what to do, errors
        first. When it does not solve, the smallest part found that does not is named. on_progress: as for
        solve(); STOP ends the examination with what was found until then."""
        findings = self.check()
        options: Optional[bytes] = None
        address = ctypes.c_void_p()
        handle: Optional[Handle] = None
        try:
            status, solved = watched(
                lambda progress: self._live.run_reading(
                    LIBRARY.tvkSolve, options, progress, None, ctypes.byref(address)
                ),
                on_progress,
            )
        finally:
            if address.value is not None:
                handle = Handle(address.value, LIBRARY.tvkFreeResult)
        if handle is None:
            if status != _library.BAD_INPUT:
                raise_unless_ok(status, solved)
            new = Findings(finding for finding in solved if finding not in set(findings))
            return (findings + new).worst_first()
        findings += handle.read(LIBRARY.tvkDiagnose)
        if status == _library.NOT_CONVERGED:
            findings += self.smallest_failing_part(on_progress=on_progress).findings
        return findings.worst_first()

    def smallest_failing_part(
        self, *, most_solves: int = _MOST_SOLVES, on_progress: Optional[OnProgress] = None
    ) -> FailingPart:
        """The smallest part found of a network that does not solve which still does not solve. most_solves:
        how many solves may be spent. on_progress: as for solve(). Raises BadInput for a network that cannot
        be solved."""
        count = self.element_count
        positions = np.zeros(count, dtype=np.uintp)
        found = ctypes.c_size_t()
        why = ctypes.c_void_p()
        text = ""
        try:
            status, findings = watched(
                lambda progress: self._live.run_reading(
                    LIBRARY.tvkSmallestFailingPart,
                    most_solves,
                    progress,
                    None,
                    address_of(positions),
                    count,
                    ctypes.byref(found),
                    ctypes.byref(why),
                ),
                on_progress,
            )
        finally:
            text = _library.take_text(why)
        raise_unless_ok(status, findings)
        names = self.element_names
        return FailingPart(tuple(names[i] for i in positions[: found.value]), text, findings)

    def report(
        self,
        path: Path,
        *,
        units: Optional[str] = None,
        scenario: Optional[str] = None,
        energy: Optional[bool] = None,
        on_progress: Optional[OnProgress] = None,
    ) -> Result:
        """Solves the network, writes one self-contained HTML page about it, also when it did not converge,
        and returns the result. units: a set such as "metric", single units such as "pressure=bar", or both.
        Raises BadInput; Cancelled without a page when on_progress returned STOP."""
        result = self.solve(scenario=scenario, energy=energy, on_progress=on_progress, must_converge=False)
        if result.outcome == "cancelled":
            raise_unless_ok(_library.CANCELLED, result.findings, result)
        result.report(path, units=units, on_progress=on_progress)
        return result

    # Ownership

    @property
    def _live(self) -> Handle:
        if self._handle is None:
            raise ValueError("the network is closed")
        return self._handle

    def close(self) -> None:
        """Gives the network's memory back. It is given back anyway when nobody holds the network any more."""
        self._handle = None

    def __enter__(self) -> Network:
        return self

    def __exit__(
        self,
        kind: Optional[Type[BaseException]],
        error: Optional[BaseException],
        traceback: Optional[TracebackType],
    ) -> None:
        self.close()

    def __repr__(self) -> str:
        if self._handle is None:
            return "<Network: closed>"
        return f"<Network: {counted(self.node_count, 'node')}, {counted(self.element_count, 'element')}>"

    def _repr_html_(self) -> str:
        return _html.network_page(self)


class _Reading:
    """A block in which the content of a network is read, for calls that do not go through its Handle."""

    def __init__(self, network: Network) -> None:
        self._handle = network._live

    def __enter__(self) -> None:
        self._handle.begin_reading()

    def __exit__(self, *error: object) -> None:
        self._handle.end_reading()


def check_file(
    path: Path, *, time: Union[None, str, float] = None, freeze_valves: Optional[bool] = None
) -> Findings:
    """Reads a file as Network.read() does and examines it: all that there is to say, also about a file with
    errors, as far as these leave its nodes and elements their meaning. time, freeze_valves: as for
    Network.from_inp()."""
    options = options_text(time=time, freeze_valves=freeze_valves)
    address = ctypes.c_void_p()
    status, findings = run(LIBRARY.tvkReadAndExamine, encoded_path(path), options, ctypes.byref(address))
    LIBRARY.tvkFreeNetwork(address)
    if status != _library.BAD_INPUT:
        raise_unless_ok(status, findings)
    return findings


def _unpickled(text: str, findings: Findings) -> Network:
    network = Network.from_json(text)
    network._findings = findings
    return network


def _whole(positions: Optional[Positions], count: int) -> Positions:
    """The positions of a selection, also of all."""
    return np.arange(count, dtype=np.uintp) if positions is None else positions


def _in_order(values: Mapping[str, Any]) -> List[str]:
    return sorted(values, key=lambda key: key not in _FIRST_KEYS)


def _curve_points(curve: Curve) -> Tuple[Floats, Floats]:
    flows = [parsed(flow, "volume_flow") for flow, _ in curve]
    pressures = [parsed(pressure, "pressure") for _, pressure in curve]
    if not flows:
        raise refusal("the curve has no points", "give at least 4")
    return np.array(flows), np.array(pressures)


class _Types:
    """The types of count elements for the kit. ranks: of each element the position of its type among those
    that there are; few types serve many elements."""

    def __init__(self, types: Union[str, Sequence[str]], count: int) -> None:
        if isinstance(types, str):
            different = [types] if count else []
            self.ranks = np.zeros(count, dtype=np.intp)
        elif len(types) != count:
            raise refusal(
                f"there are {len(types)} types for {count} elements", "give one for all, or one for each"
            )
        else:
            rank_of = {name: rank for rank, name in enumerate(dict.fromkeys(types))}
            different = list(rank_of)
            self.ranks = np.array([rank_of[name] for name in types], dtype=np.intp)
        self.texts = Texts(different)
        self.pointers: Positions = self.texts.addresses[self.ranks]


def _try_values(
    names: Texts, types: _Types, numbers: Mapping[str, Floats], curve: Optional[Tuple[Floats, Floats]]
) -> None:
    """Raises BadInput when new elements cannot have their values, before they are added: what was added
    cannot be taken away. The values that an element may have are a range, so the least and the greatest of a
    type stand for all; when one of them is refused all are tried, so that the findings have the right
    name."""

    def try_out(trial_names: Texts, kinds: Positions, values: Mapping[str, Floats]) -> None:
        trial = Network()
        trial.add_nodes(["start", "end"])
        zeros = np.zeros(len(kinds), dtype=np.uintp)
        trial._append(trial_names, kinds, zeros, zeros + np.uintp(1), values, curve)

    type_count = len(types.texts.addresses)
    if len(types.pointers) > 2 * type_count:
        least: Dict[str, Floats] = {}
        greatest: Dict[str, Floats] = {}
        for key, values in numbers.items():
            least[key] = np.full(type_count, np.inf)
            greatest[key] = np.full(type_count, -np.inf)
            np.fmin.at(least[key], types.ranks, values)
            np.fmax.at(greatest[key], types.ranks, values)
            is_without = (least[key] == np.inf) & (greatest[key] == -np.inf)
            least[key][is_without] = greatest[key][is_without] = np.nan
        try:
            try_out(types.texts, types.texts.addresses, least)
            try_out(types.texts, types.texts.addresses, greatest)
            return
        except BadInput:
            pass
    try_out(names, types.pointers, numbers)


def _with_names(which: Which, values: Any) -> Tuple[Which, Any]:
    """A Series that is indexed by names brings them along."""
    pandas = sys.modules.get("pandas")  # who has a Series has imported it
    if which is None and pandas is not None and isinstance(values, pandas.Series):
        names = names_in(values.index.to_numpy())
        if names is not None:
            return names, values.to_numpy()
    return which, values


def counted(count: int, word: str) -> str:
    return f"{count} {word}{'' if count == 1 else 's'}"


def path_with_ending(path: Path, ending: str) -> bytes:
    """A path for a writer that chooses its format by the ending. Raises BadInput for another one."""
    name = os.fspath(path)
    if not name.lower().endswith(ending):
        raise refusal(f'the file name "{name}" does not end with {ending}', f"end it with {ending}")
    return encoded_path(name)


def frame_of(
    columns: Mapping[str, Any], names: Sequence[str], index_name: str, units: Mapping[str, str]
) -> pd.DataFrame:
    """A frame by name whose attrs["units"] has the units of its columns. Arrays are not copied."""
    import pandas as pd

    index = pd.Index(names, name=index_name, dtype=object)
    frame = pd.DataFrame(dict(columns), index=index, copy=False)
    frame.attrs["units"] = {key: units[key] for key in columns if key in units}
    return frame


def graph_of(network: Network, nodes: pd.DataFrame, elements: pd.DataFrame) -> networkx.MultiDiGraph:
    """A graph with the columns of two frames as data; "from" and "to" are its edges themselves."""
    import networkx

    graph = networkx.MultiDiGraph()
    graph.add_nodes_from(zip(nodes.index, nodes.to_dict("records")))
    names = network.node_names
    start, end = network.ends
    data = elements.drop(columns=["from", "to"], errors="ignore").to_dict("records")
    graph.add_edges_from(
        (names[i], names[j], key, values) for i, j, key, values in zip(start, end, elements.index, data)
    )
    return graph
