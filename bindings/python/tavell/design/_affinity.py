"""Pumps at other speeds and with other impellers."""

from __future__ import annotations

from typing import List, Tuple

import numpy as np

from .._arrays import Floats
from .._findings import refusal
from .._network import Curve, Network, _curve_points
from ._places import Names, curve_of, names_of, set_pump_curve

# Powers of the ratio of diameters in flow and in pressure rise.
_DIAMETER_POWERS = {"trimmed": (1, 2), "similar": (3, 2)}


def pump_affinity(
    curve: Curve, speed_ratio: float = 1.0, diameter_ratio: float = 1.0, *, impeller: str = "trimmed"
) -> List[Tuple[float, float]]:
    """The curve of a pump at another speed or with another impeller: points of volume flow [m3/s] and
    pressure rise [Pa].

    curve: points, numbers or texts with units. speed_ratio, diameter_ratio: new to old [-], above 0.
    impeller: "trimmed" is turned down in the same casing, "similar" is another size of the same shape.

        Q ~ n D,    H ~ n^2 D^2    trimmed (Karassik and others, Pump Handbook, 4th edition, 2008)
        Q ~ n D^3,  H ~ n^2 D^2    similar (White, Fluid Mechanics, 7th edition, 2011, section 11.3)

    Both hold as long as efficiency and slip do not change much: speeds of half to one and a half of the
    measured one, trimming of up to a fifth. Not checked. Raises BadInput.
    """
    flows, rises = _curve_points(curve)
    flow_ratio, pressure_ratio = _ratios(speed_ratio, diameter_ratio, impeller)
    scaled: Floats = np.column_stack([flows * flow_ratio, rises * pressure_ratio])
    return [(float(flow), float(rise)) for flow, rise in scaled]


def with_pump_affinity(
    network: Network,
    pumps: Names,
    speed_ratio: float = 1.0,
    diameter_ratio: float = 1.0,
    *,
    impeller: str = "trimmed",
) -> Network:
    """A copy of a network in which pumps have their curves scaled as by pump_affinity(). Raises BadInput for
    an element that is no pump."""
    ratios = _ratios(speed_ratio, diameter_ratio, impeller)
    copy = network.copy()
    for name in names_of(pumps):
        set_pump_curve(copy, name, curve_of(network, name), *ratios)
    return copy


def _ratios(speed_ratio: float, diameter_ratio: float, impeller: str) -> Tuple[float, float]:
    """The ratios of flows and of pressure rises."""
    if impeller not in _DIAMETER_POWERS:
        raise refusal(f'there is no impeller "{impeller}"', 'give "trimmed" or "similar"')
    for name, ratio in (("speed", speed_ratio), ("diameter", diameter_ratio)):
        if not 0.0 < ratio < float("inf"):
            raise refusal(f"the ratio of {name}s is {ratio:g}", "give a number above 0")
    in_flow, in_pressure = _DIAMETER_POWERS[impeller]
    return speed_ratio * diameter_ratio**in_flow, speed_ratio**2 * diameter_ratio**in_pressure
