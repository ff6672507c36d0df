"""How results follow what is given."""

from __future__ import annotations

import math
from typing import Any, Dict, List, Optional, Sequence, Tuple

import numpy as np
import pandas as pd

from .._arrays import Floats
from .._findings import BadInput, NotConverged, refusal
from .._network import Network
from ._places import BoundChange, Change, Reading

# The step of the first central difference, of the number itself; of its usual step where that is 0.
_FIRST_STEP = 0.05
# Each step is so many times smaller than the one before.
_RATIO = 2.0
# Central differences for each input.
_ROUNDS = 6
# How often the first step is halved where the network does not solve with it.
_MOST_HALVINGS = 8
# An error is taken as at least so much of what two results differ by for rounding: that of double precision,
# with what solves leave open.
_ROUNDING = 1e-9


def sensitivities(
    network: Network,
    inputs: Sequence[Change],
    results: Sequence[Reading],
    *,
    step: float = _FIRST_STEP,
    energy: Optional[bool] = None,
) -> pd.DataFrame:
    """By how much results change with what is given; the network itself is not changed.

    inputs: node_value(), element_value(), pump_speed(). results: node_result(), element_result(). step: of
    the first difference, as a part of the number. energy: as for Network.solve().

    Returns a frame with one row for each input and result: "input", "result", "given" and "found", their
    values in SI units; "derivative" and "error", "unit" of both; "elasticity", per cent of the result for one
    per cent of the input, and its "elasticity_error", NaN where the input or the result is 0; "step", the
    smallest one that the derivative rests on. attrs["units"] has the units of inputs and results by their
    texts.

    Central differences of six steps, each half the one before, extrapolated to step 0 (Richardson 1911); of
    that table each result takes the entry that differs least from its neighbours, and that difference is the
    error (Ridders, Advances in Engineering Software 4, 1982). Costs 12 solves for each input. Raises BadInput
    for inputs that have no number; NotConverged when the network does not solve, however small the step.
    """
    if not inputs or not results:
        raise refusal("there are no inputs or no results", "give at least one of each")
    if not 0.0 < step < 1.0:
        raise refusal(f"the first step is {step:g}", "give a part of the number, above 0 and below 1")
    solved = network.solve(energy=energy)
    found = np.array([reading.of(solved) for reading in results])
    rows: List[Dict[str, Any]] = []
    for change in inputs:
        bound = change.bound_to(network)
        _require_number(bound)
        derivatives, errors, steps = _derivatives(network, bound, results, step, energy)
        for i, reading in enumerate(results):
            numbers = (float(found[i]), float(derivatives[i]), float(errors[i]), float(steps[i]))
            rows.append(_row(bound, reading, *numbers))
    frame = pd.DataFrame(rows)
    units = {str(change): change.unit for change in inputs}
    units.update((str(reading), reading.unit) for reading in results)
    frame.attrs["units"] = units
    return frame


def _require_number(bound: BoundChange) -> None:
    if not math.isfinite(bound.present):
        raise refusal(f"the {bound.change} has no number in the network", "give it one first")


def _row(
    bound: BoundChange, reading: Reading, found: float, derivative: float, error: float, step: float
) -> Dict[str, Any]:
    change = bound.change
    to_elasticity = bound.present / found if bound.present != 0.0 and found != 0.0 else math.nan
    return {
        "input": str(change),
        "result": str(reading),
        "given": bound.present,
        "found": found,
        "derivative": derivative,
        "error": error,
        "unit": _unit_of(reading.unit, change.unit),
        "elasticity": derivative * to_elasticity,
        "elasticity_error": error * abs(to_elasticity),
        "step": step,
    }


def _unit_of(result: str, given: str) -> str:
    """The unit of a derivative, such as "Pa/(kg/s)"."""
    if not given:
        return result
    divisor = f"({given})" if any(sign in given for sign in "/ ") else given
    return f"{result or '1'}/{divisor}"


def _derivatives(
    network: Network, bound: BoundChange, readings: Sequence[Reading], step: float, energy: Optional[bool]
) -> Tuple[Floats, Floats, Floats]:
    """Of each result its derivative, the error of that and the step it rests on."""
    first = step * (abs(bound.present) or bound.change.first_step)
    slope, first = _first_slope(network, bound, readings, first, energy)
    best, steps = slope.difference.copy(), np.full(len(readings), first)
    errors = np.full(len(readings), math.inf)
    before = [slope.difference]
    for i in range(1, _ROUNDS):
        h = first / _RATIO**i
        slope = _slope(network, bound, readings, h, energy)
        row = [slope.difference]
        for j in range(1, i + 1):
            factor = _RATIO ** (2 * j)
            row.append((factor * row[j - 1] - before[j - 1]) / (factor - 1.0))
            error = np.maximum(np.abs(row[j] - row[j - 1]), np.abs(row[j] - before[j - 1]))
            error = np.maximum(error, _ROUNDING * slope.largest / h)
            is_better = error < errors
            best = np.where(is_better, row[j], best)
            errors = np.where(is_better, error, errors)
            steps = np.where(is_better, h, steps)
        before = row
    return best, errors, steps


class _Slope:
    """A central difference of results. largest: their size."""

    def __init__(self, above: Floats, below: Floats, step: float) -> None:
        self.difference: Floats = (above - below) / (2.0 * step)
        self.largest: Floats = np.maximum(np.abs(above), np.abs(below))


def _first_slope(
    network: Network, bound: BoundChange, readings: Sequence[Reading], step: float, energy: Optional[bool]
) -> Tuple[_Slope, float]:
    """The difference of the first step with which the network solves, and that step."""
    for _ in range(_MOST_HALVINGS):
        try:
            return _slope(network, bound, readings, step, energy), step
        except (BadInput, NotConverged):
            step /= _RATIO
    return _slope(network, bound, readings, step, energy), step


def _slope(
    network: Network, bound: BoundChange, readings: Sequence[Reading], step: float, energy: Optional[bool]
) -> _Slope:
    ends = []
    for value in (bound.present + step, bound.present - step):
        result = bound.changed(network, value).solve(energy=energy)
        ends.append(np.array([reading.of(result) for reading in readings]))
    return _Slope(ends[0], ends[1], step)
