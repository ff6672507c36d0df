"""Plans of studies: what varies, what is kept, and the numbers of every scenario.

The numbers of scenario k are a function of the plan and of k, whichever process on whichever machine asks for them.
docs/studies.md describes the file, plan-1.schema.json is its schema.
"""

from __future__ import annotations

import csv
import fnmatch
import hashlib
import json
import math
import os
import pathlib
from collections import Counter
from dataclasses import dataclass, field
from typing import Any, Dict, List, Mapping, Optional, Sequence, Tuple, Union

import numpy as np

from .._arrays import Floats
from .._findings import Error
from .._network import Network
from ._batch import ELEMENT, NETWORK, NODE, Input, Output
from ._draws import GENERATOR, BadDistribution, Quantile, distribution, uniform

VERSION = 1
_LARGEST_SEED = 2**64 - 1
_MOST_SCENARIOS = 2**53
_FOLDS = ("min:", "max:", "max_abs:", "sum:", "mean:", "argmin:", "argmax:", "argmax_abs:")
_PLAN_KEYS = {
    "tavell_study", "$schema", "title", "network", "solve", "generator", "seed", "scenarios", "table", "vary",
    "record", "limits", "show_inputs",
}  # fmt: skip


class StudyError(Exception):
    """A plan, a folder or a file that cannot be used. The text is one line: what is so, and what to do."""


@dataclass(frozen=True)
class Column:
    """A column of the table. names: what its numbers are positions of, for columns that name objects."""

    name: str
    names: Optional[Tuple[str, ...]] = None

    def text(self, value: float) -> str:
        """The value in a table: "" where there is none, the shortest number that reads back the same."""
        if math.isnan(value):
            return ""
        if self.names is not None:
            return self.names[int(value)]
        return repr(float(value))


@dataclass
class _Variable:
    """One entry of "vary". stream: of its first draw. axis: where its values are chosen by the scenario's number."""

    name: str
    part: int
    key: str
    positions: List[int]
    objects: List[str]
    use: str = "value"
    base: Floats = field(default_factory=lambda: np.zeros(0))
    quantile: Optional[Quantile] = None
    stream: int = 0
    is_each: bool = False
    axis: Optional[int] = None
    choices: Floats = field(default_factory=lambda: np.zeros(0))
    closes: bool = False


@dataclass(frozen=True)
class Limit:
    """A limit that rows are flagged by."""

    name: str
    columns: Tuple[int, ...]
    below: Optional[float]
    above: Optional[float]


def _fail(message: str) -> StudyError:
    return StudyError(message)


def _entry(value: Any, place: str, keys: Sequence[str]) -> Dict[str, Any]:
    if not isinstance(value, dict):
        raise _fail(f"{place} is no object; write {{ }} with its keys")
    for key in value:
        if key not in keys:
            raise _fail(f'{place} has no key "{key}"; its keys are {", ".join(sorted(keys))}')
    return value


def _list(plan: Mapping[str, Any], key: str) -> List[Any]:
    value = plan.get(key, [])
    if not isinstance(value, list):
        raise _fail(f'"{key}" is no list; write [ ]')
    return value


def _whole(value: Any, place: str, lowest: int, highest: int) -> int:
    if isinstance(value, bool) or not isinstance(value, int) or not lowest <= value <= highest:
        raise _fail(f"{place} is {value!r}; give a whole number from {lowest} to {highest}")
    return value


def _number(value: Any, place: str) -> float:
    if isinstance(value, bool) or not isinstance(value, (int, float)) or not math.isfinite(value):
        raise _fail(f"{place} is {value!r}; give a finite number")
    return float(value)


def _text(value: Any, place: str) -> str:
    if not isinstance(value, str) or not value or any(ord(letter) < 0x20 for letter in value):
        raise _fail(f"{place} is {value!r}; give a text without control characters")
    return value


def _grid(value: Any, place: str) -> Floats:
    """[1, 2, 3] or {"from": 1, "to": 3, "count": 3}."""
    if isinstance(value, dict):
        entry = _entry(value, place, ("from", "to", "count"))
        start, end = _number(entry.get("from"), place + ' "from"'), _number(entry.get("to"), place + ' "to"')
        count = _whole(entry.get("count"), place + ' "count"', 2, 10**9)
        steps = np.arange(count, dtype=np.float64) / (count - 1)
        values: Floats = start + (end - start) * steps
        values[-1] = end
        return values
    if not isinstance(value, list) or not value:
        raise _fail(f'{place} is no list of numbers; write [1, 2] or {{"from": 1, "to": 2, "count": 5}}')
    return np.array([_number(each, place) for each in value])


class _Objects:
    """The nodes or the elements of a network, by name."""

    def __init__(self, network: Network, part: int) -> None:
        self.part = part
        self.word = "node" if part == NODE else "element"
        self.names = network.node_names if part == NODE else network.element_names
        self._types = None if part == NODE else network.element_types
        self._network = network
        self._positions = {name: i for i, name in enumerate(self.names)}

    def base(self, key: str) -> Floats:
        try:
            read = self._network.node_values if self.part == NODE else self._network.element_values
            return read(key)
        except Error as error:
            raise _fail(error.findings[0].message + "; " + error.findings[0].remedy) from error

    def selected(self, selector: Any, place: str) -> List[int]:
        """Positions of "*", a name, a list of names, {"type": "pipe"} or {"match": "P*"}."""
        if selector == "*":
            return list(range(len(self.names)))
        if isinstance(selector, str):
            selector = [selector]
        if isinstance(selector, list):
            return [self._position(name, place) for name in selector]
        entry = _entry(selector, place, ("type", "match"))
        found = [i for i in range(len(self.names)) if self._fits(i, entry)]
        if not found:
            raise _fail(f"{place} selects no {self.word} of the network; correct it")
        return found

    def _position(self, name: Any, place: str) -> int:
        if name not in self._positions:
            raise _fail(f"{place}: the network has no {self.word} {name!r}; correct the name")
        return self._positions[name]

    def _fits(self, position: int, entry: Mapping[str, Any]) -> bool:
        if "type" in entry and (self._types is None or self._types[position] != entry["type"]):
            return False
        return "match" not in entry or fnmatch.fnmatchcase(self.names[position], str(entry["match"]))


def _read_table(path: pathlib.Path) -> Dict[str, List[Optional[float]]]:
    """The columns of a CSV file with names in its first line; None where a field is empty."""
    try:
        with open(path, newline="", encoding="utf-8-sig") as file:
            rows = list(csv.reader(file))
    except (OSError, UnicodeDecodeError, csv.Error) as error:
        raise _fail(f"the table {path} cannot be read: {error}") from error
    if len(rows) < 2:
        raise _fail(f"the table {path} has no rows below its line of names; add some")
    columns: Dict[str, List[Optional[float]]] = {name.strip(): [] for name in rows[0]}
    if len(columns) != len(rows[0]):
        raise _fail(f"the table {path} has two columns of one name; rename one")
    for line, row in enumerate(rows[1:], 2):
        if len(row) != len(rows[0]):
            raise _fail(f"line {line} of the table {path} has {len(row)} fields instead of {len(rows[0])}")
        for name, text in zip(columns, row):
            try:
                value = float(text) if text.strip() else None
            except ValueError:
                value = math.inf
            if value is not None and not math.isfinite(value):
                raise _fail(f"line {line} of the table {path} has {text!r} as {name!r}; give a finite number")
            columns[name].append(value)
    return columns


def canonical(value: Any) -> str:
    """JSON that is the same for the same content."""
    return json.dumps(value, sort_keys=True, separators=(",", ":"), ensure_ascii=True, allow_nan=False)


class Plan:
    """A study: its network, and the numbers and outputs of its scenarios.

    content: the plan as a dict. network: that it is about. table: the columns of its CSV file. Raises StudyError,
    with a text of one line, for what cannot be.
    """

    def __init__(
        self,
        content: Mapping[str, Any],
        network: Network,
        table: Optional[Mapping[str, Sequence[Optional[float]]]] = None,
    ) -> None:
        self.content = dict(_entry(dict(content), "the plan", sorted(_PLAN_KEYS)))
        if self.content.get("tavell_study") != VERSION:
            raise _fail(f'"tavell_study" is {self.content.get("tavell_study")!r}; this program reads 1')
        if self.content.get("generator", GENERATOR) != GENERATOR:
            raise _fail(f'the generator {self.content["generator"]!r} is unknown; give "{GENERATOR}"')
        self.table = {name: list(values) for name, values in (table or {}).items()}
        # Every process solves the network as its canonical file has it.
        self.network_text = network.to_json()
        self.network = Network.from_json(self.network_text)
        self.network_hash = self.network.hash()
        self.seed = _whole(self.content.get("seed", 0), '"seed"', 0, _LARGEST_SEED)
        self._read_solve()
        self._parts = {NODE: _Objects(self.network, NODE), ELEMENT: _Objects(self.network, ELEMENT)}
        self._axes: List[int] = []
        self._streams = 0
        self._variables: List[_Variable] = []
        self._read_variables()
        self._read_count()
        self.outputs: List[Output] = []
        self.output_columns: List[Column] = []
        self._read_outputs()
        self.limits = [self._limit(each, i) for i, each in enumerate(_list(self.content, "limits"))]
        if not isinstance(self.content.get("show_inputs", True), bool):
            raise _fail('"show_inputs" is neither true nor false')
        self._check_header()
        self.hash = self._hash()

    # In and out

    @classmethod
    def read(cls, path: Union[str, "os.PathLike[str]"]) -> Plan:
        """A plan from its file. Raises StudyError for a file that cannot be used, and when the network is not the
        one that the plan was made for."""
        try:
            content = json.loads(pathlib.Path(path).read_text(encoding="utf-8"))
        except OSError as error:
            raise _fail(f"the plan {path} cannot be read: {error.strerror}") from error
        except ValueError as error:
            raise _fail(f"the plan {path} is no JSON file: {error}") from error
        return cls.of(content, pathlib.Path(path).parent)

    @classmethod
    def of(cls, content: Any, folder: Union[str, "os.PathLike[str]"] = ".") -> Plan:
        """A plan from its content; the files that it names are beside folder."""
        content = _entry(content, "the plan", sorted(_PLAN_KEYS))
        given = content.get("network")
        if isinstance(given, str):
            given = {"path": given}
        given = _entry(given, '"network"', ("path", "hash"))
        path = pathlib.Path(folder) / _text(given.get("path"), 'the "path" of "network"')
        try:
            network = Network.read(path)
        except Error as error:
            lines = str(error).split("\n")
            more = f" (and {len(lines) - 1} more)" if len(lines) > 1 else ""
            raise _fail(f"the network cannot be used: {lines[0]}{more}") from error
        table = None
        if "table" in content:
            table = _read_table(pathlib.Path(folder) / _text(content["table"], '"table"'))
        plan = cls(content, network, table)
        if given.get("hash") not in (None, plan.network_hash):
            raise _fail(
                f"the network {path} has changed since the plan was made: its hash is {plan.network_hash}, the "
                f"plan has {given['hash']}; take the old network, or make a new plan for this one"
            )
        return plan

    def payload(self) -> Dict[str, Any]:
        """All that another process needs."""
        return {"content": self.content, "network": self.network_text, "table": self.table, "hash": self.hash}

    @classmethod
    def from_payload(cls, payload: Mapping[str, Any]) -> Plan:
        plan = cls(payload["content"], Network.from_json(payload["network"]), payload["table"])
        if plan.hash != payload["hash"]:
            raise _fail(f"the plan has another hash here, {plan.hash}; install one version everywhere")
        return plan

    def _hash(self) -> str:
        content = {
            key: value for key, value in self.content.items() if key not in ("$schema", "title", "table")
        }
        content["network"] = self.network_hash
        content["table"] = self.table
        return hashlib.sha256(canonical(content).encode()).hexdigest()

    # What varies

    def _read_solve(self) -> None:
        options = _entry(self.content.get("solve", {}), '"solve"', ("scenario", "temperatures"))
        self.scenario: Optional[str] = None
        self.energy: Optional[bool] = None
        if "scenario" in options:
            self.scenario = _text(options["scenario"], '"scenario" of "solve"')
            if self.scenario not in self.network.scenarios:
                raise _fail(f"the network has no scenario {self.scenario!r}; correct the name")
        if "temperatures" in options:
            if not isinstance(options["temperatures"], bool):
                raise _fail('"temperatures" of "solve" is neither true nor false')
            self.energy = options["temperatures"]
        # What varies starts from the network with its scenario.
        self._base = self.network if self.scenario is None else self.network.scenario(self.scenario)

    def _read_variables(self) -> None:
        table_axis: Optional[int] = None
        names = set()
        for i, each in enumerate(_list(self.content, "vary")):
            place = f'entry {i + 1} of "vary"'
            entry = _entry(each, place, ("name", "nodes", "elements", "pointer", "key", "draw", "grid", "column",
                                         "close_each", "none", "as", "each"))  # fmt: skip
            name = _text(entry.get("name"), f'the "name" of {place}')
            if name in names:
                raise _fail(f'"vary" has two entries "{name}"; rename one')
            names.add(name)
            place = f'"{name}" of "vary"'
            if "close_each" in entry:
                self._add_closing(entry, name, place)
                continue
            variable = self._place_of(entry, name, place)
            sources = [key for key in ("draw", "grid", "column") if key in entry]
            if len(sources) != 1:
                raise _fail(f'{place} needs one of "draw", "grid", "column" and "close_each"')
            if sources[0] == "draw":
                self._add_draw(variable, entry, place)
            elif sources[0] == "grid":
                variable.choices = _grid(entry["grid"], place)
                variable.axis = self._new_axis(len(variable.choices))
            else:
                if entry["column"] not in self.table:
                    raise _fail(f"{place}: the table has no column {entry['column']!r}")
                column = self.table[entry["column"]]
                variable.choices = np.array([math.nan if value is None else value for value in column])
                if table_axis is None:
                    table_axis = self._new_axis(len(column))
                variable.axis = table_axis
            if "each" in entry and sources[0] != "draw":
                raise _fail(f'{place} has "each", which is for draws; leave it out')
            self._variables.append(variable)
        if not self._variables:
            raise _fail('"vary" is empty; say what varies')

    def _new_axis(self, size: int) -> int:
        self._axes.append(size)
        return len(self._axes) - 1

    def _add_draw(self, variable: _Variable, entry: Mapping[str, Any], place: str) -> None:
        if not isinstance(entry.get("each", False), bool):
            raise _fail(f'"each" of {place} is neither true nor false')
        variable.is_each = entry.get("each", False)
        try:
            variable.quantile = distribution(entry["draw"])
        except BadDistribution as error:
            raise _fail(f'the "draw" of {place} is impossible: {error}') from error
        variable.stream = self._streams
        self._streams += len(variable.positions) if variable.is_each else 1

    def _add_closing(self, entry: Mapping[str, Any], name: str, place: str) -> None:
        wrong = [key for key in entry if key not in ("name", "close_each", "none")]
        if wrong:
            raise _fail(f'{place} has "close_each" and "{wrong[0]}"; leave one out')
        objects = self._parts[ELEMENT]
        positions = objects.selected(entry["close_each"], place)
        count = len(positions) + (1 if entry.get("none", True) else 0)
        self._variables.append(
            _Variable(name, ELEMENT, "closed", positions, [objects.names[i] for i in positions], closes=True,
                      axis=self._new_axis(count))
        )  # fmt: skip

    def _place_of(self, entry: Mapping[str, Any], name: str, place: str) -> _Variable:
        given = [key for key in ("nodes", "elements", "pointer") if key in entry]
        if len(given) != 1:
            raise _fail(f'{place} needs one of "nodes", "elements" and "pointer"')
        use = entry.get("as", "value")
        if use not in ("value", "factor", "sum"):
            raise _fail(f'"as" of {place} is {use!r}; give "value", "factor" or "sum"')
        if given[0] == "pointer":
            if "key" in entry:
                raise _fail(f'{place} has "pointer" and "key"; leave the key out')
            pointer = _text(entry["pointer"], f'"pointer" of {place}')
            base = np.array([math.nan if use == "value" else self._at_pointer(pointer, place)])
            return _Variable(name, NETWORK, pointer, [0], [""], use, base)
        part = NODE if given[0] == "nodes" else ELEMENT
        objects = self._parts[part]
        key = _text(entry.get("key"), f'"key" of {place}')
        values = _Objects(self._base, part).base(key)
        positions = objects.selected(entry[given[0]], place)
        self._try_key(part, key, positions, place)
        if use != "value":
            positions = self._with_values(positions, values, entry[given[0]], objects, key, place)
        return _Variable(
            name, part, key, positions, [objects.names[i] for i in positions], use, values[positions]
        )

    def _try_key(self, part: int, key: str, positions: List[int], place: str) -> None:
        """Whether all of the objects have such a value: a pump has no diameter. Values are tried out later."""
        trial = self._base.copy()
        try:
            (trial.set_node_values if part == NODE else trial.set_element_values)(key, 1.0, positions)
        except Error as error:
            finding = error.findings[0]
            raise _fail(f"{place}: {finding.object}: {finding.message}; select others") from error

    @staticmethod
    def _with_values(
        positions: List[int], values: Floats, selector: Any, objects: _Objects, key: str, place: str
    ) -> List[int]:
        """Those that have a value to start from; each that is named must have one."""
        found = [i for i in positions if not math.isnan(values[i])]
        without = [i for i in positions if math.isnan(values[i])]
        if without and isinstance(selector, (str, list)) and selector != "*":
            raise _fail(
                f'{place}: the {objects.word} {objects.names[without[0]]!r} has no "{key}" to start from'
            )
        if not found:
            raise _fail(f'{place}: no {objects.word} has a "{key}" to start from')
        return found

    def _at_pointer(self, pointer: str, place: str) -> float:
        value: Any = self._base.to_dict()
        for token in pointer.split("/")[1:]:
            token = token.replace("~1", "/").replace("~0", "~")
            if isinstance(value, list) and value and isinstance(value[0], dict) and "name" in value[0]:
                value = next((each for each in value if each["name"] == token), None)
            elif isinstance(value, list):
                value = value[int(token)] if token.isdigit() and int(token) < len(value) else None
            else:
                value = value.get(token) if isinstance(value, dict) else None
        if isinstance(value, bool) or not isinstance(value, (int, float)):
            raise _fail(f'{place}: the network has no number at "{pointer}" to start from')
        return float(value)

    def _read_count(self) -> None:
        self._combinations = math.prod(self._axes)
        given = self.content.get("scenarios")
        if given is None and self._streams and not self._axes:
            raise _fail('"scenarios" is missing; say how many are to be drawn')
        self.count = _whole(self._combinations if given is None else given, '"scenarios"', 1, _MOST_SCENARIOS)
        if self._streams == 0 and self.count != self._combinations:
            raise _fail(
                f'"scenarios" is {self.count}, but what varies has {self._combinations}; leave it out'
            )
        if self.count % self._combinations != 0:
            raise _fail(
                f'"scenarios" is {self.count}, which is no multiple of the {self._combinations} that the grid has'
            )

    # The numbers of scenarios

    def _chosen(self, axis: int, scenarios: Any) -> Any:
        """Which value of an axis each scenario has: the last axis changes fastest, draws faster still."""
        samples = self.count // self._combinations
        inner = math.prod(self._axes[axis + 1 :]) * samples
        return (scenarios // inner) % self._axes[axis]

    def _check_range(self, start: int, end: int) -> None:
        if not 0 <= start <= end <= self.count:
            raise _fail(f"there are no scenarios {start} to {end}; the plan has {self.count}")

    def drawn(self, start: int, end: int) -> Tuple[List[Column], Floats]:
        """What varies, as columns of a table: one row for each scenario from start to before end."""
        self._check_range(start, end)
        scenarios = np.arange(start, end)
        columns: List[Column] = []
        values: List[Floats] = []
        for variable in self._variables:
            if variable.closes:
                chosen = self._chosen(variable.axis or 0, scenarios).astype(np.float64)
                chosen[chosen >= len(variable.positions)] = math.nan
                columns.append(Column(variable.name, tuple(variable.objects)))
                values.append(chosen)
            elif variable.axis is not None:
                columns.append(Column(variable.name))
                values.append(variable.choices[self._chosen(variable.axis, scenarios)])
            else:
                for j in range(len(variable.positions) if variable.is_each else 1):
                    suffix = f"({variable.objects[j]})" if variable.is_each else ""
                    columns.append(Column(variable.name + suffix))
                    values.append(self._draws(variable, j, start, end))
        return columns, np.column_stack(values) if values else np.zeros((end - start, 0))

    def _draws(self, variable: _Variable, j: int, start: int, end: int) -> Floats:
        assert variable.quantile is not None
        return variable.quantile(uniform(self.seed, variable.stream + j, start, end - start))

    def inputs(self, start: int, end: int) -> Tuple[List[Input], Floats]:
        """The inputs of scenarios start to before end, and their values in SI units: one row for each."""
        self._check_range(start, end)
        scenarios = np.arange(start, end)
        inputs: List[Input] = []
        values: List[Floats] = []
        for variable in self._variables:
            if variable.closes:
                self._add_closed(variable, scenarios, inputs, values)
                continue
            common: Optional[Floats] = None
            if variable.axis is not None:
                common = variable.choices[self._chosen(variable.axis, scenarios)]
            elif not variable.is_each:
                common = self._draws(variable, 0, start, end)
            for j, position in enumerate(variable.positions):
                number = self._draws(variable, j, start, end) if common is None else common
                if variable.use == "factor":
                    number = variable.base[j] * number
                elif variable.use == "sum":
                    number = variable.base[j] + number
                inputs.append(Input(variable.part, variable.key, position))
                values.append(number)
        return inputs, np.column_stack(values) if values else np.zeros((end - start, 0))

    def _add_closed(
        self, variable: _Variable, scenarios: Any, inputs: List[Input], values: List[Floats]
    ) -> None:
        """One input for each element that is closed in one of the scenarios, not for all of the network."""
        chosen = self._chosen(variable.axis or 0, scenarios)
        for j in np.unique(chosen):
            if j >= len(variable.positions):
                continue
            inputs.append(Input(ELEMENT, "closed", variable.positions[int(j)]))
            values.append(np.where(chosen == j, 1.0, math.nan))

    # What is kept

    def _read_outputs(self) -> None:
        entries = _list(self.content, "record")
        if not entries:
            raise _fail('"record" is empty; say what is to be kept')
        for i, each in enumerate(entries):
            place = f'entry {i + 1} of "record"'
            entry = _entry(each, place, ("name", "nodes", "elements", "network", "quantity"))
            given = [key for key in ("nodes", "elements", "network") if key in entry]
            if len(given) != 1:
                raise _fail(f'{place} needs one of "nodes", "elements" and "network"')
            if given[0] == "network":
                quantity = _text(entry["network"], place)
                self._add_output(Output(NETWORK, quantity), entry.get("name", quantity), None)
                continue
            part = NODE if given[0] == "nodes" else ELEMENT
            self._add_outputs(part, entry[given[0]], entry, place)
        try:
            self._try_outputs()
        except Error as error:
            raise _fail(f"{error.findings[0].message}; {error.findings[0].remedy}") from error

    def _add_outputs(self, part: int, selector: Any, entry: Mapping[str, Any], place: str) -> None:
        quantity = _text(entry.get("quantity"), f'"quantity" of {place}')
        objects = self._parts[part]
        name = _text(entry.get("name", quantity), f'"name" of {place}')
        if quantity.startswith(_FOLDS):
            if selector != "*":
                raise _fail(f'{place}: "{quantity}" is of all {objects.word}s; give "*"')
            names = objects.names if quantity.startswith("arg") else None
            self._add_output(Output(part, quantity), name, names)
            return
        is_one = isinstance(selector, str) and selector != "*"
        for position in objects.selected(selector, place):
            suffix = "" if is_one and "name" in entry else f"({objects.names[position]})"
            self._add_output(Output(part, quantity, position), name + suffix, None)

    def _add_output(self, output: Output, name: Any, names: Optional[Sequence[str]]) -> None:
        self.outputs.append(output)
        self.output_columns.append(Column(_text(name, "a name"), None if names is None else tuple(names)))

    def _try_outputs(self) -> None:
        """Lets the kit say whether it has the inputs and the outputs, without a solve."""
        from ._batch import solve_many

        inputs, _ = self.inputs(0, 1)
        solve_many(self.network, inputs, np.zeros((0, len(inputs))), self.outputs)

    def _limit(self, value: Any, number: int) -> Limit:
        place = f'entry {number + 1} of "limits"'
        entry = _entry(value, place, ("name", "column", "below", "above"))
        wanted = _text(entry.get("column"), f'"column" of {place}')
        found = [
            i
            for i, column in enumerate(self.output_columns)
            if column.name == wanted or column.name.startswith(wanted + "(")
        ]
        if not found:
            raise _fail(f'{place}: "record" has no column "{wanted}"')
        ends = {key: _number(entry[key], f'"{key}" of {place}') for key in ("below", "above") if key in entry}
        if not ends:
            raise _fail(f'{place} needs "below" or "above"')
        text = " or ".join(f"{key} {end:g}" for key, end in ends.items())
        return Limit(
            entry.get("name", f"{wanted} {text}"), tuple(found), ends.get("below"), ends.get("above")
        )

    def header(self) -> List[str]:
        """The names of the table's columns: the scenario, what varies, what is kept, limits, what became of it."""
        return (
            ["scenario"]
            + [column.name for column in (self.drawn(0, 0)[0] if self.shows_inputs else [])]
            + [column.name for column in self.output_columns]
            + [limit.name for limit in self.limits]
            + ["outcome", "iterations", "finding"]
        )

    def _check_header(self) -> None:
        name, count = Counter(self.header()).most_common(1)[0]
        if count > 1:
            raise _fail(
                f'the table would have two columns "{name}"; give what varies or is kept another "name"'
            )

    def flags(self, results: Floats) -> Floats:
        """Whether each row breaks each limit: 1, 0, or NaN where there are no numbers."""
        flags = np.full((len(results), len(self.limits)), math.nan)
        for i, limit in enumerate(self.limits):
            numbers = results[:, limit.columns]
            known = ~np.isnan(numbers)
            broken = np.zeros(numbers.shape, dtype=bool)
            with np.errstate(invalid="ignore"):
                if limit.below is not None:
                    broken |= numbers < limit.below
                if limit.above is not None:
                    broken |= numbers > limit.above
            flags[:, i] = np.where(known.any(axis=1), broken.any(axis=1), math.nan)
        return flags

    @property
    def shows_inputs(self) -> bool:
        """Whether the table has columns of what varies."""
        return bool(self.content.get("show_inputs", True))
