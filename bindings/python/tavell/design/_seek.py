"""Which number of a network gives a wanted result."""

from __future__ import annotations

import math
from dataclasses import dataclass
from typing import Dict, Optional, Tuple

from .._arrays import Quantity
from .._findings import BadInput, Error, NotConverged, refusal
from .._network import Network
from .._result import Result
from ._places import BoundChange, Change, Reading, finite
from ._roots import find_root

# The first step of a search by ratios, as the logarithm of the ratio.
_FIRST_LOG_STEP = 0.2
# A search without limits goes as far as so many first steps from its start, where it does not go by ratios.
_MOST_LINEAR_STEPS = 2e4
# How often the way to a number that does not solve is halved.
_MOST_HALVINGS = 12
# A residual above this part of the result's scale is a jump and not the rounding of a solve.
_JUMP = 1e-4


@dataclass(frozen=True)
class GoalSeek:
    """The answer of goal_seek(). value: of the change, in SI units. reached: the result with it. network,
    result: with that value. solves: how many it took."""

    change: Change
    reading: Reading
    target: float
    value: float
    reached: float
    network: Network
    result: Result
    solves: int

    def __str__(self) -> str:
        return (
            f"{self.change}: {self.value:.6g} {self.change.unit}".rstrip()
            + f" gives {self.reading} {self.reached:.6g} {self.reading.unit}".rstrip()
        )


def goal_seek(
    network: Network,
    change: Change,
    result: Reading,
    target: Quantity,
    *,
    lower: Optional[Quantity] = None,
    upper: Optional[Quantity] = None,
    start: Optional[Quantity] = None,
    tolerance: float = 1e-7,
    energy: Optional[bool] = None,
) -> GoalSeek:
    """The number of a network that gives a result its wanted value; the network itself is not changed.

    change: what is varied, node_value(), element_value() or pump_speed(). result: node_result() or
    element_result(). target: in SI units or a text with a unit. lower, upper: where it is looked for, in SI
    units or as texts; without them far around the start. start: the number that the network has when absent.
    tolerance: of the result, as a part of the target, or of the largest result seen where that is 0. energy:
    as for Network.solve().

    Goes from the start in growing steps, both ways, until the result passes the target, and halves the way to
    numbers that do not solve; then Brent's method (1973). Of several answers it gives the one whose bracket
    it meets first. Raises BadInput when the target is out of reach, with the results that are; NotConverged
    when no number near the start solves.
    """
    bound = change.bound_to(network)
    search = _Search(network, bound, result, finite(result.number(target), "the target"), tolerance, energy)
    low, high = _range_of(change, lower, upper)
    first = bound.present if start is None else change.number(start)
    first = _start_within(change, first, low, high)
    bracket = search.bracket(first, low, high)
    return search.answer(bracket)


def _range_of(change: Change, lower: Optional[Quantity], upper: Optional[Quantity]) -> Tuple[float, float]:
    low = -math.inf if lower is None else finite(change.number(lower), "the lower limit")
    high = math.inf if upper is None else finite(change.number(upper), "the upper limit")
    if not low < high:
        raise refusal(f"the limits of the {change} are {low:g} and {high:g}", "give the lower one first")
    if change.is_positive and lower is not None and low <= 0.0:
        raise refusal(f"the lower limit of the {change} is {low:g}", "give one above 0")
    return low, high


def _start_within(change: Change, start: float, low: float, high: float) -> float:
    """Where a search starts; the middle of the limits where the network has no number to start from."""
    can_start = math.isfinite(start) and (start > 0.0 or not change.is_positive)
    if can_start:
        return min(max(start, low), high)
    if math.isfinite(low) and math.isfinite(high):
        return math.sqrt(low * high) if change.is_positive else 0.5 * (low + high)
    has = "none" if math.isnan(start) else f"{start:g}"
    raise refusal(f"the {change} has no number to start from ({has})", "give start, or lower and upper")


@dataclass
class _Side:
    """One way of the search. at, value: its last point and the result less the target there. end: the limit.
    failed: a number on the way that did not solve, None when there is none."""

    at: float
    value: float
    end: float
    step: float
    failed: Optional[float] = None
    halvings: int = 0
    is_open: bool = True

    def next(self) -> float:
        if self.failed is not None:
            return 0.5 * (self.at + self.failed)
        point = self.at + self.step
        return min(point, self.end) if self.step > 0.0 else max(point, self.end)

    def fail(self, point: float) -> None:
        self.failed = point
        self.halvings += 1
        self.is_open = self.halvings < _MOST_HALVINGS

    def move(self, point: float, value: float) -> None:
        self.at, self.value = point, value
        self.step *= 2.0
        if self.failed is not None:
            self.halvings += 1
        self.is_open = point != self.end and self.halvings < _MOST_HALVINGS


@dataclass(frozen=True)
class _Bracket:
    low: float
    high: float
    at_low: float
    at_high: float


class _Search:
    """Solves of one network with other numbers. Its coordinate is the number's logarithm where the number is
    positive, else the number."""

    def __init__(
        self,
        network: Network,
        bound: BoundChange,
        reading: Reading,
        target: float,
        tolerance: float,
        energy: Optional[bool],
    ) -> None:
        self._network = network
        self._bound = bound
        self._reading = reading
        self._target = target
        self._tolerance = tolerance
        self._energy = energy
        self._is_log = bound.change.is_positive
        self._seen: Dict[float, float] = {}
        self._given: Dict[float, float] = {}  # numbers by their logarithms, without rounding
        self._solves = 0
        self._failure: Optional[Error] = None
        reading.position_in(network)

    def _number(self, point: float) -> float:
        return self._given.get(point, math.exp(point)) if self._is_log else point

    def _point(self, number: float) -> float:
        if not self._is_log:
            return number
        point = math.log(number)
        self._given[point] = number
        return point

    def _solved(self, point: float) -> Tuple[Network, Result, float]:
        """A copy with the number of a point, its result, and the result's number less the target."""
        self._solves += 1
        copy = self._bound.changed(self._network, self._number(point))
        result = copy.solve(energy=self._energy)
        value = self._reading.of(result)
        if math.isnan(value):
            raise refusal(f"the {self._reading} is not defined", "read another quantity, or open its way")
        self._seen[point] = value
        return copy, result, value - self._target

    def _residual(self, point: float) -> float:
        """The result's number less the target, exactly 0 within the tolerance."""
        value = self._seen[point] - self._target if point in self._seen else self._solved(point)[2]
        return 0.0 if abs(value) <= self._tolerance * self._scale() else value

    def _scale(self) -> float:
        """What the tolerance is a part of: the target, the largest result where that is 0."""
        return abs(self._target) or max(abs(value) for value in self._seen.values())

    def _tried(self, point: float) -> Optional[float]:
        try:
            return self._residual(point)
        except (BadInput, NotConverged) as error:
            self._failure = error
            return None

    def bracket(self, start: float, low: float, high: float) -> _Bracket:
        """Two neighbouring points between which the target is passed; one point twice where it is met."""
        first = self._point(start)
        at_first = self._residual(first)
        if at_first == 0.0:
            return _Bracket(first, first, 0.0, 0.0)
        step, bottom, top = self._steps(start, low, high)
        sides = [
            _Side(first, at_first, top, step, is_open=first < top),
            _Side(first, at_first, bottom, -step, is_open=first > bottom),
        ]
        turn = 0
        while any(side.is_open for side in sides):
            turn += 1
            side = min(
                (side for side in sides if side.is_open),
                key=lambda side: (abs(side.value), (side.step < 0.0) == bool(turn % 2)),
            )
            point = side.next()
            value = self._tried(point)
            if value is None:
                side.fail(point)
                continue
            if value == 0.0:
                return _Bracket(point, point, 0.0, 0.0)
            if (value > 0.0) != (side.value > 0.0):
                ends = sorted([(side.at, side.value), (point, value)])
                return _Bracket(ends[0][0], ends[1][0], ends[0][1], ends[1][1])
            side.move(point, value)
        raise self._out_of_reach() from self._failure

    def _steps(self, start: float, low: float, high: float) -> Tuple[float, float, float]:
        """The first step and the ends of the range, as points."""
        change = self._bound.change
        if self._is_log:
            widest = math.log(change.widest_ratio)
            bottom = self._point(low) if low > 0.0 and math.isfinite(low) else self._point(start) - widest
            top = self._point(high) if math.isfinite(high) else self._point(start) + widest
            return _FIRST_LOG_STEP, bottom, top
        step = max(0.1 * abs(start), change.first_step)
        bottom = low if math.isfinite(low) else start - _MOST_LINEAR_STEPS * step
        top = high if math.isfinite(high) else start + _MOST_LINEAR_STEPS * step
        return step, bottom, top

    def _out_of_reach(self) -> BadInput:
        numbers = sorted(self._number(point) for point in self._seen)
        results = sorted(self._seen.values())
        change, reading = self._bound.change, self._reading
        between = f"{results[0]:.6g} to {results[-1]:.6g} {reading.unit}".rstrip()
        for_numbers = f"{numbers[0]:.6g} to {numbers[-1]:.6g} {change.unit}".rstrip()
        beyond = ""
        if self._failure is not None:
            beyond = f"; beyond, the network does not solve ({self._failure.findings[0].code})"
        return refusal(
            f"the target {self._target:.6g} {reading.unit}".rstrip()
            + f" is out of reach: the {reading} is {between} for the {change} from {for_numbers}{beyond}",
            "change another number, or give other limits or another start",
        )

    def answer(self, bracket: _Bracket) -> GoalSeek:
        """The zero in a bracket, solved once more."""
        point = bracket.low
        if bracket.low != bracket.high:
            accuracy = 1e-13 * max(abs(bracket.low), abs(bracket.high), bracket.high - bracket.low)
            point = find_root(self._residual, bracket.low, bracket.high, accuracy)
        network, result, residual = self._solved(point)
        change, reading = self._bound.change, self._reading
        if abs(residual) > max(_JUMP, self._tolerance) * self._scale():
            raise refusal(
                f"the {reading} jumps past the target {self._target:.6g} {reading.unit}".rstrip()
                + f" where the {change} is {self._number(point):.6g} {change.unit}".rstrip()
                + f", to {residual + self._target:.6g}",
                "look for a valve that opens or shuts there, and give another target",
            )
        return GoalSeek(
            change,
            reading,
            self._target,
            self._number(point),
            residual + self._target,
            network,
            result,
            self._solves,
        )
