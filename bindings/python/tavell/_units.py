"""Units of results: what they are in, and turning them into others."""

from __future__ import annotations

import ctypes
from dataclasses import dataclass
from typing import Any, Dict, List, Tuple

import numpy as np

from ._arrays import Floats, encoded
from ._findings import checked, text_of
from ._library import LIBRARY

# Quantities of results: the quantity that their unit is one of, and the SI unit.
NODE_QUANTITIES: Dict[str, Tuple[str, str]] = {
    "pressure": ("pressure", "Pa"),
    "head": ("head", "m"),
    "temperature": ("temperature", "K"),
    "external_mass_flow": ("mass_flow", "kg/s"),
    "mass_residual": ("mass_flow", "kg/s"),
}
ELEMENT_QUANTITIES: Dict[str, Tuple[str, str]] = {
    "mass_flow": ("mass_flow", "kg/s"),
    "volume_flow": ("volume_flow", "m3/s"),
    "velocity": ("velocity", "m/s"),
    "reynolds": ("", ""),
    "pressure_difference": ("pressure", "Pa"),
    "temperature": ("temperature", "K"),
    "friction": ("pressure", "Pa"),
    "minor": ("pressure", "Pa"),
    "height": ("pressure", "Pa"),
    "pump": ("pressure", "Pa"),
    "other": ("pressure", "Pa"),
    "law_mismatch": ("pressure", "Pa"),
}

# The sets of docs/units.md, for the quantities above.
_SETS: Dict[str, Dict[str, str]] = {
    "si": {},
    "metric": {"pressure": "bar", "volume_flow": "l/min", "temperature": "degC"},
    "us": {
        "pressure": "psi",
        "head": "ft",
        "mass_flow": "lb/s",
        "volume_flow": "US gal/min",
        "velocity": "ft/s",
        "temperature": "degF",
    },
}


def quantity(text: str, kind: str) -> float:
    """A text with a unit as a number in SI units: quantity("25 mm", "length") is 0.025.

    kind: a quantity of docs/units.md, such as "length", "pressure" or "temperature". Raises BadInput for an
    unknown one, and for a text that is no number with a unit of it.
    """
    number = ctypes.c_double()
    checked(LIBRARY.tvkParseQuantity, encoded(text), encoded(kind), ctypes.byref(number))
    return number.value


@dataclass(frozen=True)
class Fluid:
    """Properties of a liquid: density [kg/m3], dynamic viscosity [Pa s], specific heat [J/(kg K)] and
    conductivity [W/(m K)]."""

    density: float
    viscosity: float
    specific_heat: float
    conductivity: float


def fluid(name: str, temperature: float, concentration: float = float("nan")) -> Fluid:
    """Properties of a known fluid at a temperature [K]. concentration: mass fraction of the solute; NaN for
    the fluid's usual one. Raises BadInput for an unknown fluid and outside its range."""
    values = np.zeros(4)
    checked(LIBRARY.tvkFluid, encoded(name), temperature, concentration, values.ctypes.data)
    return Fluid(*values.tolist())


def fluids() -> List[Dict[str, Any]]:
    """The known fluids, each with name, aliases, range of temperature [K], an example, sources and
    accuracy."""
    import json

    answer: List[Dict[str, Any]] = json.loads(text_of(LIBRARY.tvkFluids, b"json", None))
    return answer


def units_of(text: str) -> Dict[str, str]:
    """The units that a text such as "metric,pressure=kPa" chooses, by quantity. Raises BadInput when it names
    none."""
    checked(LIBRARY.tvkCheckUnits, encoded(text))
    if not text.strip():
        return {}
    units: Dict[str, str] = {}
    for part in text.split(","):
        name, equals, unit = part.partition("=")
        if equals:
            units[name.strip()] = unit.strip()
        else:
            units.update(_SETS[name.strip()])
    return units


def converted(values: Floats, kind: str, unit: str) -> Floats:
    """Numbers in SI units in another unit of their quantity."""
    zero = quantity(f"0 {unit}", kind)
    one = quantity(f"1 {unit}", kind) - zero
    answer: Floats = (values - zero) / one
    return answer
