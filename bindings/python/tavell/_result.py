"""Results of a solve: values, certificate, tables, report, exports."""

from __future__ import annotations

import contextlib
import ctypes
import json
import os
import tempfile
from types import TracebackType
from typing import (
    TYPE_CHECKING,
    Any,
    Callable,
    Dict,
    Iterator,
    Mapping,
    Optional,
    Tuple,
    Type,
    Union,
    overload,
)

from . import _html, _library
from ._arrays import Floats, Path, encoded, encoded_path, lent_array
from ._findings import Findings, checked, raise_unless_ok, refusal, text_of
from ._handles import Handle
from ._library import LIBRARY, Function
from ._network import Network, counted, frame_of, graph_of, new_handle, options_text, path_with_ending
from ._progress import OnProgress, watched
from ._units import ELEMENT_QUANTITIES, NODE_QUANTITIES, converted, units_of

if TYPE_CHECKING:
    import networkx
    import pandas as pd

_OUTCOMES = {
    _library.OK: "converged",
    _library.NOT_CONVERGED: "not converged",
    _library.CANCELLED: "cancelled",
}

# The quantities of the frames; the others are those of node_values() and element_values() only.
_NODE_COLUMNS = ("pressure", "head", "temperature", "external_mass_flow")
_ELEMENT_COLUMNS = ("mass_flow", "volume_flow", "velocity", "reynolds", "pressure_difference", "temperature")


class Certificate(Mapping[str, Any]):
    """The check of a result by its numbers alone: the fields of docs/certificate.md by name, None for those
    that do not apply. str() says the same in words."""

    def __init__(self, fields: Mapping[str, Any], text: str) -> None:
        self._fields = dict(fields)
        self._text = text

    @property
    def is_good(self) -> bool:
        """Whether the solve converged and every limit holds."""
        return bool(self._fields["is_good"])

    def __getitem__(self, name: str) -> Any:
        return self._fields[name]

    def __iter__(self) -> Iterator[str]:
        return iter(self._fields)

    def __len__(self) -> int:
        return len(self._fields)

    def __str__(self) -> str:
        return self._text

    def __repr__(self) -> str:
        return f"<Certificate: {'good' if self.is_good else 'not good'}>"

    def _repr_html_(self) -> str:
        return _html.certificate_table(self)


class Result:
    """The outcome of a solve, in SI units: m, m3/s, kg/s, Pa, m/s, K. It does not change.

    Arrays of node_values() and element_values() are those of the library itself: they are read-only and keep
    the memory that they show. Several threads may read one result at once.
    """

    def __init__(self) -> None:
        raise TypeError("results are made by Network.solve() and Result.from_json()")

    @classmethod
    def _of(cls, handle: Handle, findings: Findings) -> Result:
        result = cls.__new__(cls)
        result._handle = handle
        result._findings = findings
        network, _ = new_handle(LIBRARY.tvkResultNetwork, handle.address, free=LIBRARY.tvkFreeNetwork)
        result._network = Network._of(network, Findings())
        result._frames = {}
        return result

    _handle: Optional[Handle]
    _findings: Findings
    _network: Network
    _frames: Dict[Tuple[str, str], pd.DataFrame]

    # In and out

    @classmethod
    def from_json(cls, source: Union[Path, bytes]) -> Result:
        """Reads a result file: its path or its text, a str being the text when its first sign is a brace.
        Raises BadInput."""
        if isinstance(source, str) and source.lstrip("\ufeff \t\r\n").startswith("{"):
            source = encoded(source)
        if not isinstance(source, bytes):
            handle, findings = new_handle(
                LIBRARY.tvkReadResult, encoded_path(source), free=LIBRARY.tvkFreeResult
            )
            return cls._of(handle, findings)
        with _temporary(".json") as path:
            with open(path, "wb") as file:
                file.write(source)
            return cls.from_json(path)

    @overload
    def to_json(self) -> str:
        ...

    @overload
    def to_json(self, path: Path) -> None:
        ...

    def to_json(self, path: Optional[Path] = None) -> Optional[str]:
        """The result file, with network, numbers and certificate: as text, or written to a path as a whole or
        not at all. Raises BadInput when the file cannot be written."""
        if path is None:
            return text_of(LIBRARY.tvkResultText, self._live.address)
        self._live.read(LIBRARY.tvkWriteResult, encoded_path(path))
        return None

    def tables(self, *, format: str = "text", units: Optional[str] = None) -> str:
        """Tables of nodes and elements. format: "text", "csv" or "json". units: a set such as "si", "metric"
        or "us", single units such as "pressure=bar,length=ft", or both; those of the network file when
        absent. Raises BadInput."""
        return text_of(LIBRARY.tvkResultTables, self._live.address, encoded(format), _units_bytes(units))

    @overload
    def to_csv(self, *, units: Optional[str] = None) -> str:
        ...

    @overload
    def to_csv(self, path: Path, *, units: Optional[str] = None) -> None:
        ...

    def to_csv(self, path: Optional[Path] = None, *, units: Optional[str] = None) -> Optional[str]:
        """The tables as comma-separated values: as text, or written to a path. units: as for tables(). Raises
        BadInput."""
        return _given_or_written(self.tables(format="csv", units=units), path)

    @overload
    def to_exchange_csv(self) -> str:
        ...

    @overload
    def to_exchange_csv(self, path: Path) -> None:
        ...

    def to_exchange_csv(self, path: Optional[Path] = None) -> Optional[str]:
        """The short exchange form: elements, then nodes, numbered from 1, six digits, SI units: as text, or
        written to a path. Raises BadInput."""
        return _given_or_written(text_of(LIBRARY.tvkResultExchangeCsv, self._live.address), path)

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
        file = path_with_ending(path, ending)
        self._solved._live.read(LIBRARY.tvkWriteExport, self._live.address, file)

    def to_networkx(self) -> networkx.MultiDiGraph:
        """The network as a directed graph of networkx: nodes and edges by their names, an edge's key being
        the name of its element, with what is given and what was found (SI units) as their data. Where both
        have a column of one name, what was found stands."""
        return graph_of(
            self._solved,
            _joined(self._solved.nodes, self.nodes),
            _joined(self._solved.elements, self.elements),
        )

    def report(
        self, path: Path, *, units: Optional[str] = None, on_progress: Optional[OnProgress] = None
    ) -> Findings:
        """Writes one self-contained HTML page. units: as for tables().

        When the solve did not converge, the page names the smallest part that fails; on_progress is called in
        that search as in a solve. Raises BadInput; Cancelled, without a page, when it returned STOP.
        """
        options = options_text(units=units)
        status, findings = watched(
            lambda progress: self._live.run_reading(
                LIBRARY.tvkWriteReport, encoded_path(path), options, progress, None
            ),
            on_progress,
        )
        raise_unless_ok(status, findings)
        return findings

    def picture(
        self,
        path: Path,
        *,
        view: Optional[str] = None,
        quantity: Optional[str] = None,
        units: Optional[str] = None,
        width: Optional[float] = None,
        scale: Optional[float] = None,
    ) -> Findings:
        """Draws the network with its values to "*.svg" or "*.png". view: "plan", "elevation" or "isometric".
        quantity: what it is coloured by, "none", "pressure", "head", "velocity", "mass_flow", "volume_flow"
        or "temperature". units: as for tables(). width: [pixel]. scale: pixels of a PNG per pixel of the
        drawing. Raises BadInput."""
        options = options_text(view=view, quantity=quantity, units=units, width=width, scale=scale)
        return self._solved._live.read(
            LIBRARY.tvkWritePicture, self._live.address, encoded_path(path), options
        )

    # Values

    @property
    def outcome(self) -> str:
        """ "converged", "not converged" or "cancelled"."""
        return _OUTCOMES[LIBRARY.tvkResultOutcome(self._live.address)]

    @property
    def converged(self) -> bool:
        return self.outcome == "converged"

    @property
    def iterations(self) -> int:
        """The steps of the solve, as on_progress counts them."""
        return int(LIBRARY.tvkResultIterations(self._live.address))

    @property
    def has_values(self) -> bool:
        """Whether there are values: a solve that did not converge may have none."""
        return bool(LIBRARY.tvkResultHasValues(self._live.address))

    @property
    def findings(self) -> Findings:
        """What the solve had to say. A result that was read from a file has those of the file in
        diagnose()."""
        return self._findings

    @property
    def network(self) -> Network:
        """The network that was solved, with its scenario: a network of its own at each call."""
        return self._solved.copy()

    @property
    def node_names(self) -> Tuple[str, ...]:
        """Names of the nodes, in the order of the values."""
        return self._solved.node_names

    @property
    def element_names(self) -> Tuple[str, ...]:
        """Names of the elements, in the order of the values."""
        return self._solved.element_names

    def node_values(self, quantity: str) -> Floats:
        """One quantity of all nodes, without a copy, read-only: "pressure" [Pa] static, "head" [m],
        "temperature" [K], "external_mass_flow" [kg/s] > 0 into the network, "mass_residual" [kg/s] that which
        does not balance. NaN where it is not defined. Raises BadInput for an unknown quantity and without
        values."""
        return self._lent(LIBRARY.tvkNodeResults, quantity, NODE_QUANTITIES, self._solved.node_count)

    def element_values(self, quantity: str) -> Floats:
        """One quantity of all elements, without a copy, read-only: "mass_flow" [kg/s] > 0 from start to end,
        "volume_flow" [m3/s], "velocity" [m/s], "reynolds", "pressure_difference" [Pa] end minus start,
        "temperature" [K]; the parts of that difference "friction", "minor", "height", "pump", "other" [Pa];
        "law_mismatch" [Pa]. NaN where it is not defined. Raises BadInput for an unknown quantity and without
        values."""
        return self._lent(LIBRARY.tvkElementResults, quantity, ELEMENT_QUANTITIES, self._solved.element_count)

    def _lent(
        self, function: Function, quantity: str, known: Mapping[str, Tuple[str, str]], count: int
    ) -> Floats:
        handle = self._live
        address: Optional[int] = function(handle.address, encoded(quantity))
        if not self.has_values:
            raise refusal(f"the result has no values: the solve is {self.outcome}", "look at its findings")
        if address is None:
            raise refusal(f'there is no quantity "{quantity}"', f"give one of {', '.join(known)}")
        return lent_array(handle, address, count)

    def node(self, name: str) -> Dict[str, float]:
        """The values of one node by quantity, in SI units. Raises BadInput for an unknown name."""
        (position,) = self._solved.node_positions([name])
        return {
            key: float(self.node_values(key)[position]) for key in _NODE_COLUMNS if self._has("node", key)
        }

    def element(self, name: str) -> Dict[str, float]:
        """The values of one element by quantity, in SI units. Raises BadInput for an unknown name."""
        (position,) = self._solved.element_positions([name])
        return {
            key: float(self.element_values(key)[position])
            for key in _ELEMENT_COLUMNS
            if self._has("element", key)
        }

    @property
    def nodes(self) -> pd.DataFrame:
        """The values of the nodes, by name, in SI units: "pressure", "head", "temperature",
        "external_mass_flow". attrs["units"] has the units. Numbers are read-only; copy() gives a frame that
        can be changed. Without values it has no columns."""
        return self.node_frame()

    @property
    def elements(self) -> pd.DataFrame:
        """The values of the elements, by name, in SI units: "mass_flow", "volume_flow", "velocity",
        "reynolds", "pressure_difference", "temperature". As .nodes otherwise."""
        return self.element_frame()

    def node_frame(self, units: str = "si") -> pd.DataFrame:
        """As .nodes, in other units: a set such as "metric", single units such as "pressure=bar", or both.
        Raises BadInput for units that there are none of."""
        return self._frame("node", units)

    def element_frame(self, units: str = "si") -> pd.DataFrame:
        """As .elements, in other units; see node_frame()."""
        return self._frame("element", units)

    def _has(self, kind: str, quantity: str) -> bool:
        function = LIBRARY.tvkNodeResults if kind == "node" else LIBRARY.tvkElementResults
        return bool(function(self._live.address, encoded(quantity)))

    def _frame(self, kind: str, units: str) -> pd.DataFrame:
        """A frame is made once. What is given out shares its numbers, and may be given further columns."""
        self._live
        made = self._frames.get((kind, units))
        if made is None:
            made = self._frames[(kind, units)] = self._new_frame(kind, units)
        frame = made.copy(deep=False)
        frame.attrs["units"] = dict(made.attrs["units"])
        return frame

    def _new_frame(self, kind: str, units: str) -> pd.DataFrame:
        is_node = kind == "node"
        quantities = NODE_QUANTITIES if is_node else ELEMENT_QUANTITIES
        values_of = self.node_values if is_node else self.element_values
        chosen = units_of(units)
        columns: Dict[str, Floats] = {}
        column_units: Dict[str, str] = {}
        for key in _NODE_COLUMNS if is_node else _ELEMENT_COLUMNS:
            if not self._has(kind, key):
                continue
            quantity, unit = quantities[key]
            columns[key] = values_of(key)
            column_units[key] = chosen.get(quantity, unit) if quantity else unit
            if column_units[key] != unit:
                columns[key] = converted(columns[key], quantity, column_units[key])
        names = self.node_names if is_node else self.element_names
        return frame_of(columns, names, kind, column_units)

    # Checking

    def certificate(self) -> Certificate:
        """The check of the numbers by themselves (docs/certificate.md)."""
        address = self._live.address
        fields = json.loads(text_of(LIBRARY.tvkCertificate, address, b"json"))
        return Certificate(fields, text_of(LIBRARY.tvkCertificate, address, b"text").rstrip("\n"))

    def diagnose(self) -> Findings:
        """What the outcome shows, with the findings of the solve first."""
        return self._live.read(LIBRARY.tvkDiagnose)

    def verify(self) -> Findings:
        """Computes the certificate anew and compares it with that of the file that the result was read from.
        Without errors it holds."""
        status, findings = self._live.run_reading(LIBRARY.tvkVerify)
        if status != _library.NOT_CONVERGED:
            raise_unless_ok(status, findings)
        return findings

    # Ownership

    @property
    def _live(self) -> Handle:
        if self._handle is None:
            raise ValueError("the result is closed")
        return self._handle

    @property
    def _solved(self) -> Network:
        """The network that was solved, for the result's own use."""
        self._live
        return self._network

    def close(self) -> None:
        """Gives the result's memory back as soon as no array of it is left. That happens anyway when nobody
        holds the result any more."""
        self._handle = None
        self._frames.clear()
        self._network.close()

    def __enter__(self) -> Result:
        return self

    def __exit__(
        self,
        kind: Optional[Type[BaseException]],
        error: Optional[BaseException],
        traceback: Optional[TracebackType],
    ) -> None:
        self.close()

    def __copy__(self) -> Result:
        return self  # it does not change

    def __deepcopy__(self, memo: Dict[int, Any]) -> Result:
        return self

    def __reduce__(self) -> Tuple[Callable[[str, Findings], Result], Tuple[str, Findings]]:
        return _unpickled, (self.to_json(), self._findings)

    def __repr__(self) -> str:
        if self._handle is None:
            return "<Result: closed>"
        nodes = counted(self._network.node_count, "node")
        elements = counted(self._network.element_count, "element")
        return f"<Result: {self.outcome} in {counted(self.iterations, 'step')}, {nodes}, {elements}>"

    def _repr_html_(self) -> str:
        return _html.result_page(self)


def _unpickled(text: str, findings: Findings) -> Result:
    result = Result.from_json(text)
    result._findings = findings
    return result


@contextlib.contextmanager
def _temporary(ending: str) -> Iterator[str]:
    """The name of a file of one's own that is gone afterwards."""
    with tempfile.TemporaryDirectory(prefix="tavell-") as folder:
        yield os.path.join(folder, "file" + ending)


def _units_bytes(units: Optional[str]) -> Optional[bytes]:
    return None if units is None else encoded(units)


def _given_or_written(text: str, path: Optional[Path]) -> Optional[str]:
    """A text, or nothing when it was written to a file, as a whole or not at all."""
    if path is None:
        return text
    content = text.encode("utf-8")
    checked(LIBRARY.tvkWriteFile, encoded_path(path), content, ctypes.c_size_t(len(content)))
    return None


def _joined(given: pd.DataFrame, found: pd.DataFrame) -> pd.DataFrame:
    import pandas as pd

    return pd.concat([given.drop(columns=[key for key in found if key in given]), found], axis=1)
