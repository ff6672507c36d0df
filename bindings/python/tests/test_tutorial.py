"""The blocks of the documents: each is run in order, and what is shown below it is what it prints."""

import contextlib
import io
import re

import pytest
from conftest import ROOT

BLOCKS = re.compile(r"^```(\w*)\n(.*?)^```$", re.M | re.S)


def blocks(name):
    """The blocks of a document as pairs of code and the text that is shown below it, None for nothing."""
    found = BLOCKS.findall((ROOT / "docs" / name).read_text(encoding="utf-8"))
    pairs = []
    for kind, text in found:
        if kind == "python":
            pairs.append([text, None])
        elif kind == "text" and pairs:
            assert pairs[-1][1] is None, "two texts below one block"
            pairs[-1][1] = text
    return pairs


def without_trailing_blanks(text):
    return "\n".join(line.rstrip() for line in text.rstrip("\n").split("\n"))


@pytest.mark.parametrize("name", ["tutorial-python.md", "python.md"])
def test_every_block_of_a_document_prints_what_is_shown(name, tmp_path, monkeypatch):
    monkeypatch.chdir(tmp_path)
    (tmp_path / "examples").symlink_to(ROOT / "examples")
    names = {"__name__": "__main__"}
    pairs = blocks(name)
    assert len(pairs) > 5
    for code, shown in pairs:
        printed = io.StringIO()
        with contextlib.redirect_stdout(printed):
            exec(compile(code, name, "exec"), names)
        if shown is not None:
            assert without_trailing_blanks(printed.getvalue()) == without_trailing_blanks(shown), code
        else:
            assert printed.getvalue() == "", code
