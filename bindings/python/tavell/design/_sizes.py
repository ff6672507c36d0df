"""The smallest pipes of a catalogue that keep the limits."""

from __future__ import annotations

import math
from dataclasses import dataclass
from typing import Any, Dict, Iterable, List, Mapping, Optional, Sequence, Tuple, Union

import numpy as np
import numpy.typing as npt
import pandas as pd

from .._arrays import Floats, Quantity, parsed
from .._findings import BadInput, NotConverged, refusal
from .._network import Network, frame_of
from .._result import Result
from ._limits import Limits, LimitsOf
from ._places import Names, names_of

_PIPE_TYPES = ("pipe", "hazen_williams_pipe", "control_valve", "non_return")
# Rounds in which sizes may fall as well as rise; later they only rise, so that the rounds come to an end.
_FREE_ROUNDS = 6
# Pipes that gain at least so much of what the best one gains become larger with it.
_ENOUGH = 0.5
# A limit that is passed by this part of itself only is kept: what a solve leaves open.
_SLACK = 1e-6


@dataclass(frozen=True)
class Size:
    """A size of a catalogue. diameter: inner, [m]. roughness: [m], None to leave that of the pipe."""

    name: str
    diameter: float
    roughness: Optional[float] = None


def _tubes(prefix: str, walls: Mapping[str, Tuple[float, float]], roughness: float) -> Tuple[Size, ...]:
    """Sizes from outer diameters and wall thicknesses [mm]. roughness: [mm]."""
    return tuple(
        Size(f"{prefix} {name}", (outer - 2.0 * wall) * 1e-3, roughness * 1e-3)
        for name, (outer, wall) in walls.items()
    )


# Catalogues by name. Dimensions of tubes: EN 10255:2004, medium series; EN 1057:2006. Roughness as in the
# catalogue of materials: commercial steel, drawn copper.
CATALOGUES: Dict[str, Tuple[Size, ...]] = {
    "steel EN 10255": _tubes(
        "DN",
        {
            "10": (17.2, 2.3),
            "15": (21.3, 2.6),
            "20": (26.9, 2.6),
            "25": (33.7, 3.2),
            "32": (42.4, 3.2),
            "40": (48.3, 3.2),
            "50": (60.3, 3.6),
            "65": (76.1, 3.6),
            "80": (88.9, 4.0),
            "100": (114.3, 4.5),
            "125": (139.7, 5.0),
            "150": (165.1, 5.0),
        },
        0.046,
    ),
    "copper EN 1057": _tubes(
        "Cu",
        {
            "12 x 1": (12.0, 1.0),
            "15 x 1": (15.0, 1.0),
            "18 x 1": (18.0, 1.0),
            "22 x 1": (22.0, 1.0),
            "28 x 1.5": (28.0, 1.5),
            "35 x 1.5": (35.0, 1.5),
            "42 x 1.5": (42.0, 1.5),
            "54 x 2": (54.0, 2.0),
        },
        0.0015,
    ),
}

# Sizes, a name of CATALOGUES, or inner diameters by name.
Catalogue = Union[str, Iterable[Size], Mapping[str, Quantity]]


@dataclass(frozen=True)
class PipeSizes:
    """The answer of size_pipes(). network, result: with the sizes. pipes: a frame by pipe: "size",
    "diameter" [m], "velocity" [m/s], "gradient" [Pa/m] of friction, "fits", and "why" where it does not.
    unfit: the pipes for which nothing fits. low_nodes: the nodes that are too low with all sizes, with the
    pressure [Pa] that is missing. solves: how many it took."""

    network: Network
    result: Result
    pipes: pd.DataFrame
    low_nodes: Mapping[str, float]
    solves: int

    @property
    def unfit(self) -> List[str]:
        return list(self.pipes.index[~self.pipes["fits"]])

    @property
    def is_good(self) -> bool:
        """Whether all limits are kept."""
        return bool(self.pipes["fits"].all()) and not self.low_nodes


def size_pipes(
    network: Network,
    catalogue: Catalogue,
    limits: Limits,
    pipes: Optional[Names] = None,
    *,
    refine: bool = True,
) -> PipeSizes:
    """The smallest sizes of a catalogue with which pipes keep velocity and pressure limits; the network
    itself is not changed.

    catalogue: sizes, a name of CATALOGUES, or a dict of inner diameters [m] by name. limits: velocities and
    gradients of these pipes, lowest pressures of nodes. pipes: names; all pipes, check and control valves
    when absent.

    1. Each pipe gets the smallest size in which its flow keeps the highest velocity; as flows follow the
       sizes where there are loops, until nothing changes.
    2. While a node is too low, the pipes on the way of its flow that gain most pressure per length become
       one size larger.
    3. With refine, each pipe is tried one size smaller, until none can be: one solve for each pipe and round.

    Where sizes on that way do not solve, all pipes get the largest one and become smaller one by one.

    What is found is a network in which no single pipe can be smaller. It need not be the cheapest one. A pipe
    for which nothing fits has the size that comes nearest. Raises BadInput and NotConverged when the network
    with the largest sizes does not solve.
    """
    sizing = _Sizing(network, _sizes_of(catalogue), limits, pipes)
    try:
        sizing.choose_by_velocity()
        sizing.raise_pressures()
    except (BadInput, NotConverged):
        sizing.take_largest()
        refine = True
    if refine:
        sizing.refine()
    return sizing.answer()


def _sizes_of(catalogue: Catalogue) -> List[Size]:
    if isinstance(catalogue, str):
        if catalogue not in CATALOGUES:
            raise refusal(f'there is no catalogue "{catalogue}"', f"give one of {', '.join(CATALOGUES)}")
        return list(CATALOGUES[catalogue])
    if isinstance(catalogue, Mapping):
        sizes = [Size(name, parsed(value, "diameter")) for name, value in catalogue.items()]
    else:
        sizes = list(catalogue)
    if not sizes:
        raise refusal("the catalogue has no sizes", "give at least one")
    for size in sizes:
        if not 0.0 < size.diameter < math.inf:
            raise refusal(f'the size "{size.name}" has the diameter {size.diameter:g} m', "give one above 0")
    return sorted(sizes, key=lambda size: size.diameter)


class _Sizing:
    """A copy of a network whose pipes get sizes. ranks: of each pipe, the position of its size."""

    def __init__(
        self, network: Network, sizes: Sequence[Size], limits: Limits, pipes: Optional[Names]
    ) -> None:
        self._network = network.copy()
        self._sizes = sizes
        self._diameters = np.array([size.diameter for size in sizes])
        self._limits = LimitsOf(limits, network)
        self._pipes = self._pipe_positions(pipes)
        self._at = {int(position): i for i, position in enumerate(self._pipes)}
        self._lengths = _lengths(network)
        self._ranks = np.full(len(self._pipes), len(sizes) - 1)
        self._solves = 0
        self._ways: Optional[List[List[int]]] = None
        self._hopeless: List[int] = []
        self._result = self._start()

    def _pipe_positions(self, pipes: Optional[Names]) -> npt.NDArray[np.intp]:
        types = self._network.element_types
        if pipes is None:
            found = np.array([i for i, kind in enumerate(types) if kind in _PIPE_TYPES], dtype=np.intp)
        else:
            found = np.unique(self._network.element_positions(list(names_of(pipes))).astype(np.intp))
        for position in found:
            if types[position] not in _PIPE_TYPES:
                name = self._network.element_names[position]
                raise refusal(f'"{name}" is a {types[position]} and no pipe', "name pipes only")
        is_open = self._network.element_values("closed") == 0
        found = found[is_open[found]]
        if not len(found):
            raise refusal("the network has no open pipes to size", "name some")
        return found

    def _start(self) -> Result:
        """The network as it is; with the largest sizes when it does not solve."""
        try:
            return self._solve()
        except (BadInput, NotConverged):
            self._set()
            return self._solve()

    def take_largest(self) -> None:
        self._ranks[:] = len(self._sizes) - 1
        self._set()
        self._result = self._solve()

    def _solve(self) -> Result:
        self._solves += 1
        return self._network.solve()

    def _set(self) -> None:
        """Gives the pipes their sizes."""
        self._network.set_element_values("diameter", self._diameters[self._ranks], self._pipes)
        for rank in np.unique(self._ranks):
            roughness = self._sizes[rank].roughness
            rough = [p for p in self._pipes[self._ranks == rank] if self._is_rough(p)]
            if roughness is not None and rough:
                self._network.set_element_values("roughness", roughness, np.array(rough))

    def _is_rough(self, position: int) -> bool:
        return self._network.element_types[position] != "hazen_williams_pipe"

    def choose_by_velocity(self) -> None:
        """Sizes by the highest velocity and the highest gradient."""
        is_set = False
        while True:
            ranks = self._ranks_by_velocity()
            may_fall = self._solves <= _FREE_ROUNDS and not math.isfinite(self._limits.highest_gradient)
            if is_set and not may_fall:
                ranks = np.maximum(ranks, self._ranks)
            if is_set:
                ranks = np.maximum(ranks, self._ranks_by_gradient())
            if is_set and np.array_equal(ranks, self._ranks):
                return
            self._ranks = ranks
            self._set()
            self._result = self._solve()
            is_set = True

    def _ranks_by_velocity(self) -> npt.NDArray[np.intp]:
        """The smallest size of each pipe in which its present flow keeps the limit."""
        flow = np.abs(self._result.element_values("volume_flow")[self._pipes])
        limit = self._limits.highest_velocity[self._pipes] * (1.0 + _SLACK)
        with np.errstate(divide="ignore"):
            least = np.sqrt(4.0 * flow / (math.pi * limit))
        found: npt.NDArray[np.intp] = np.searchsorted(self._diameters, least).astype(np.intp)
        return np.minimum(found, len(self._sizes) - 1)

    def _ranks_by_gradient(self) -> npt.NDArray[np.intp]:
        """The present sizes, one more where friction is above its limit."""
        is_above = self._gradients() > self._limits.highest_gradient * (1.0 + _SLACK)
        return np.where(is_above, np.minimum(self._ranks + 1, len(self._sizes) - 1), 0)

    def _gradients(self) -> Floats:
        """Friction per length [Pa/m] of the pipes."""
        friction = np.abs(self._result.element_values("friction")[self._pipes])
        gradients: Floats = friction / self._lengths[self._pipes]
        return gradients

    def raise_pressures(self) -> None:
        """Larger pipes until no node is too low."""
        while True:
            low = self._limits.too_low(self._result)
            low[self._hopeless] = 0.0
            worst = int(np.argmax(low))
            if low[worst] <= _SLACK * max(1.0, abs(self._limits.lowest_pressure[worst])):
                return
            pipes = self._best_pipes(self._way_to(worst))
            if not pipes:
                self._hopeless.append(worst)
                continue
            self._ranks[pipes] += 1
            self._set()
            self._result = self._solve()

    def _way_to(self, node: int) -> List[int]:
        """The elements on the way of the largest flows to a node, from a node where liquid enters."""
        start, end = self._network.ends
        flow = self._result.element_values("mass_flow")
        if self._ways is None:
            self._ways = [[] for _ in range(self._network.node_count)]
            for element, (a, b) in enumerate(zip(start, end)):
                self._ways[int(a)].append(element)
                self._ways[int(b)].append(element)
        way: List[int] = []
        seen = {node}
        while True:
            into = [(flow[e] if int(end[e]) == node else -flow[e], e) for e in self._ways[node]]
            into = [(amount, element) for amount, element in into if amount > 0.0]
            if not into:
                return way
            element = max(into)[1]
            node = int(start[element]) if int(end[element]) == node else int(end[element])
            if node in seen:
                return way
            seen.add(node)
            way.append(element)

    def _best_pipes(self, way: Sequence[int]) -> List[int]:
        """The pipes on a way that gain most pressure per length when they are one size larger, and those that
        gain at least half as much; losses fall about as the fifth power of the diameter."""
        friction, minor = self._result.element_values("friction"), self._result.element_values("minor")
        gains: Dict[int, float] = {}
        for element in way:
            pipe = self._at.get(element)
            if pipe is None or self._ranks[pipe] + 1 >= len(self._sizes):
                continue
            ratio = self._diameters[self._ranks[pipe]] / self._diameters[self._ranks[pipe] + 1]
            loss = abs(float(friction[element])) + abs(float(minor[element]))
            gains[pipe] = loss * (1.0 - ratio**5) / self._lengths[element]
        most = max(gains.values(), default=0.0)
        return [pipe for pipe, gain in gains.items() if gain > 0.0 and gain >= _ENOUGH * most]

    def refine(self) -> None:
        """Smaller pipes as long as nothing that is kept is broken."""
        kept = self._broken()
        is_changed = True
        while is_changed:
            is_changed = False
            for pipe in np.argsort(-self._ranks, kind="stable"):
                if self._ranks[pipe] == 0:
                    continue
                result = self._result
                self._ranks[pipe] -= 1
                self._set()
                if self._keeps(kept):
                    is_changed = True
                else:
                    self._result = result
                    self._ranks[pipe] += 1
        self._set()

    def _keeps(self, kept: Floats) -> bool:
        """Whether the network solves and breaks no limit more than before."""
        try:
            self._result = self._solve()
        except (BadInput, NotConverged):
            return False
        return bool(np.all(self._broken() <= kept + _SLACK))

    def _broken(self) -> Floats:
        """By what part of itself each limit is passed."""
        speeds = self._limits.highest_velocity[self._pipes]
        fast = self._limits.too_fast(self._result)[self._pipes] / np.where(np.isfinite(speeds), speeds, 1.0)
        steep = np.maximum(self._gradients() / self._limits.highest_gradient - 1.0, 0.0)
        low = self._limits.too_low(self._result)
        scale = np.where(np.isfinite(self._limits.lowest_pressure), self._limits.lowest_pressure, 1.0)
        return np.concatenate([fast, steep, low / np.maximum(np.abs(scale), 1.0)])

    def answer(self) -> PipeSizes:
        velocity = np.abs(self._result.element_values("velocity")[self._pipes])
        gradient = self._gradients()
        names = [self._network.element_names[p] for p in self._pipes]
        why = [self._why(i, float(velocity[i]), float(gradient[i])) for i in range(len(names))]
        columns: Dict[str, Any] = {
            "size": [self._sizes[rank].name for rank in self._ranks],
            "diameter": self._diameters[self._ranks],
            "velocity": velocity,
            "gradient": gradient,
            "fits": np.array([not text for text in why]),
            "why": why,
        }
        units = {"diameter": "m", "velocity": "m/s", "gradient": "Pa/m"}
        low = self._limits.too_low(self._result)
        scale = np.maximum(np.abs(self._limits.lowest_pressure), 1.0)
        nodes = self._network.node_names
        missing = {nodes[i]: float(low[i]) for i in np.flatnonzero(low > _SLACK * scale)}
        return PipeSizes(
            self._network, self._result, frame_of(columns, names, "pipe", units), missing, self._solves
        )

    def _why(self, pipe: int, velocity: float, gradient: float) -> str:
        """Why nothing fits a pipe, "" when its size does."""
        size = self._sizes[self._ranks[pipe]].name
        highest = self._limits.highest_velocity[self._pipes[pipe]]
        lowest = self._limits.lowest_velocity[self._pipes[pipe]]
        if velocity > highest * (1.0 + _SLACK):
            return f"{velocity:.4g} m/s in {size}, the largest, is above {highest:g} m/s"
        steepest = self._limits.highest_gradient
        if gradient > steepest * (1.0 + _SLACK):
            return f"{gradient:.4g} Pa/m in {size}, the largest, is above {steepest:g} Pa/m"
        if velocity < lowest * (1.0 - _SLACK):
            return f"{velocity:.4g} m/s in {size}, the smallest that will do, is below {lowest:g} m/s"
        return ""


def _lengths(network: Network) -> Floats:
    """The lengths of the elements [m], the distances of their nodes where none are given."""
    at = np.column_stack([network.node_values(key) for key in ("x", "y", "z")])
    start, end = network.ends
    distances = np.linalg.norm(at[end.astype(np.intp)] - at[start.astype(np.intp)], axis=1)
    given = network.element_values("length")
    lengths: Floats = np.maximum(np.where(np.isfinite(given), given, distances), 1e-6)
    return lengths
