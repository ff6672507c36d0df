"""What the tests share: settings of hypothesis and the example that most of them use."""

from __future__ import annotations

import pathlib
from typing import Iterator

import pytest
from hypothesis import settings

import tavell

# One run is like the other, and a slow machine is no failure.
settings.register_profile("tavell", deadline=None, derandomize=True, max_examples=60, database=None)
settings.load_profile("tavell")

ROOT = pathlib.Path(__file__).resolve().parents[3]
EXAMPLES = ROOT / "examples" / "networks"


@pytest.fixture
def example() -> pathlib.Path:
    """Three reservoirs that share a junction: pressures, three pipes, a published answer."""
    return EXAMPLES / "three_reservoirs.json"


@pytest.fixture
def reservoirs(example: pathlib.Path) -> tavell.Network:
    return tavell.Network.from_json(example)


@pytest.fixture
def result(reservoirs: tavell.Network) -> Iterator[tavell.Result]:
    with reservoirs.solve() as solved:
        yield solved
