"""What becomes of a network when one of its elements fails."""

from __future__ import annotations

import os
from concurrent.futures import ThreadPoolExecutor
from dataclasses import dataclass
from typing import Any, Dict, List, Optional, Tuple

import numpy as np
import numpy.typing as npt
import pandas as pd

from .._findings import BadInput, Findings, NotConverged, refusal
from .._network import Network, frame_of
from .._result import Result
from ._limits import Limits, LimitsOf
from ._places import Names, names_of

_BOUNDARY_KEYS = ("pressure", "mass_flow", "volume_flow", "velocity", "reynolds")
# What a solve leaves open of the flows, as a part of the largest one.
_ROUNDING = 1e-6
_KEYS = (
    "outcome",
    "is_good",
    "lowest_pressure",
    "lowest_at",
    "highest_velocity",
    "highest_at",
    "low",
    "high",
    "fast",
    "unsupplied",
    "unserved",
    "findings",
)
_UNITS = {"lowest_pressure": "Pa", "highest_velocity": "m/s", "unserved": "kg/s"}


def n_minus_1(
    network: Network,
    elements: Optional[Names] = None,
    limits: Limits = Limits(),
    *,
    threads: Optional[int] = None,
) -> pd.DataFrame:
    """What becomes of a network when each of its elements is closed, one at a time; the network itself is not
    changed.

    elements: names; all open elements when absent. limits: what nodes and elements must keep. threads: as
    many solves run at once, the number of processors when absent.

    Returns a frame by element: "outcome", "converged", "not converged", "refused", or "nothing left" where
    no element is left open; "is_good", converged, everybody supplied and all limits kept; "lowest_pressure"
    [Pa] and "lowest_at" among the nodes whose pressure is not given; "highest_velocity" [m/s] and
    "highest_at"; "low", "high" and "fast", the names of the nodes and elements beyond their limits;
    "unsupplied", the nodes that no open way joins to a place where liquid enters; "unserved" [kg/s], what
    flows out of these in the intact network; "findings" of the solve. attrs["units"] has the units.

    An unsupplied part is taken out of the network with its outlets, and the rest is solved. Liquid enters at
    inlets, and at outlets of given pressure where it does so in the intact network. Which parts an element
    cuts off is found once for all elements (bridges of a graph: Tarjan, Information Processing Letters 2,
    1974). Raises BadInput for unknown names and closed elements; NotConverged when the intact network does
    not solve.
    """
    intact = network.solve()
    chosen = _chosen(network, elements)
    cuts = _Cuts(network, intact)
    rows = _Rows(network, intact, LimitsOf(limits, network))

    def row_of(element: int) -> Dict[str, Any]:
        unsupplied = cuts.cut_off_by(element)
        return rows.row(_failure(network, element, unsupplied), unsupplied)

    pool = ThreadPoolExecutor(threads or os.cpu_count() or 1)
    try:
        found = list(pool.map(row_of, chosen))
    finally:
        pool.shutdown(cancel_futures=True)
    names = [network.element_names[element] for element in chosen]
    columns = {key: [row[key] for row in found] for key in _KEYS}
    return frame_of(columns, names, "closed", _UNITS)


def _chosen(network: Network, elements: Optional[Names]) -> List[int]:
    is_open = network.element_values("closed") == 0
    if elements is None:
        return [int(position) for position in np.flatnonzero(is_open)]
    positions = [int(position) for position in network.element_positions(list(names_of(elements)))]
    for position in positions:
        if not is_open[position]:
            raise refusal(f'the element "{network.element_names[position]}" is closed', "leave it out")
    return positions


@dataclass
class _Failure:
    """A solve with one element closed. result: None when there is none."""

    outcome: str
    result: Optional[Result]
    findings: Findings


def _failure(network: Network, element: int, unsupplied: npt.NDArray[np.intp]) -> _Failure:
    copy = network.copy()
    copy.set_element_values("closed", 1, element)
    if len(unsupplied):
        _take_out(copy, unsupplied)
    if np.all(copy.element_values("closed") > 0):
        return _Failure("nothing left", None, Findings())
    try:
        result = copy.solve()
        return _Failure("converged", result, result.findings)
    except NotConverged as error:
        return _Failure("not converged", None, error.findings)
    except BadInput as error:
        return _Failure("refused", None, error.findings)


def _take_out(network: Network, nodes: npt.NDArray[np.intp]) -> None:
    """Closes the elements at nodes and takes what is imposed there away."""
    is_out = np.zeros(network.node_count, dtype=bool)
    is_out[nodes] = True
    start, end = network.ends
    touching = np.flatnonzero(is_out[start.astype(np.intp)] | is_out[end.astype(np.intp)])
    network.set_element_values("closed", 1, touching)
    for side in ("inlet", "outlet"):
        for key in _BOUNDARY_KEYS + ("temperature",):
            values = network.node_values(f"{side}/{key}", nodes)
            given = nodes[np.isfinite(values)]
            if len(given):
                network.set_node_values(f"{side}/{key}", np.nan, given)


class _Rows:
    """Makes the rows of the frame."""

    def __init__(self, network: Network, intact: Result, limits: LimitsOf) -> None:
        self._limits = limits
        self._nodes = np.array(network.node_names, dtype=object)
        self._elements = np.array(network.element_names, dtype=object)
        external = np.nan_to_num(intact.node_values("external_mass_flow"))
        is_outlet = np.zeros(len(self._nodes), dtype=bool)
        for key in _BOUNDARY_KEYS:
            is_outlet |= np.isfinite(network.node_values(f"outlet/{key}"))
        self._served = np.where(is_outlet, np.maximum(-external, 0.0), 0.0)
        self._is_free = ~(
            np.isfinite(network.node_values("inlet/pressure"))
            | np.isfinite(network.node_values("outlet/pressure"))
        )

    def row(self, failure: _Failure, unsupplied: npt.NDArray[np.intp]) -> Dict[str, Any]:
        row: Dict[str, Any] = {
            "outcome": failure.outcome,
            "is_good": False,
            "lowest_pressure": np.nan,
            "lowest_at": "",
            "highest_velocity": np.nan,
            "highest_at": "",
            "low": (),
            "high": (),
            "fast": (),
            "unsupplied": tuple(self._nodes[unsupplied]),
            "unserved": float(self._served[unsupplied].sum()),
            "findings": failure.findings,
        }
        if failure.result is not None:
            row.update(self._of_result(failure.result))
            row["is_good"] = not (row["low"] or row["high"] or row["fast"] or len(unsupplied))
        return row

    def _of_result(self, result: Result) -> Dict[str, Any]:
        pressure = np.where(self._is_free, result.node_values("pressure"), np.nan)
        velocity = np.abs(result.element_values("velocity"))
        row: Dict[str, Any] = {
            "low": tuple(self._nodes[self._limits.too_low(result) > 0.0]),
            "high": tuple(self._nodes[self._limits.too_high(result) > 0.0]),
            "fast": tuple(self._elements[self._limits.too_fast(result) > 0.0]),
        }
        if np.isfinite(pressure).any():
            lowest = int(np.nanargmin(pressure))
            row.update(lowest_pressure=float(pressure[lowest]), lowest_at=self._nodes[lowest])
        if np.isfinite(velocity).any():
            highest = int(np.nanargmax(velocity))
            row.update(highest_velocity=float(velocity[highest]), highest_at=self._elements[highest])
        return row


class _Cuts:
    """Which nodes each element cuts off from all places where liquid enters when it is closed.

    A depth-first search from all these places numbers the nodes in the order in which it comes to them, so
    that what hangs on a node is a range. An element is a bridge when no other way leads out of the range of
    the node behind it.
    """

    def __init__(self, network: Network, intact: Result) -> None:
        start, end = network.ends
        self._ways: List[List[Tuple[int, int]]] = [[] for _ in range(network.node_count)]
        for element in np.flatnonzero(network.element_values("closed") == 0):
            a, b = int(start[element]), int(end[element])
            self._ways[a].append((b, int(element)))
            self._ways[b].append((a, int(element)))
        self._order: List[int] = []
        self._ranges: Dict[int, Tuple[int, int]] = {}
        self._search(_supplies(network, intact))
        is_reached = np.zeros(network.node_count, dtype=bool)
        is_reached[self._order] = True
        self._never = np.flatnonzero(~is_reached)

    def cut_off_by(self, element: int) -> npt.NDArray[np.intp]:
        """Positions of nodes, in order, with those that are cut off anyway."""
        first, last = self._ranges.get(element, (0, 0))
        return np.sort(np.concatenate([self._never, np.array(self._order[first:last], dtype=np.intp)]))

    def _search(self, supplies: npt.NDArray[np.intp]) -> None:
        """Fills the order and the ranges of the bridges. The supplies count as one node, number -1."""
        number = {int(node): -1 for node in supplies}
        for supply in supplies:
            self._order_from(int(supply), number)
        # Supplies are never cut off; they stand behind all ranges.
        self._order.extend(int(node) for node in supplies)

    def _order_from(self, root: int, number: Dict[int, int]) -> None:
        """Everything that is reached from one supply and was not before."""
        lowest: Dict[int, int] = {root: -1}
        stack: List[Tuple[int, int, int]] = [(root, -1, 0)]
        while stack:
            node, via, next_way = stack.pop()
            ways = self._ways[node]
            is_deeper = False
            while next_way < len(ways):
                other, element = ways[next_way]
                next_way += 1
                if element == via:
                    continue
                if other in number:
                    lowest[node] = min(lowest[node], number[other])
                    continue
                number[other] = lowest[other] = len(self._order)
                self._order.append(other)
                stack.append((node, via, next_way))
                stack.append((other, element, 0))
                is_deeper = True
                break
            if is_deeper or not stack:
                continue
            before = stack[-1][0]
            if lowest[node] >= number[node]:
                self._ranges[via] = (number[node], len(self._order))
            lowest[before] = min(lowest[before], lowest[node])


def _supplies(network: Network, intact: Result) -> npt.NDArray[np.intp]:
    """Nodes at which liquid enters: inlets, and others where it does so in the intact network."""
    external = np.nan_to_num(intact.node_values("external_mass_flow"))
    enters = external > _ROUNDING * np.abs(external).max()
    is_supply = enters & np.isfinite(network.node_values("outlet/pressure"))
    for key in _BOUNDARY_KEYS:
        is_supply |= np.isfinite(network.node_values(f"inlet/{key}"))
    return np.flatnonzero(is_supply)
