"""Limits of pressures and velocities."""

from __future__ import annotations

import math
from dataclasses import dataclass
from typing import Mapping, Optional, Union

import numpy as np
import numpy.typing as npt

from .._arrays import Floats, Quantity, parsed
from .._findings import refusal
from .._network import Network
from .._result import Result

# One for all, or one for each name.
Limit = Union[None, Quantity, Mapping[str, Quantity]]


@dataclass(frozen=True)
class Limits:
    """What a network must keep, in SI units or as texts with units.

    lowest_pressure, highest_pressure: static pressure of nodes [Pa], one for all nodes whose pressure is not
    given, or a dict by name. lowest_velocity, highest_velocity: of elements that have a section [m/s], one
    for all or a dict by name. highest_gradient: friction per length of pipes [Pa/m].
    """

    lowest_pressure: Limit = None
    highest_pressure: Limit = None
    lowest_velocity: Limit = None
    highest_velocity: Limit = None
    highest_gradient: Optional[float] = None


class LimitsOf:
    """Limits as arrays of one network: of each node and each element, infinite where there is none."""

    def __init__(self, limits: Limits, network: Network) -> None:
        given = np.isfinite(network.node_values("inlet/pressure")) | np.isfinite(
            network.node_values("outlet/pressure")
        )
        self.lowest_pressure = _of_nodes(limits.lowest_pressure, network, given, -math.inf)
        self.highest_pressure = _of_nodes(limits.highest_pressure, network, given, math.inf)
        self.lowest_velocity = _of_elements(limits.lowest_velocity, network, 0.0)
        self.highest_velocity = _of_elements(limits.highest_velocity, network, math.inf)
        gradient = limits.highest_gradient
        if gradient is not None and not gradient > 0.0:
            raise refusal(f"the highest gradient is {gradient:g} Pa/m", "give one above 0")
        self.highest_gradient = math.inf if gradient is None else float(gradient)

    def too_low(self, result: Result) -> Floats:
        """By how much each node is below its lowest pressure [Pa], 0 where it is not."""
        return _excess(self.lowest_pressure, result.node_values("pressure"))

    def too_high(self, result: Result) -> Floats:
        """By how much each node is above its highest pressure [Pa], 0 where it is not."""
        return _excess(result.node_values("pressure"), self.highest_pressure)

    def too_fast(self, result: Result) -> Floats:
        """By how much each element is above its highest velocity [m/s], 0 where it is not."""
        return _excess(np.abs(result.element_values("velocity")), self.highest_velocity)


def _excess(values: Floats, limits: Floats) -> Floats:
    with np.errstate(invalid="ignore"):
        excess: Floats = np.nan_to_num(np.maximum(values - limits, 0.0), nan=0.0)
    return excess


def _of_nodes(limit: Limit, network: Network, is_given: npt.NDArray[np.bool_], none: float) -> Floats:
    limits = np.full(network.node_count, none)
    if isinstance(limit, Mapping):
        limits[network.node_positions(list(limit))] = [parsed(each, "pressure") for each in limit.values()]
    elif limit is not None:
        limits[~is_given] = parsed(limit, "pressure")
    return limits


def _of_elements(limit: Limit, network: Network, none: float) -> Floats:
    limits = np.full(network.element_count, none)
    if isinstance(limit, Mapping):
        limits[network.element_positions(list(limit))] = [parsed(each, "velocity") for each in limit.values()]
    elif limit is not None:
        limits[:] = parsed(limit, "velocity")
    if np.any(limits < 0.0):
        raise refusal(f"a limit of velocities is {limits.min():g} m/s", "give one that is not below 0")
    return limits
