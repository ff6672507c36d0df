"""The process that solves the scenarios of a run: python -m tavell.studies._worker.

Its first line of input is a JSON object with the plan, the folder, threads and time limit; each further line is
a range of rows, which it solves and writes. It answers each with lines of JSON: the number of rows that are
done as it goes on, and at last its seconds and failures, or an error that ends it. The process that started
it is told nothing when it crashes: its output ends.
"""

from __future__ import annotations

import json
import os
import sys
import time
from typing import Any, Callable, Dict, Optional, TextIO

from .._progress import STOP
from ._batch import Rows, solve_many
from ._plan import Plan, StudyError
from ._store import Store

_PROGRESS_INTERVAL = 0.5  # [s]

Solve = Callable[..., Rows]


def solve_range(
    plan: Plan,
    start: int,
    end: int,
    *,
    threads: Optional[int] = None,
    time_limit: Optional[float] = None,
    on_progress: Optional[Callable[[int], Any]] = None,
) -> Rows:
    """Solves the scenarios start to before end of a plan."""
    inputs, values = plan.inputs(start, end)
    return solve_many(
        plan.network,
        inputs,
        values,
        plan.outputs,
        threads=threads,
        time_limit=time_limit,
        scenario=plan.scenario,
        energy=plan.energy,
        on_progress=on_progress,
    )


class _Reporter:
    """Tells how far a range is, and notices that nobody listens any more."""

    def __init__(self, answers: TextIO, parent: int) -> None:
        self._answers = answers
        self._parent = parent
        self._next = time.monotonic() + _PROGRESS_INTERVAL

    def __call__(self, done: int) -> Any:
        if os.getppid() != self._parent:
            return STOP
        if time.monotonic() >= self._next:
            self._next = time.monotonic() + _PROGRESS_INTERVAL
            _answer(self._answers, {"done": done})
        return None


def _answer(answers: TextIO, line: Dict[str, Any]) -> None:
    answers.write(json.dumps(line) + "\n")
    answers.flush()


def main(solve: Solve = solve_range) -> int:
    # What the library or a test prints goes to the error output; the answers stay whole.
    answers = os.fdopen(os.dup(1), "w", encoding="utf-8")
    os.dup2(2, 1)
    parent = os.getppid()
    task = json.loads(sys.stdin.readline())
    try:
        plan = Plan.from_payload(task["plan"])
        store = Store(task["folder"], plan)
        _answer(answers, {"ready": True})
        for line in sys.stdin:
            start, end = json.loads(line)
            began = time.monotonic()
            rows = solve(
                plan,
                start,
                end,
                threads=task["threads"],
                time_limit=task["time_limit"],
                on_progress=_Reporter(answers, parent),
            )
            if not rows.is_whole:
                return 1
            seconds = time.monotonic() - began
            store.write(start, end, rows, seconds)
            failed = int((rows.outcomes != 0).sum())
            _answer(answers, {"finished": [start, end], "seconds": seconds, "failed": failed})
    except StudyError as error:
        _answer(answers, {"error": str(error)})
        return 2
    return 0


if __name__ == "__main__":
    sys.exit(main())
