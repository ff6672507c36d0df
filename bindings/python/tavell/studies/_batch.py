"""One network solved many times with other numbers, by one call of the kit."""

from __future__ import annotations

import ctypes
import json
from dataclasses import dataclass
from typing import Any, Dict, List, Optional, Sequence

import numpy as np
import numpy.typing as npt

from .. import _library
from .._arrays import Floats, address_of, encoded
from .._findings import raise_unless_ok, refusal
from .._library import LIBRARY, take_text
from .._network import Network, options_text
from .._progress import OnProgress, watched

# tvkPart
NODE = 0
ELEMENT = 1
NETWORK = 2

# What became of a scenario, by its tvkStatus; the last is of a row that ends the process which solves it.
OUTCOMES = ("ok", "not-converged", "bad-input", "internal", "cancelled", "crashed")
CRASHED = 5


@dataclass(frozen=True)
class Input:
    """A number that differs between scenarios: of a node or element by its key, of the network by a JSON pointer
    into an object in the form of a scenario."""

    part: int
    key: str
    position: int = 0


@dataclass(frozen=True)
class Output:
    """A number that is kept of each scenario, as tvkOutput in tavellkit.h has it."""

    part: int
    quantity: str
    position: int = 0


class _Place(ctypes.Structure):
    """tvkInput and tvkOutput, which have the same members."""

    _fields_ = [("part", ctypes.c_int), ("text", ctypes.c_char_p), ("position", ctypes.c_size_t)]


@dataclass
class Rows:
    """What became of scenarios. results: one row of outputs for each, NaN where there are none. outcomes:
    positions in OUTCOMES. texts: findings as JSON of those that are not ok, by row."""

    results: Floats
    outcomes: npt.NDArray[np.int32]
    iterations: npt.NDArray[np.int32]
    texts: Dict[int, str]
    is_whole: bool = True

    def findings(self, row: int) -> List[Dict[str, Any]]:
        """The findings of a row, [] when there are none."""
        text = self.texts.get(row)
        found: List[Dict[str, Any]] = json.loads(text) if text else []
        return found


def _declare() -> Any:
    if not hasattr(LIBRARY, "tvkSolveMany"):
        raise ImportError(f"the library of version {_library.version()} has no tvkSolveMany; build it anew")
    function = LIBRARY.tvkSolveMany
    function.restype = ctypes.c_int
    function.argtypes = [
        ctypes.c_void_p,
        ctypes.c_char_p,
        ctypes.c_size_t,
        ctypes.c_size_t,
        ctypes.c_void_p,
        ctypes.c_void_p,
        ctypes.c_size_t,
        ctypes.c_void_p,
        ctypes.c_void_p,
        ctypes.c_void_p,
        ctypes.c_void_p,
        ctypes.c_void_p,
        _library.Progress,
        ctypes.c_void_p,
        ctypes.c_void_p,
    ]
    return function


_SOLVE_MANY = _declare()


def _places(places: Sequence[Any], texts: Sequence[str]) -> Any:
    array = (_Place * len(places))()
    for i, (place, text) in enumerate(zip(places, texts)):
        array[i].part = place.part
        array[i].text = encoded(text)
        array[i].position = place.position
    return array


def solve_many(
    network: Network,
    inputs: Sequence[Input],
    values: npt.ArrayLike,
    outputs: Sequence[Output],
    *,
    threads: Optional[int] = None,
    time_limit: Optional[float] = None,
    scenario: Optional[str] = None,
    energy: Optional[bool] = None,
    on_progress: Optional[OnProgress] = None,
) -> Rows:
    """Solves the network once for each row of values, which has a number for each input; NaN leaves what the
    network has.

    threads: as many as there are processors when absent. time_limit: [s] for each scenario. scenario, energy: as
    for Network.solve(). on_progress: called with the number of scenarios that are done; tavell.STOP stops, and
    the rows that are done then are there. Raises BadInput for inputs, outputs and options that cannot be; a
    scenario that is refused or does not converge is a row with its findings.
    """
    numbers = np.ascontiguousarray(values, dtype=np.float64)
    if numbers.ndim != 2 or numbers.shape[1] != len(inputs):
        raise refusal(
            f"the values have the shape {numbers.shape} for {len(inputs)} inputs",
            "give one row for each scenario",
        )
    count = len(numbers)
    rows = Rows(
        np.full((count, len(outputs)), np.nan), np.zeros(count, np.int32), np.zeros(count, np.int32), {}
    )
    given = _places(inputs, [each.key for each in inputs])
    wanted = _places(outputs, [each.quantity for each in outputs])
    texts = (ctypes.c_void_p * count)()
    options = options_text(threads=threads, time_limit=time_limit, scenario=scenario, temperatures=energy)
    try:
        status, findings = watched(
            lambda progress: network._live.run_reading(
                _SOLVE_MANY,
                options,
                count,
                len(inputs),
                ctypes.addressof(given),
                address_of(numbers),
                len(outputs),
                ctypes.addressof(wanted),
                address_of(rows.results),
                address_of(rows.outcomes),
                address_of(rows.iterations),
                ctypes.addressof(texts),
                progress,
                None,
            ),
            on_progress,
        )
    finally:
        for i in range(count):
            if texts[i]:
                rows.texts[i] = take_text(ctypes.c_void_p(texts[i]))
    rows.is_whole = status == _library.OK
    if status != _library.CANCELLED:
        raise_unless_ok(status, findings)
    return rows
