"""Steady flow of a liquid through networks of pipes, pumps, valves and other hydraulic components.

    import tavell

    network = tavell.Network.from_json("house.tavell.json")
    result = network.solve()
    print(result.nodes)                   # a DataFrame by name, in SI units
    print(result.certificate())

Everything is in SI units: m, m2, m3/s, kg/s, Pa, m/s, K. docs/python.md has the whole of it.
"""

from ._arrays import Quantity
from ._findings import (
    BadInput,
    Cancelled,
    Error,
    Finding,
    Findings,
    InternalError,
    NotConverged,
    Number,
)
from ._library import version
from ._network import FailingPart, Network, check_file
from ._progress import STOP
from ._result import Certificate, Result
from ._units import Fluid, fluid, fluids, quantity

__version__ = "0.1.0"

__all__ = [
    "STOP",
    "BadInput",
    "Cancelled",
    "Certificate",
    "Error",
    "FailingPart",
    "Finding",
    "Findings",
    "Fluid",
    "InternalError",
    "Network",
    "NotConverged",
    "Number",
    "Quantity",
    "Result",
    "check_file",
    "fluid",
    "fluids",
    "quantity",
    "version",
]
