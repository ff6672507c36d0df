"""The shared library: every function is declared, others are refused, the place to look is what it should
be."""

import ctypes
import os
import pathlib
import re
import subprocess
import sys

import pytest
from conftest import ROOT

import tavell
from tavell import _library

# Declared where they are used.
OF_STUDIES = {"tvkSolveMany"}

HEADER = ROOT / "kit" / "include" / "tavellkit.h"


def declarations():
    """The functions of the header: name and number of arguments."""
    text = re.sub(r"/\*.*?\*/", "", HEADER.read_text(encoding="utf-8"), flags=re.S)
    found = re.findall(r"TVK_API\s[^;(]*?\b(tvk\w+)\(([^;]*)\);", text)
    return {name: 0 if arguments.strip() == "void" else arguments.count(",") + 1 for name, arguments in found}


def run_python(code, **environment):
    package = pathlib.Path(tavell.__file__).resolve().parents[1]
    changed = {**os.environ, "PYTHONPATH": str(package), **environment}
    return subprocess.run(
        [sys.executable, "-c", code], env=changed, capture_output=True, text=True, check=False
    )


def test_every_function_of_the_header_is_declared_with_all_its_arguments():
    declared = {name: len(arguments) for name, (_, arguments) in _library.PROTOTYPES.items()}
    assert len(declared) > 80
    of_the_header = declarations()
    assert declared == {name: count for name, count in of_the_header.items() if name not in OF_STUDIES}


def test_every_function_has_its_types():
    for name, (result, arguments) in _library.PROTOTYPES.items():
        function = getattr(_library.LIBRARY, name)
        assert function.restype == result
        assert list(function.argtypes) == arguments


def test_calls_release_the_interpreter_lock():
    assert type(_library.LIBRARY) is ctypes.CDLL
    assert not issubclass(ctypes.CDLL, ctypes.PyDLL)


def test_package_and_library_have_one_version():
    assert tavell.version() == tavell.__version__ == _library.VERSION
    assert f'version = "{tavell.__version__}"' in (ROOT / "bindings/python/pyproject.toml").read_text("utf-8")


def test_a_library_of_another_version_is_refused(monkeypatch):
    monkeypatch.setattr(_library, "VERSION", "0.2.0")
    with pytest.raises(ImportError, match="version 0.1.0, the package needs 0.2.0"):
        _library.declare(_library.LIBRARY, "libtavellkit.so.0")


def test_a_library_of_something_else_is_refused():
    with pytest.raises(ImportError, match="is not libtavellkit"):
        _library.declare(ctypes.CDLL(None), "libc")


def test_a_library_that_lacks_functions_is_refused(monkeypatch):
    monkeypatch.setitem(_library.PROTOTYPES, "tvkNewerFunction", (None, []))
    with pytest.raises(ImportError, match="lacks tvkNewerFunction"):
        _library.declare(_library.LIBRARY, "libtavellkit.so.0")


def test_the_environment_names_the_library_and_no_other_is_tried():
    ended = run_python("import tavell", TAVELLKIT_LIBRARY="no-such-library.so")
    assert ended.returncode == 1
    assert "ImportError: the library no-such-library.so cannot be loaded" in ended.stderr


def test_without_the_environment_it_is_beside_the_package(monkeypatch, tmp_path):
    monkeypatch.delenv("TAVELLKIT_LIBRARY", raising=False)
    monkeypatch.setattr(_library, "__file__", str(tmp_path / "_library.py"))
    monkeypatch.setattr(ctypes.util, "find_library", lambda name: f"of the system: {name}")
    assert _library._candidates() == ["of the system: tavellkit"]
    beside = tmp_path / "_lib" / _library._file_name()
    beside.parent.mkdir()
    beside.touch()
    assert _library._candidates() == [str(beside)]


def test_no_library_at_all_is_said_with_what_to_do(monkeypatch):
    monkeypatch.setattr(_library, "_candidates", lambda: [])
    with pytest.raises(ImportError, match="name the library in TAVELLKIT_LIBRARY"):
        _library._load()


def test_what_solves_studies_does_not_wait_for_pandas():
    code = "import sys, tavell.sweep, tavell.studies._worker; print('pandas' in sys.modules)"
    assert run_python(code).stdout == "False\n"
