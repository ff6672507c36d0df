"""The blocks of docs/design.md: each is run in order, and what is shown below it is what it prints."""

import pytest
import test_tutorial

pytest.importorskip("scipy")


def test_every_block_prints_what_is_shown(tmp_path, monkeypatch):
    test_tutorial.test_every_block_of_a_document_prints_what_is_shown("design.md", tmp_path, monkeypatch)
