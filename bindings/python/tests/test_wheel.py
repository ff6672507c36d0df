"""The wheel: built without a network, installed without a network, and complete."""

import os
import pathlib
import subprocess
import sys
import zipfile

import pytest
from conftest import ROOT

import tavell
from tavell import _library

PROGRAM = """
import pathlib, tavell
folder = pathlib.Path(tavell.__file__).parent
from tavell import _library
assert _library._candidates() == [str(folder / "_lib" / _library._file_name())]
network = tavell.Network()
network.add_node("tank", 0, 0, 12, inlet={"pressure": 0})
network.add_node("tap", 40, 0, 3, outlet={"pressure": 0})
network.add_pipe("main", "tank", "tap", "28 mm")
print(network.solve().certificate().is_good)
"""


def libraries():
    kit = pathlib.Path(os.environ["TAVELLKIT_LIBRARY"]).resolve()
    given = os.environ.get("TAVELL_LIBRARY")
    return kit, pathlib.Path(given) if given else kit.parents[1] / "src" / kit.name.replace(
        "tavellkit", "tavell"
    )


@pytest.mark.skipif("TAVELLKIT_LIBRARY" not in os.environ, reason="the package is installed already")
def test_a_wheel_is_built_installed_and_used(tmp_path):
    built = subprocess.run(
        [sys.executable, str(ROOT / "bindings" / "python" / "build_wheel"), "--out", str(tmp_path / "dist"),
         "--build", str(tmp_path / "build"), "--libraries", *map(str, libraries())],
        capture_output=True, text=True, check=False,
    )  # fmt: skip
    assert built.returncode == 0, built.stdout + built.stderr
    (wheel,) = (tmp_path / "dist").iterdir()
    assert wheel.name.startswith(f"tavell-{tavell.__version__}-py3-none-")
    assert not wheel.name.endswith("-any.whl")
    names = zipfile.ZipFile(wheel).namelist()
    assert f"tavell/_lib/{_library._file_name()}" in names
    assert "tavell/py.typed" in names
    assert not [name for name in names if "test" in name or name.endswith(".pyc")]
    shipped = {name for name in names if name.startswith("tavell/") and name.endswith(".py")}
    package = pathlib.Path(tavell.__file__).parent
    assert shipped == {
        str(pathlib.Path("tavell") / path.relative_to(package)) for path in package.rglob("*.py")
    }

    folder = tmp_path / "site"
    installed = subprocess.run(
        [sys.executable, "-m", "pip", "install", "--no-index", "--no-deps", "--target", folder, wheel],
        capture_output=True, text=True, check=False,
    )  # fmt: skip
    assert installed.returncode == 0, installed.stderr
    environment = {key: value for key, value in os.environ.items() if key != "TAVELLKIT_LIBRARY"}
    environment["PYTHONPATH"] = str(folder)
    ended = subprocess.run(
        [sys.executable, "-c", PROGRAM],
        env=environment,
        cwd=tmp_path,
        capture_output=True,
        text=True,
        check=False,
    )
    assert (ended.stdout, ended.stderr) == ("True\n", "")


def test_a_wheel_without_libraries_is_refused(tmp_path):
    source = pathlib.Path(tavell.__file__).parents[1]
    (tmp_path / "tavell").mkdir()
    (tmp_path / "tavell" / "__init__.py").write_text("", encoding="utf-8")
    for name in ("setup.py", "pyproject.toml", "README.md"):
        (tmp_path / name).write_text((source / name).read_text(encoding="utf-8"), encoding="utf-8")
    ended = subprocess.run(
        [sys.executable, "setup.py", "-q", "bdist_wheel"],
        cwd=tmp_path,
        capture_output=True,
        text=True,
        check=False,
    )
    assert ended.returncode == 1
    assert "make its wheel with bindings/python/build_wheel" in ended.stderr
