"""Design: which pump, valve, pipe or roughness gives what is wanted, and what happens when something fails.

    from tavell import design

    found = design.goal_seek(
        network, design.pump_speed("booster"), design.node_result("tap", "pressure"), "2 bar"
    )
    print(found.value, found.result.nodes)

No function changes the network that it is given; what it has found is in a network of its own. Everything is
in SI units, and texts with units will do. docs/design.md has the whole of it.
"""

from ._affinity import pump_affinity, with_pump_affinity
from ._balance import Balanced, balance_valves
from ._calibrate import Calibration, Measurement, calibrate_roughness
from ._failures import n_minus_1
from ._limits import Limits
from ._places import (
    Change,
    Reading,
    element_result,
    element_value,
    node_result,
    node_value,
    pump_speed,
)
from ._seek import GoalSeek, goal_seek
from ._sensitivity import sensitivities
from ._sizes import CATALOGUES, PipeSizes, Size, size_pipes

__all__ = [
    "CATALOGUES",
    "Balanced",
    "Calibration",
    "Change",
    "GoalSeek",
    "Limits",
    "Measurement",
    "PipeSizes",
    "Reading",
    "Size",
    "balance_valves",
    "calibrate_roughness",
    "element_result",
    "element_value",
    "goal_seek",
    "n_minus_1",
    "node_result",
    "node_value",
    "pump_affinity",
    "pump_speed",
    "sensitivities",
    "size_pipes",
    "with_pump_affinity",
]
