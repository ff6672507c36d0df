"""Balancing valves: what each must be set to so that its branch has its flow."""

from __future__ import annotations

import math
from dataclasses import dataclass
from typing import Any, Dict, List, Mapping, Optional, Tuple

import numpy as np
import pandas as pd

from .._arrays import Floats, Quantity, parsed
from .._findings import refusal
from .._network import Network, frame_of
from .._result import Result
from ._places import Names, element_result, element_value, names_of, pump_speed, quoted
from ._seek import goal_seek

# dp = r2 rho Q^2 of valves (IEC 60534-2-1:2011): r2 = _KV_RESISTANCE / X^2, X = Kv / 3600 = 0.865 Cv / 3600.
_KV_RESISTANCE = 100.10310619938537
_CV_TO_KV = 0.865
# The number that a type of element is set by.
_KEYS = {
    "kv_valve": "kv",
    "cv_valve": "cv",
    "pipe": "k",
    "hazen_williams_pipe": "k",
    "general_loss": "k",
    "non_return": "k",
}
# How far the flows of the network that is found may be from those that are wanted.
_FLOW_TOLERANCE = 1e-4
# The curve of an element of given flow is not used; it must only be one.
_ANY_CURVE = [[0.0, 4e5], [1e-3, 3e5], [2e-3, 2e5], [3e-3, 0.0]]


@dataclass(frozen=True)
class Balanced:
    """The answer of balance_valves(). network, result: with the settings. valves: a frame by valve: "key" is
    "kv" [m3/h at 1 bar], "cv" [US gal/min at 1 psi] or "k" [-]; "open" and "setting" its value before and
    now, "wanted" and "volume_flow" [m3/s], "pressure_drop" [Pa] across it, "is_index". index: the valve that
    was left open, "" when all are throttled. partner: the setting of the partner, NaN without one."""

    network: Network
    result: Result
    valves: pd.DataFrame
    index: str
    partner: float


def balance_valves(
    network: Network,
    valves: Names,
    flows: Mapping[str, Quantity],
    *,
    partner: Optional[str] = None,
    throttle_index: bool = False,
) -> Balanced:
    """The settings of the balancing valves of a riser with which each branch has its flow; the network itself
    is not changed.

    valves: one in each branch, "kv_valve", "cv_valve", or a pipe or general loss that is set by its K. What
    they have in the network is their open state. flows: of each valve, from its start to its end [m3/s], or
    texts with units.

    The valve that would have to be opened farthest is that of the index circuit and stays open. Its branch
    then has the wanted flow or more. partner: a valve or a pump in the common part, whose setting or speed
    takes up the difference, so that the index circuit has exactly its flow. throttle_index: the index valve
    takes it up itself, and none is left open.

    Each valve is replaced by an element that carries its flow whatever the pressure; the pressure that one
    solve leaves to it gives its setting: Kv = 3600 Q sqrt(100.1031 rho / dp) (IEC 60534-2-1:2011, with the
    reference density of docs/theory.md), K = 2 (dp - dp of K = 0) A^2 / (rho Q^2). Raises BadInput where
    the pressure is not enough, with what is missing.
    """
    if partner is not None and throttle_index:
        raise refusal("a partner and the index valve would both take up the difference", "choose one of them")
    riser = _Riser(network, valves, flows)
    if partner is not None and partner in riser.names:
        raise refusal(f'the partner "{partner}" is one of the valves', "name one in the common part")
    settings = riser.settings(riser.forced(riser.names).solve(), riser.names)
    index = riser.index_of()
    throttled = riser.names if throttle_index else [name for name in riser.names if name != index]
    found = math.nan
    base = network.copy()
    if partner is None:
        riser.require_pressure(riser.names)
        if not throttle_index:
            settings = riser.settings(riser.forced(throttled).solve(), throttled)
    else:
        base, found = riser.with_partner(partner, index, throttled)
        settings = riser.settings(riser.forced(throttled, base).solve(), throttled)
    riser.require_pressure(throttled)
    for name in throttled:
        base.set_element_values(riser.keys[name], settings[name], name)
    return riser.answer(base, "" if throttle_index else index, found)


class _Riser:
    """A network with its balancing valves, their keys, open settings and wanted flows [m3/s]."""

    def __init__(self, network: Network, valves: Names, flows: Mapping[str, Quantity]) -> None:
        self.network = network
        self.names = list(dict.fromkeys(names_of(valves)))
        self.positions = network.element_positions(self.names)
        self.keys: Dict[str, str] = {}
        self.wanted: Dict[str, float] = {}
        self.open: Dict[str, float] = {}
        for name, position in zip(self.names, self.positions):
            kind = network.element_types[position]
            if kind not in _KEYS:
                raise refusal(
                    f'"{name}" is a {kind}, which has no setting', f"name one of {', '.join(sorted(_KEYS))}"
                )
            if name not in flows:
                raise refusal(f'there is no flow for the valve "{name}"', "give one for each valve")
            flow = parsed(flows[name], "volume_flow")
            if not 0.0 < flow < math.inf:
                raise refusal(
                    f'the flow of "{name}" is {flow:g} m3/s', "give one above 0, from its start to its end"
                )
            self.keys[name] = _KEYS[kind]
            self.wanted[name] = flow
            value = float(network.element_values(_KEYS[kind], name)[0])
            self.open[name] = 0.0 if math.isnan(value) else value
        others = [name for name in flows if name not in self.keys]
        if others:
            raise refusal(f"flows are given for {quoted(others)}, no valves here", "name them as valves too")
        self.density = _density(network)
        self.own = {name: self._own_drop(name) for name in self.names if self.keys[name] == "k"}
        self.left: Dict[str, float] = {}

    def forced(self, names: List[str], network: Optional[Network] = None) -> Network:
        """A copy in which elements carry their wanted flow whatever the pressure."""
        content = _bare(network or self.network)
        chosen = set(names)
        for element in content["elements"]:
            name = element["name"]
            if name in chosen:
                ends = {key: element[key] for key in ("from", "to", "length") if key in element}
                flow = self.wanted[name] * self.density
                element.clear()
                element.update(name=name, type="pump", curve=_ANY_CURVE, fixed_mass_flow=flow, **ends)
        return Network.from_json(content)

    def drops(self, result: Result) -> Floats:
        """The pressure [Pa] that each valve takes, without that of its height."""
        return _losses(result)[self.positions]

    def settings(self, result: Result, names: List[str]) -> Dict[str, float]:
        """What each of some valves must be set to for the pressure that is left to it; infinite where nothing
        is left to a Kv or Cv valve."""
        self.left = dict(zip(self.names, map(float, self.drops(result))))
        return {name: self._setting(name, self.left[name]) for name in names}

    def _setting(self, name: str, drop: float) -> float:
        flow = self.wanted[name]
        if self.keys[name] == "k":
            return (drop - self.own[name]) / self._dynamic_pressure(name)
        if drop <= 0.0:
            return math.inf
        kv = 3600.0 * flow * math.sqrt(_KV_RESISTANCE * self.density / drop)
        return kv / _CV_TO_KV if self.keys[name] == "cv" else kv

    def _open_drop(self, name: str) -> float:
        """Pressure drop [Pa] of the open valve at the wanted flow."""
        if self.keys[name] == "k":
            return self.own[name] + self.open[name] * self._dynamic_pressure(name)
        x = self.open[name] / 3600.0 * (_CV_TO_KV if self.keys[name] == "cv" else 1.0)
        return _KV_RESISTANCE * self.density * self.wanted[name] ** 2 / x**2

    def _dynamic_pressure(self, name: str) -> float:
        """rho V^2 / 2 [Pa] in an element at its wanted flow."""
        area = float(self.network.element_values("area", name)[0])
        return 0.5 * self.density * (self.wanted[name] / area) ** 2

    def _own_drop(self, name: str) -> float:
        """The pressure drop [Pa] of an element that is set by its K, at the wanted flow and with K = 0: its
        friction and its fittings, from a solve of it alone."""
        content = _bare(self.network)
        (position,) = self.network.element_positions([name])
        element = dict(content["elements"][int(position)], k=0)
        ends = [node for node in content["nodes"] if node["name"] in (element["from"], element["to"])]
        for node in ends:
            node.pop("inlet", None)
            node.pop("outlet", None)
            if node["name"] == element["from"]:
                node["inlet"] = {"mass_flow": self.wanted[name] * self.density}
            else:
                node["outlet"] = {"pressure": 1e5}
        settings = dict(content.get("settings", {}), minor_loss="specified")
        alone = Network.from_json({**content, "settings": settings, "nodes": ends, "elements": [element]})
        result = alone.solve()
        return float(_losses(result)[0])

    def index_of(self) -> str:
        """The valve to which the least pressure is left beyond what it takes when it is open."""
        return min(self.names, key=lambda name: self.left[name] - self._open_drop(name))

    def require_pressure(self, names: List[str]) -> None:
        """Raises BadInput where an open valve takes more pressure than is left to it."""
        for name in names:
            needed, left = self._open_drop(name), self.left[name]
            if needed > left + 1e-6 * abs(needed):
                raise refusal(
                    f'the branch of "{name}" cannot have {self.wanted[name]:.6g} m3/s: its open valve takes '
                    f"{needed:.6g} Pa and {left:.6g} Pa are left to it",
                    "give more pressure, larger pipes or valves, or smaller flows",
                )

    def with_partner(self, partner: str, index: str, others: List[str]) -> Tuple[Network, float]:
        """The network with a partner set so that the index circuit has its flow when the others have theirs,
        and its setting: Kv, Cv or K of a valve, the ratio of speeds of a pump."""
        position = int(self.network.element_positions([partner])[0])
        kind = self.network.element_types[position]
        if kind != "pump" and kind not in _KEYS:
            raise refusal(f'the partner "{partner}" is a {kind}', "name a valve or a pump in the common part")
        change = pump_speed(partner) if kind == "pump" else element_value(partner, _KEYS[kind])
        found = goal_seek(
            self.forced(others), change, element_result(index, "volume_flow"), self.wanted[index]
        )
        return change.bound_to(self.network).changed(self.network, found.value), found.value

    def answer(self, network: Network, index: str, partner: float) -> Balanced:
        result = network.solve()
        flows = result.element_values("volume_flow")[self.positions]
        wanted = np.array([self.wanted[name] for name in self.names])
        is_index = np.array([name == index for name in self.names])
        is_exact = np.abs(flows - wanted) <= _FLOW_TOLERANCE * wanted
        may_exceed = is_index & math.isnan(partner) & (flows > wanted)
        for i in np.flatnonzero(~(is_exact | may_exceed)):
            raise refusal(
                f'with all settings the branch of "{self.names[i]}" has {flows[i]:.6g} m3/s '
                f"and not {wanted[i]:.6g}",
                "look whether another element of the branch limits or fixes its flow",
            )
        columns: Dict[str, Any] = {
            "key": [self.keys[name] for name in self.names],
            "open": [self.open[name] for name in self.names],
            "setting": [float(network.element_values(self.keys[name], name)[0]) for name in self.names],
            "wanted": wanted,
            "volume_flow": flows.copy(),
            "pressure_drop": self.drops(result),
            "is_index": is_index,
        }
        units = {"wanted": "m3/s", "volume_flow": "m3/s", "pressure_drop": "Pa"}
        return Balanced(network, result, frame_of(columns, self.names, "valve", units), index, partner)


def _losses(result: Result) -> Floats:
    """The pressure [Pa] that each element takes from its start to its end, without that of its height."""
    losses: Floats = -result.element_values("pressure_difference") - result.element_values("height")
    return losses


def _bare(network: Network) -> Dict[str, Any]:
    """The content of a network without what no solve needs."""
    content = network.to_dict()
    content.pop("scenarios", None)
    content.pop("answer", None)
    return content


def _density(network: Network) -> float:
    """The density [kg/m3] of a network's liquid, from a solve."""
    result = network.solve()
    mass, volume = result.element_values("mass_flow"), result.element_values("volume_flow")
    flowing = np.flatnonzero(np.abs(np.nan_to_num(volume)) > 0.0)
    if not len(flowing):
        raise refusal("nothing flows in the network", "open its valves and give it pressure")
    largest = flowing[np.argmax(np.abs(volume[flowing]))]
    return float(mass[largest] / volume[largest])
