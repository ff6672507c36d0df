"""Running a study on the workers of dask.distributed.

A worker that dies loses what it was at; the scheduler gives that to another one. Rows come back to this process,
which alone writes the folder, so that workers need no shared disk. What is written is never asked for again.
"""

from __future__ import annotations

import os
import time
from typing import IO, Any, Dict, Optional, Tuple, Union

from ._batch import Rows
from ._plan import Plan, StudyError
from ._run import OnReport, Outcome, _Run, supervise
from ._store import Range, Store
from ._worker import solve_range

_BATCH_SECONDS = 0.4  # of work of one task
_LEAST_SECONDS = 0.05  # of the last tasks
_FIRST_BATCH = 8  # rows, whose time says how large a task is to be
_WAITING = 2  # tasks for each worker, at work and waiting
_LOOK_INTERVAL = 0.2  # [s], between looks at the connection

_plans: Dict[str, Plan] = {}  # of this process, by hash


def _solve(payload: Dict[str, Any], rows: Range, time_limit: Optional[float]) -> Tuple[Rows, float]:
    """The task of a worker: rows and the seconds that they took."""
    plan = _plans.get(payload["hash"])
    if plan is None:
        _plans.clear()
        plan = _plans[payload["hash"]] = Plan.from_payload(payload)
    began = time.monotonic()
    solved = solve_range(plan, rows[0], rows[1], threads=1, time_limit=time_limit)
    return solved, time.monotonic() - began


def _same(payload: Dict[str, Any]) -> Dict[str, Any]:
    return payload


class _DaskRun(_Run):
    """Blocks of the size of tasks. Toward the end they become smaller, so that no worker waits long for the
    last one of another."""

    workers = 1

    def _size(self, start: int) -> int:
        if self._seconds_per_row is None:
            return _FIRST_BATCH
        seconds = max(self._seconds_per_row, 1e-9)
        left = sum(end - begin for begin, end in self._queue)
        share = max(left // (_WAITING * self.workers), int(_LEAST_SECONDS / seconds))
        return max(1, min(super()._size(start), int(_BATCH_SECONDS / seconds), share))


class _Driver:
    def __init__(
        self, store: Store, lock: IO[bytes], client: Any, time_limit: Optional[float], run: _DaskRun
    ) -> None:
        self._store = store
        self._lock = lock
        self._client = client
        self._time_limit = time_limit
        self._run = run
        # As a task, not as data: what dies with a worker is made again.
        self._payload = client.submit(_same, store.plan.payload(), pure=False)
        self._tasks: Dict[Any, Range] = {}

    def drive(self) -> None:
        import distributed

        wait: Any = distributed.wait

        self._fill()
        while self._tasks:
            try:
                done, _ = wait(list(self._tasks), timeout=_LOOK_INTERVAL, return_when="FIRST_COMPLETED")
            except TimeoutError:
                done = set()
            except Exception as error:
                raise self._lost(error) from error
            self._check_connection()
            for task in done:
                self._take(task)
            self._fill()

    def cancel(self) -> None:
        try:
            self._client.cancel(list(self._tasks))
        except Exception:  # the scheduler is gone, and its tasks with it
            self._tasks.clear()

    def _lost(self, why: object) -> StudyError:
        return StudyError(
            f"the connection to the scheduler of dask is lost ({type(why).__name__}); what is finished is kept, "
            "run again with a new one"
        )

    def _check_connection(self) -> None:
        if self._client.status != "running":
            raise self._lost(ConnectionError())

    def _fill(self) -> None:
        """Gives the workers enough to do."""
        self._run.workers = max(1, len(self._client.scheduler_info()["workers"]))
        while len(self._tasks) < _WAITING * self._run.workers:
            rows = self._run.next()
            if rows is None:
                return
            try:
                task = self._client.submit(_solve, self._payload, rows, self._time_limit, pure=False)
            except Exception as error:
                raise self._lost(error) from error
            self._tasks[task] = rows

    def _take(self, task: Any) -> None:
        from distributed.scheduler import KilledWorker

        rows = self._tasks.pop(task)
        if task.status == "cancelled" or task.status == "lost":
            raise self._lost(ConnectionError())
        try:
            solved, seconds = task.result(timeout=60)
        except KilledWorker:
            self._solve_here(rows)
            return
        except StudyError:
            raise
        except Exception as error:
            self._check_connection()
            raise StudyError(f"a worker of dask failed: {type(error).__name__}: {error}") from error
        self._store.write(rows[0], rows[1], solved, seconds)
        self._run.finished(rows, seconds, int((solved.outcomes != 0).sum()))

    def _solve_here(self, rows: Range) -> None:
        """Several workers died that had these rows to solve, of them or for other reasons: a process of this
        machine solves them and finds the row that ends it, if there is one."""
        own = _Run(self._store, rows, None)
        supervise(own, self._store, self._lock, threads=1, time_limit=self._time_limit)
        self._run.finished(rows, 0.0, own.outcome.failed)


def run_on_dask(
    plan: Plan,
    out: Union[str, "os.PathLike[str]"],
    client: Any,
    *,
    time_limit: Optional[float] = None,
    on_report: Optional[OnReport] = None,
) -> Outcome:
    """As studies.run() with a client."""
    store = Store(out, plan)
    store.open()
    wanted = (0, plan.count)
    with store.lock(wanted) as lock:
        run = _DaskRun(store, wanted, on_report)
        driver = _Driver(store, lock, client, time_limit, run)
        try:
            driver.drive()
        except BaseException:
            driver.cancel()
            raise
    return run.outcome
