"""Calls of the kit that take long: progress functions, exceptions in them and Ctrl-C.

While such a call runs, its thread is in the library, and the only Python code it runs is the progress
function, once a step. An exception cannot pass through the library. It is kept, the step asks the library to
stop, and the exception goes on when the call has returned.

Python runs the handlers of signals between any two instructions of the main thread, so that the
KeyboardInterrupt of a Ctrl-C could arise in the frame around the progress function, where nobody can catch
it. Handlers are therefore exchanged for ones that take a note; the step calls the real ones where it can
catch what they raise.
"""

from __future__ import annotations

import atexit
import enum
import signal
import threading
from types import FrameType, TracebackType
from typing import Any, Callable, List, Optional, Set, Tuple, Type, TypeVar

from ._library import Progress

Answer = TypeVar("Answer")


class Stop(enum.Enum):
    """What a progress function returns to stop; see STOP."""

    STOP = "stop"


STOP = Stop.STOP

# Called with the number of the step, from 1. STOP as the result asks to stop; any other result goes on.
OnProgress = Callable[[int], Any]

# Signals whose handlers may raise. SIGINT is the first to be exchanged and the last to be put back.
_SIGNALS: Tuple[signal.Signals, ...] = tuple(
    getattr(signal, name)
    for name in ("SIGINT", "SIGTERM", "SIGALRM", "SIGHUP", "SIGUSR1", "SIGUSR2", "SIGBREAK")
    if hasattr(signal, name)
)


class _DeferredSignals:
    """Keeps the signals that arrive within its block until deliver() is called; in the main thread only."""

    def __init__(self) -> None:
        self._handlers: List[Tuple[signal.Signals, Callable[[int, Optional[FrameType]], Any]]] = []
        self._arrived: List[Tuple[int, Optional[FrameType]]] = []

    def __enter__(self) -> _DeferredSignals:
        if threading.current_thread() is not threading.main_thread():
            return self
        try:
            for number in _SIGNALS:
                handler = signal.getsignal(number)
                if callable(handler) and not isinstance(handler, signal.Handlers):
                    self._handlers.append((number, handler))
                    signal.signal(number, self._note)
        except ValueError:  # the main thread of a subinterpreter: it gets no signals
            self._handlers.clear()
        except BaseException:
            self._restore()
            raise
        return self

    def __exit__(
        self,
        kind: Optional[Type[BaseException]],
        error: Optional[BaseException],
        traceback: Optional[TracebackType],
    ) -> None:
        handlers = list(self._handlers)
        self._restore()
        self.deliver(handlers)

    def _note(self, number: int, frame: Optional[FrameType]) -> None:
        self._arrived.append((number, frame))

    def _restore(self) -> None:
        if not self._handlers:
            return
        number, handler = self._handlers.pop()
        try:
            signal.signal(number, handler)
        finally:
            self._restore()

    def deliver(
        self,
        handlers: Optional[List[Tuple[signal.Signals, Callable[[int, Optional[FrameType]], Any]]]] = None,
    ) -> None:
        """Calls the handlers of the signals that arrived. Raises what they raise."""
        while self._arrived:
            number, frame = self._arrived.pop(0)
            for known, handler in self._handlers if handlers is None else handlers:
                if known == number:
                    handler(number, frame)


class _Steps:
    """The progress function of one call."""

    def __init__(self, on_progress: Optional[OnProgress], signals: _DeferredSignals) -> None:
        self._on_progress = on_progress
        self._signals = signals
        self._is_stopped = False
        self.error: Optional[BaseException] = None

    def stop(self) -> None:
        """Makes the next step the last one."""
        self._is_stopped = True

    def step(self, user: Optional[int], number: int) -> int:
        if self._is_stopped:
            return 1
        try:
            self._signals.deliver()
            if self._on_progress is not None:
                if self._on_progress(number) is STOP:
                    self._is_stopped = True
                self._signals.deliver()
        except BaseException as error:  # it goes on when the library has returned
            self.error = error
            self._is_stopped = True
        return 1 if self._is_stopped else 0


class _Calls:
    """The calls of other threads than the main one. They are stopped before the interpreter ends: a thread
    that comes back to a dead interpreter is ended within the library, which cannot be left that way."""

    def __init__(self) -> None:
        self._changed = threading.Condition()
        self._running: Set[_Steps] = set()
        self._is_ending = False

    def begin(self, steps: _Steps) -> bool:
        """False when the program ends, and the library should not call back any more."""
        with self._changed:
            if not self._is_ending:
                self._running.add(steps)
            return not self._is_ending

    def end(self, steps: _Steps) -> None:
        with self._changed:
            self._running.discard(steps)
            self._changed.notify_all()

    def end_all(self) -> None:
        with self._changed:
            self._is_ending = True
            for steps in self._running:
                steps.stop()
            self._changed.wait_for(lambda: not self._running, timeout=_LONGEST_WAIT)


# For a step of a call that is to stop [s].
_LONGEST_WAIT = 30.0

_calls = _Calls()
atexit.register(_calls.end_all)


def watched(call: Callable[[Any], Answer], on_progress: Optional[OnProgress]) -> Answer:
    """The answer of call(progress), progress being a function for the kit. Raises what the progress function
    or the handler of a signal raised, when the call has returned."""
    signals = _DeferredSignals()
    if threading.current_thread() is threading.main_thread():
        with signals:
            return _answer(call, _Steps(on_progress, signals))
    steps = _Steps(on_progress, signals)
    if on_progress is None or not _calls.begin(steps):
        return call(Progress(0))
    try:
        return _answer(call, steps)
    finally:
        _calls.end(steps)


def _answer(call: Callable[[Any], Answer], steps: _Steps) -> Answer:
    answer = call(Progress(steps.step))
    if steps.error is not None:
        try:
            raise steps.error
        finally:
            steps.error = None
    return answer
