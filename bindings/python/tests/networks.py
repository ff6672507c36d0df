"""Networks built in code, for the tests."""

from __future__ import annotations

import tavell


def two_pipes() -> tavell.Network:
    """A tank 10 m above a tee with a demand and a tap."""
    network = tavell.Network()
    network.add_node("tank", 0, 0, 10, inlet={"pressure": 0})
    network.add_node("tee", 30, outlet={"volume_flow": "12 l/min"})
    network.add_node("tap", "60 m", 0, 3, outlet={"pressure": 0})
    network.add_pipe("main", "tank", "tee", "28 mm", roughness="1.5 um")
    network.add_pipe("branch", "tee", "tap", 0.02, k=1.5)
    return network


def unsolvable() -> tavell.Network:
    """A network whose solve ends without a solution after some hundred steps: its only way out is a
    non-return valve that is built in the wrong way round."""
    network = tavell.Network()
    network.add_node("main", inlet={"pressure": 3e5})
    network.add_node("joint", 10)
    network.add_node("user", 20, outlet={"mass_flow": 0.5})
    network.add_element("valve", "non_return", "joint", "main", diameter=0.02)
    network.add_pipe("pipe", "joint", "user", 0.02)
    return network
