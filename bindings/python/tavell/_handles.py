"""Handles of the kit: freed once, when nobody holds them any more, and not used in ways that the kit
forbids."""

from __future__ import annotations

import threading
import weakref
from typing import Any, Tuple

from ._findings import Findings, checked, run
from ._library import Function


class Handle:
    """A network or a result of the kit.

    Several threads may read it at once. A change beside a reader or beside another change is refused with
    RuntimeError, since the kit does not guard its objects.
    """

    def __init__(self, address: int, free: Function) -> None:
        self.address = address
        self._lock = threading.Lock()
        self._readers = 0
        self._is_changing = False
        finalizer = weakref.finalize(self, free, address)
        # At the end of the program arrays of this handle may still be in use; its memory goes with the
        # process.
        finalizer.atexit = False

    def run_reading(self, function: Function, *arguments: Any) -> Tuple[int, Findings]:
        """Status and findings of a function that takes this handle first, as const."""
        self.begin_reading()
        try:
            return run(function, self.address, *arguments)
        finally:
            self.end_reading()

    def read(self, function: Function, *arguments: Any) -> Findings:
        """As run_reading(). Raises the exception of a call that failed."""
        self.begin_reading()
        try:
            return checked(function, self.address, *arguments)
        finally:
            self.end_reading()

    def change(self, function: Function, *arguments: Any) -> Findings:
        """Calls a function that takes this handle first and changes it. Raises the exception of a call that
        failed."""
        with self._lock:
            if self._is_changing or self._readers > 0:
                raise RuntimeError("the network is in use by another thread or by a running solve")
            self._is_changing = True
        try:
            return checked(function, self.address, *arguments)
        finally:
            self._is_changing = False

    def begin_reading(self) -> None:
        with self._lock:
            if self._is_changing:
                raise RuntimeError("the network is being changed by another thread")
            self._readers += 1

    def end_reading(self) -> None:
        with self._lock:
            self._readers -= 1
