"""What a design question changes in a network, and what it reads from a result."""

from __future__ import annotations

import math
from dataclasses import dataclass
from typing import Any, Dict, List, Optional, Sequence, Tuple, Union

import numpy as np

from .._arrays import Floats, Quantity, parsed
from .._findings import refusal
from .._network import ELEMENT_UNITS, NODE_UNITS, Network
from .._result import Result
from .._units import ELEMENT_QUANTITIES, NODE_QUANTITIES, quantity

Names = Union[str, Sequence[str]]

# Numbers that are above 0 in every network: a search goes through them by ratios.
_POSITIVE = (
    "diameter",
    "wetted_perimeter",
    "area",
    "length",
    "roughness",
    "coefficient",
    "kv",
    "cv",
    "bore_diameter",
    "ck",
    "reference_density",
    "speed",
)
# The largest ratio to its start that a search goes to on its own, 1000 for those that are not here.
_RATIOS: Dict[str, float] = {"kv": 1e6, "cv": 1e6, "ck": 1e6, "roughness": 1e4, "speed": 20.0}
# The first step of a search where its start is 0.
_STEPS: Dict[str, float] = {"pressure": 1e4, "z": 1.0, "temperature": 5.0, "k": 1.0, "velocity": 0.1}
_OTHER_STEP = 0.1
# What holds where a network has no number.
_ABSENT: Dict[str, float] = {"k": 0.0}


def names_of(which: Names) -> Tuple[str, ...]:
    names = (which,) if isinstance(which, str) else tuple(which)
    if not names:
        raise refusal("there is no name of a node or an element", "give at least one")
    return names


def quoted(names: Sequence[str]) -> str:
    shown = ", ".join(f'"{name}"' for name in names[:5])
    return shown + (f" and {len(names) - 5} more" if len(names) > 5 else "")


@dataclass(frozen=True)
class Change:
    """A number of a network that a design question varies; several objects get the same number. Made by
    node_value(), element_value() and pump_speed()."""

    part: str
    names: Tuple[str, ...]
    key: str

    @property
    def unit(self) -> str:
        """SI unit, "" for numbers without one."""
        if self.part == "pump":
            return ""
        units = NODE_UNITS if self.part == "node" else ELEMENT_UNITS
        return units.get(self.key.rpartition("/")[2], "")

    @property
    def is_positive(self) -> bool:
        return self.key in _POSITIVE

    @property
    def widest_ratio(self) -> float:
        return _RATIOS.get(self.key, 1e3)

    @property
    def first_step(self) -> float:
        return _STEPS.get(self.key.rpartition("/")[2], _OTHER_STEP)

    def number(self, value: Quantity) -> float:
        """A value of it in SI units, from a number or a text with a unit."""
        return parsed(value, self.key)

    def bound_to(self, network: Network) -> BoundChange:
        """What is needed to change copies of a network. Raises BadInput for unknown names and keys."""
        if self.part == "pump":
            curves = [curve_of(network, name) for name in self.names]
            return BoundChange(self, 1.0, curves)
        values_of = network.node_values if self.part == "node" else network.element_values
        present = float(values_of(self.key, list(self.names))[0])
        if math.isnan(present):
            present = _ABSENT.get(self.key, math.nan)
        return BoundChange(self, present, [])

    def __str__(self) -> str:
        return f"{self.key} of {quoted(self.names)}"


@dataclass(frozen=True)
class PumpCurve:
    """The curve of a pump: volume flows [m3/s], pressure rises [Pa], the density [kg/m3] that it was measured
    with, None for that of the network's fluid."""

    flows: Floats
    rises: Floats
    density: Optional[float]


@dataclass(frozen=True)
class BoundChange:
    """A change with what it has found in the network that copies are made of. present: the number that the
    network has, NaN for none."""

    change: Change
    present: float
    curves: List[PumpCurve]

    def apply(self, network: Network, value: float) -> None:
        """Changes a copy of the network."""
        change = self.change
        if change.part == "node":
            network.set_node_values(change.key, value, list(change.names))
        elif change.part == "element":
            network.set_element_values(change.key, value, list(change.names))
        else:
            for name, curve in zip(change.names, self.curves):
                set_pump_curve(network, name, curve, value, value * value)

    def changed(self, network: Network, value: float) -> Network:
        """A copy of the network with another number."""
        copy = network.copy()
        self.apply(copy, value)
        return copy


@dataclass(frozen=True)
class Reading:
    """A number of a result. Made by node_result() and element_result()."""

    part: str
    name: str
    quantity: str

    @property
    def unit(self) -> str:
        """SI unit, "" for numbers without one."""
        return self._quantities()[1]

    def _quantities(self) -> Tuple[str, str]:
        return (NODE_QUANTITIES if self.part == "node" else ELEMENT_QUANTITIES)[self.quantity]

    def number(self, value: Quantity) -> float:
        """A value of it in SI units, from a number or a text with a unit."""
        if not isinstance(value, str):
            return float(value)
        kind = self._quantities()[0]
        if not kind:
            raise refusal(f"{self} has no unit, but {value!r} is a text", "give a number")
        return quantity(value, kind)

    def position_in(self, network: Network) -> int:
        """Raises BadInput for an unknown name."""
        find = network.node_positions if self.part == "node" else network.element_positions
        return int(find([self.name])[0])

    def of(self, result: Result) -> float:
        """Its value in a result, NaN where it is not defined. Raises BadInput for an unknown name."""
        values_of = result.node_values if self.part == "node" else result.element_values
        return float(values_of(self.quantity)[self.position_in(result._solved)])

    def __str__(self) -> str:
        return f'{self.quantity} of "{self.name}"'


def node_value(which: Names, key: str) -> Change:
    """A number of one or more nodes: key as for Network.set_node_values(), "inlet/pressure" [Pa], "z" [m]."""
    return Change("node", names_of(which), key)


def element_value(which: Names, key: str) -> Change:
    """A number of one or more elements: key as for Network.set_element_values(), "kv", "diameter" [m],
    "roughness" [m], "k"."""
    return Change("element", names_of(which), key)


def pump_speed(which: Names) -> Change:
    """The speed of one or more pumps as a ratio [-] to the speed of the curves that they have; the curves
    follow by pump_affinity()."""
    return Change("pump", names_of(which), "speed")


def node_result(name: str, quantity: str) -> Reading:
    """A number of a node's result: "pressure" [Pa], "head" [m], "temperature" [K], "external_mass_flow"
    [kg/s] and so on, as for Result.node_values(). Raises BadInput for an unknown quantity."""
    return _reading("node", name, quantity, NODE_QUANTITIES)


def element_result(name: str, quantity: str) -> Reading:
    """A number of an element's result: "volume_flow" [m3/s], "mass_flow" [kg/s], "velocity" [m/s],
    "pressure_difference" [Pa] and so on, as for Result.element_values(). Raises BadInput for an unknown
    quantity."""
    return _reading("element", name, quantity, ELEMENT_QUANTITIES)


def _reading(part: str, name: str, quantity: str, known: Dict[str, Tuple[str, str]]) -> Reading:
    if quantity not in known:
        raise refusal(f'there is no quantity "{quantity}"', f"give one of {', '.join(known)}")
    return Reading(part, name, quantity)


def curve_of(network: Network, name: str) -> PumpCurve:
    """The curve of a pump, its own or the one that it names. Raises BadInput for an element without one."""
    position = int(network.element_positions([name])[0])
    if network.element_types[position] != "pump":
        raise refusal(
            f'the element "{name}" is a {network.element_types[position]} and no pump', "name a pump"
        )
    content = network.to_dict()
    element: Dict[str, Any] = content["elements"][position]
    curve: Any = element.get("curve", ())
    density = element.get("reference_density")
    if isinstance(curve, str):
        named: Dict[str, Any] = content["curves"][curve]
        curve = named["points"]
        density = named.get("reference_density") if density is None else density
    points = np.array(curve, dtype=np.float64).reshape(-1, 2)
    if not len(points):
        raise refusal(f'the pump "{name}" has no curve', "give it one")
    return PumpCurve(points[:, 0].copy(), points[:, 1].copy(), density)


def set_pump_curve(
    network: Network, name: str, curve: PumpCurve, flow_ratio: float, pressure_ratio: float
) -> None:
    """Gives a pump its curve with all flows and all pressure rises multiplied by a ratio."""
    network.set_curve(name, curve.flows * flow_ratio, curve.rises * pressure_ratio)
    if curve.density is not None:
        network.set_element_values("reference_density", curve.density, name)


def finite(value: float, what: str) -> float:
    """A number that is one. Raises BadInput otherwise."""
    if not math.isfinite(value):
        raise refusal(f"{what} is {value}", "give a finite number")
    return value
