"""Roughness of groups of pipes from measured pressures and flows."""

from __future__ import annotations

import math
from dataclasses import dataclass
from typing import Any, Dict, List, Mapping, Optional, Sequence, Tuple, Union

import numpy as np
import numpy.typing as npt
import pandas as pd

from .._arrays import Floats, Quantity, parsed
from .._findings import refusal
from .._network import Network, frame_of
from ._places import Names, Reading, names_of, quoted

# What a type of pipe is calibrated by.
_KEYS = {
    "pipe": "roughness",
    "control_valve": "roughness",
    "non_return": "roughness",
    "hazen_williams_pipe": "coefficient",
}
_UNITS = {"roughness": "m", "coefficient": ""}
# Where a value is looked for: above the smoothest pipe that can be told from a smooth one, below a twentieth
# of the diameter, where the laws of friction end; all coefficients C that pipes have.
_SMOOTHEST = 1e-7
_ROUGHEST = 0.05
_COEFFICIENTS = (20.0, 200.0)
# Where it starts when the network has none.
_STARTS = {"roughness": 1e-4, "coefficient": 120.0}
# Steps of the central differences, in the logarithm of a value.
_STEP = 0.01
# Columns whose length is below this part of the largest tell nothing; so do columns that are combinations of
# others to this part.
_NOTHING = 1e-7
# Of the normal and of Student's distribution: the two-sided interval of this probability.
_PROBABILITY = 0.95


@dataclass(frozen=True)
class Measurement:
    """A measured value. reading: node_result() or element_result(). value: in SI units or a text with a unit.
    deviation: standard deviation of it, in the same; None where nothing is known of any. scenario: the
    network's scenario in which it was measured, None for the network as it is."""

    reading: Reading
    value: Quantity
    deviation: Optional[float] = None
    scenario: Optional[str] = None


@dataclass(frozen=True)
class Calibration:
    """The answer of calibrate_roughness(). network: with the values found. groups: a frame by group: "key",
    "roughness" [m] or "coefficient" [-], "start", "value", "standard_error", "low" and "high" of the interval
    of 95 %, "at_limit" where the value is at the end of the range that is looked through. residuals: a frame
    by measurement: "scenario", "measured", "computed", "residual" (computed less measured), "unit",
    "weighted" (by the deviation). deviation: standard deviation of the weighted residuals, which is near 1
    when the deviations given are right; NaN without a measurement to spare. correlation: a frame of the
    correlations between the groups. solves: how many it took."""

    network: Network
    groups: pd.DataFrame
    residuals: pd.DataFrame
    deviation: float
    correlation: pd.DataFrame
    solves: int


def calibrate_roughness(
    network: Network, groups: Mapping[str, Names], measurements: Sequence[Measurement]
) -> Calibration:
    """The roughness of groups of pipes with which a network comes nearest to measured pressures and flows;
    the network itself is not changed.

    groups: the pipes of each group by its name; Hazen-Williams pipes are calibrated by their coefficient C. A
    group has one value. measurements: at least as many as groups. All have a deviation, or none has: then
    they count alike, in SI units, and the errors come from the residuals.

    Least squares of the weighted residuals in the logarithms of the values (scipy.optimize.least_squares,
    trust region reflective: Branch, Coleman and Li 1999). Standard errors from the Jacobian at the solution:
    covariance = s^2 (J^T J)^-1, s being 1 with deviations given, else the standard deviation of the
    residuals; s_value = value s_log. Intervals are symmetric in the logarithm. They hold for small errors
    and for measurements that are independent of each other.

    Raises BadInput where the measurements do not tell groups apart, with their names; NotConverged when the
    network does not solve on the way; ImportError without SciPy.
    """
    try:
        from scipy.optimize import least_squares
    except ImportError as error:
        raise ImportError("calibrate_roughness() needs SciPy; install the package scipy") from error

    fit = _Fit(network, groups, measurements)
    low, high = fit.bounds
    answer = least_squares(
        fit.residuals, fit.start, jac=fit.jacobian, bounds=(low, high), method="trf", xtol=1e-10, ftol=1e-12
    )
    return fit.answer(np.asarray(answer.x))


@dataclass(frozen=True)
class _Group:
    name: str
    pipes: npt.NDArray[np.uintp]
    key: str
    low: float
    high: float
    start: float


def _group(network: Network, name: str, pipes: Names) -> _Group:
    positions = network.element_positions(list(names_of(pipes)))
    types = network.element_types
    for position in positions:
        if types[position] not in _KEYS:
            element = network.element_names[position]
            raise refusal(f'"{element}" of the group "{name}" is a {types[position]}', "name pipes only")
    keys = {_KEYS[types[position]] for position in positions}
    if len(keys) > 1:
        raise refusal(f'the group "{name}" mixes pipes by roughness and by coefficient', "divide it")
    key = keys.pop()
    if key == "coefficient":
        low, high = _COEFFICIENTS
    else:
        low, high = _SMOOTHEST, _ROUGHEST * float(network.element_values("diameter", positions).min())
    given = network.element_values(key, positions)
    given = given[given > 0.0]
    start = float(np.exp(np.log(given).mean())) if len(given) else _STARTS[key]
    inside = (low * math.exp(10 * _STEP), high * math.exp(-10 * _STEP))
    return _Group(name, positions, key, low, high, min(max(start, inside[0]), inside[1]))


class _Fit:
    """The residuals of a network by the logarithms of its groups' values."""

    def __init__(
        self, network: Network, groups: Mapping[str, Names], measurements: Sequence[Measurement]
    ) -> None:
        self._network = network
        self._groups = [_group(network, name, pipes) for name, pipes in groups.items()]
        self._measurements = list(measurements)
        self._check()
        self._measured = np.array([each.reading.number(each.value) for each in self._measurements])
        self._has_deviations = self._measurements[0].deviation is not None
        self._deviations = np.array([each.deviation or 1.0 for each in self._measurements], dtype=np.float64)
        names = dict.fromkeys(each.scenario for each in self._measurements)
        self._networks = {name: network.copy() if name is None else network.scenario(name) for name in names}
        self._solves = 0
        self.start = np.log([group.start for group in self._groups])

    def _check(self) -> None:
        groups, measurements = self._groups, self._measurements
        if not groups:
            raise refusal("there are no groups of pipes", "give at least one")
        if len(measurements) < len(groups):
            raise refusal(
                f"there are {len(measurements)} measurements for {len(groups)} groups",
                "measure more, or join groups",
            )
        seen: Dict[int, str] = {}
        for group in groups:
            for pipe in group.pipes:
                other = seen.setdefault(int(pipe), group.name)
                if other != group.name:
                    name = self._network.element_names[pipe]
                    raise refusal(f'"{name}" is in the groups "{other}" and "{group.name}"', "take one out")
        given = [each.deviation for each in measurements if each.deviation is not None]
        if given and len(given) < len(measurements):
            raise refusal(
                f"{len(given)} of {len(measurements)} measurements have a deviation",
                "give all of them one, or none",
            )
        if any(not 0.0 < each < math.inf for each in given):
            raise refusal(f"a deviation is {min(given):g}", "give finite ones above 0")

    @property
    def bounds(self) -> Tuple[Floats, Floats]:
        return (
            np.log([group.low for group in self._groups]),
            np.log([group.high for group in self._groups]),
        )

    def _set(self, network: Network, logs: Floats) -> None:
        for group, value in zip(self._groups, np.exp(logs)):
            network.set_element_values(group.key, float(value), group.pipes)

    def _computed(self, logs: Floats) -> Floats:
        """What the network has for each measurement."""
        results = {}
        for name, network in self._networks.items():
            self._set(network, logs)
            results[name] = network.solve()
            self._solves += 1
        values = np.array([each.reading.of(results[each.scenario]) for each in self._measurements])
        if np.isnan(values).any():
            undefined = self._measurements[int(np.flatnonzero(np.isnan(values))[0])]
            raise refusal(f"the {undefined.reading} is not defined", "leave it out")
        return values

    def residuals(self, logs: Floats) -> Floats:
        """Computed less measured, by the deviations."""
        weighted: Floats = (self._computed(logs) - self._measured) / self._deviations
        return weighted

    def jacobian(self, logs: Floats) -> Floats:
        """Central differences."""
        columns: List[Floats] = []
        for i in range(len(logs)):
            ends = []
            for step in (_STEP, -_STEP):
                moved = logs.copy()
                moved[i] += step
                ends.append(self.residuals(moved))
            columns.append((ends[0] - ends[1]) / (2.0 * _STEP))
        return np.column_stack(columns)

    def answer(self, logs: Floats) -> Calibration:
        weighted = self.residuals(logs)
        spare = len(weighted) - len(logs)
        deviation = math.sqrt(float(weighted @ weighted) / spare) if spare else math.nan
        covariance = self._covariance(logs)
        scale = 1.0 if self._has_deviations else deviation
        errors = np.sqrt(np.diag(covariance)) * scale
        found = self._network.copy()
        self._set(found, logs)
        names = [group.name for group in self._groups]
        roots = np.sqrt(np.diag(covariance))
        correlation = pd.DataFrame(covariance / np.outer(roots, roots), index=names, columns=names)
        return Calibration(
            found,
            self._group_frame(logs, errors, spare),
            self._residual_frame(weighted),
            deviation,
            correlation,
            self._solves,
        )

    def _covariance(self, logs: Floats) -> Floats:
        """(J^T J)^-1 of the logarithms. Raises BadInput for groups that the measurements do not tell."""
        jacobian = self.jacobian(logs)
        lengths = np.linalg.norm(jacobian, axis=0)
        scale = float(lengths.max())
        if not self._has_deviations:
            scale = max(scale, float(np.abs(self._measured).max()) * _NOTHING)
        silent = [group.name for group, each in zip(self._groups, lengths) if each <= _NOTHING * scale]
        if silent or scale == 0.0:
            raise refusal(
                f"no measurement depends on the roughness of {quoted(silent or [self._groups[0].name])}",
                "measure where its pipes lose pressure, or leave the group out",
            )
        _, sizes, directions = np.linalg.svd(jacobian / lengths, full_matrices=False)
        if sizes[-1] <= _NOTHING * sizes[0] * 100.0:
            alike = [g.name for g, part in zip(self._groups, np.abs(directions[-1])) if part > 0.1]
            raise refusal(
                f"the measurements do not tell the groups {quoted(alike)} apart",
                "join them, or measure between them",
            )
        scaled = (directions.T / sizes**2) @ directions
        covariance: Floats = scaled / np.outer(lengths, lengths)
        return covariance

    def _group_frame(self, logs: Floats, errors: Floats, spare: int) -> pd.DataFrame:
        from scipy import stats

        normal = stats.norm if self._has_deviations or not spare else stats.t(spare)
        width = float(normal.ppf(0.5 + 0.5 * _PROBABILITY)) * errors
        values = np.exp(logs)
        with np.errstate(over="ignore"):  # of a value that is hardly known, it is infinite
            upper = np.exp(logs + width)
        low, high = self.bounds
        columns: Dict[str, Any] = {
            "key": [group.key for group in self._groups],
            "start": [group.start for group in self._groups],
            "value": values,
            "standard_error": values * errors,
            "low": np.exp(logs - width),
            "high": upper,
            "at_limit": (logs - low < _STEP) | (high - logs < _STEP),
        }
        frame = frame_of(columns, [group.name for group in self._groups], "group", {})
        units: Dict[str, Union[str, Dict[str, str]]] = {
            group.name: _UNITS[group.key] for group in self._groups
        }
        frame.attrs["units"] = units
        return frame

    def _residual_frame(self, weighted: Floats) -> pd.DataFrame:
        residual = weighted * self._deviations
        columns: Dict[str, Any] = {
            "scenario": [each.scenario or "" for each in self._measurements],
            "measured": self._measured,
            "computed": self._measured + residual,
            "residual": residual,
            "unit": [each.reading.unit for each in self._measurements],
            "weighted": weighted,
        }
        names = [str(each.reading) for each in self._measurements]
        return frame_of(columns, names, "measurement", {})
