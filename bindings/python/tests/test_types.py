"""Type hints: complete, and right for the programs that use them."""

import pathlib
import subprocess
import sys
import types

from conftest import ROOT

import tavell

PROGRAM = """
from typing import List

import numpy as np

import tavell

network = tavell.Network()
network.add_node("a", 0, "3 m", inlet={"pressure": "3 bar"})
network.add_nodes(["b", "c"], np.zeros((2, 3)))
network.add_pipe("p", "a", 1, "25 mm", roughness=1e-5, closed=True)
network.add_pump("q", "a", "b", [(0, "4 bar"), (1e-3, 3e5)], fixed_mass_flow=1.0)
network.set_node_values("z", np.zeros(3))
network.set_element_values("diameter", ["25 mm"], ["p"])
text: str = network.to_json()
network.to_json("file.json")
result: tavell.Result = network.solve(on_progress=lambda step: tavell.STOP if step > 3 else None)
pressures = result.node_values("pressure")
highest: float = float(pressures.max())
codes: List[str] = network.doctor().codes
finding: tavell.Finding = network.check()[0]
rest: tavell.Findings = network.check()[1:]
good: bool = result.certificate().is_good
size: tavell.Quantity = "3 mm"
"""

WRONG = """
import tavell

tavell.Network().add_node(3)
tavell.Network().solve(energy="yes")
tavell.Network().solve(True)
answer: int = tavell.Network().to_json()
"""


def mypy(*arguments, folder):
    return subprocess.run(
        [sys.executable, "-m", "mypy", "--strict", *arguments],
        cwd=folder,
        capture_output=True,
        text=True,
        check=False,
    )


def test_the_package_passes_the_strict_check():
    folder = ROOT / "bindings" / "python"
    modules = sorted(str(path) for path in pathlib.Path(tavell.__file__).parent.glob("_*.py"))
    ended = mypy("--config-file", str(folder / "pyproject.toml"), *modules, folder=folder)
    assert ended.returncode == 0, ended.stdout


def test_a_program_passes_and_a_wrong_one_does_not(tmp_path, monkeypatch):
    monkeypatch.setenv("MYPYPATH", str(pathlib.Path(tavell.__file__).parents[1]))
    settings = tmp_path / "mypy.ini"
    settings.write_text(
        "[mypy]\n[mypy-pandas.*]\nignore_missing_imports = True\n"
        "[mypy-networkx.*]\nignore_missing_imports = True\n",
        encoding="utf-8",
    )
    (tmp_path / "program.py").write_text(PROGRAM, encoding="utf-8")
    ended = mypy("--config-file", str(settings), "program.py", folder=tmp_path)
    assert ended.returncode == 0, ended.stdout
    (tmp_path / "wrong.py").write_text(WRONG, encoding="utf-8")
    ended = mypy("--config-file", str(settings), "wrong.py", folder=tmp_path)
    lines = {line.split(":")[1] for line in ended.stdout.splitlines() if line.startswith("wrong.py:")}
    assert lines == {"4", "5", "6", "7"}, ended.stdout


def test_the_package_says_that_it_has_types():
    assert (pathlib.Path(tavell.__file__).parent / "py.typed").exists()


def test_everything_that_is_exported_has_a_description():
    for name in tavell.__all__:
        thing = getattr(tavell, name)
        if isinstance(thing, type) or isinstance(thing, types.FunctionType):
            assert thing.__doc__, name
    for kind in (tavell.Network, tavell.Result):
        for name, member in vars(kind).items():
            if not name.startswith("_") and callable(member):
                assert member.__doc__, f"{kind.__name__}.{name}"
