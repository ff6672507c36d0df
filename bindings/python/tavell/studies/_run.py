"""Running a study in a process of its own under supervision, and looking at how far it is."""

from __future__ import annotations

import json
import os
import signal
import subprocess
import sys
import time
from dataclasses import dataclass
from typing import IO, Any, Callable, Dict, List, Optional, Sequence, Tuple, Union

import numpy as np

from ._batch import CRASHED, Rows
from ._plan import Plan, StudyError
from ._store import Range, Store, gaps, shard_range

_BLOCK_SECONDS = 5.0  # of work between two files
_FIRST_BLOCK = 16  # rows, whose time says how large a block is to be
_MOST_NUMBERS = 8_000_000  # of the table of values of a block
_MOST_TRIES = 3  # of a row that ends its process

WORKER = (sys.executable, "-m", "tavell.studies._worker")


@dataclass
class Progress:
    """How far a run is. rows: of the run; done: those that are finished, with those that were when it began;
    failed: of those that this run solved; rate: rows a second of this run."""

    rows: int
    done: int
    failed: int
    rate: float

    @property
    def seconds_left(self) -> float:
        return (self.rows - self.done) / self.rate if self.rate > 0.0 else float("inf")


OnReport = Callable[[Progress], Any]


@dataclass
class Outcome:
    """What a run did: rows that it solved, and how many of them are not ok."""

    solved: int
    failed: int


def crashed_row(plan: Plan, why: str) -> Rows:
    """The row of a scenario that ends the process which solves it."""
    finding = {
        "code": "process-crashed",
        "severity": "error",
        "message": f"the process that solved the scenario ended {_MOST_TRIES} times: {why}",
        "remedy": "solve this scenario by itself, and report it as a defect",
    }
    results = np.full((1, len(plan.outputs)), np.nan)
    return Rows(results, np.array([CRASHED], np.int32), np.zeros(1, np.int32), {0: json.dumps([finding])})


class _Crash(Exception):
    """The worker's process ended."""


class _Worker:
    """A process that solves ranges of rows."""

    def __init__(self, command: Sequence[str], task: Dict[str, Any], lock: IO[bytes]) -> None:
        options: Dict[str, Any] = {}
        if sys.platform != "win32":
            # The lock lasts as long as either process. Ctrl-C is for the one that supervises.
            options = {"pass_fds": (lock.fileno(),), "start_new_session": True}
        self._process = subprocess.Popen(
            list(command), stdin=subprocess.PIPE, stdout=subprocess.PIPE, encoding="utf-8", **options
        )
        try:
            self._send(task)
            self._answer()
        except BaseException:
            self.close()
            raise

    def _send(self, line: Any) -> None:
        assert self._process.stdin is not None
        try:
            self._process.stdin.write(json.dumps(line) + "\n")
            self._process.stdin.flush()
        except OSError as error:
            raise _Crash(self._end()) from error

    def _answer(self) -> Dict[str, Any]:
        assert self._process.stdout is not None
        try:
            answer: Dict[str, Any] = json.loads(self._process.stdout.readline())
        except ValueError as error:
            raise _Crash(self._end()) from error
        if "error" in answer:
            raise StudyError(answer["error"])
        return answer

    def solve(self, wanted: Range, on_progress: Callable[[int], Any]) -> Dict[str, Any]:
        """The answer to a range that is finished. Raises _Crash when the process ends before."""
        self._send(wanted)
        while True:
            answer = self._answer()
            if "finished" in answer:
                return answer
            on_progress(answer["done"])

    def _end(self) -> str:
        """Why the process ended."""
        status = self._process.wait()
        if status >= 0:
            return f"exit status {status}"
        try:
            return f"signal {signal.Signals(-status).name}"
        except ValueError:
            return f"signal {-status}"

    def close(self) -> None:
        self._process.kill()
        for stream in (self._process.stdin, self._process.stdout):
            try:
                if stream is not None:
                    stream.close()
            except OSError:  # what was to be sent has no receiver
                pass
        self._process.wait()


class _Run:
    """One range of rows, in blocks; a block whose process ends is halved until the row is found that ends it."""

    def __init__(self, store: Store, wanted: Range, on_report: Optional[OnReport]) -> None:
        self._store = store
        self._queue: List[Range] = list(reversed(gaps(wanted, store.finished())))
        self._on_report = on_report
        self._rows = wanted[1] - wanted[0]
        self._done = self._rows - sum(end - start for start, end in self._queue)
        self._began = time.monotonic()
        self._seconds_per_row: Optional[float] = None
        self._tries: Dict[int, int] = {}
        self.outcome = Outcome(0, 0)

    def _size(self, start: int) -> int:
        """Rows of the next block."""
        if self._seconds_per_row is None:
            return _FIRST_BLOCK
        inputs, _ = self._store.plan.inputs(start, start + 1)
        most = max(1, _MOST_NUMBERS // max(1, len(inputs)))
        return max(1, min(most, int(_BLOCK_SECONDS / max(self._seconds_per_row, 1e-9))))

    def next(self) -> Optional[Range]:
        if not self._queue:
            return None
        size = self._size(self._queue[-1][0])
        start, end = self._queue.pop()
        cut = min(end, start + size)
        if cut < end:
            self._queue.append((cut, end))
        return start, cut

    def report(self, under_way: int = 0) -> None:
        if self._on_report is None:
            return
        seconds = max(time.monotonic() - self._began, 1e-9)
        rate = (self.outcome.solved + under_way) / seconds
        self._on_report(Progress(self._rows, self._done + under_way, self.outcome.failed, rate))

    def finished(self, rows: Range, seconds: float, failed: int) -> None:
        count = rows[1] - rows[0]
        self._done += count
        self.outcome.solved += count
        self.outcome.failed += failed
        if seconds > 0.0:
            self._seconds_per_row = seconds / count
        self.report()

    def put_back(self, rows: Range) -> None:
        self._queue.append(rows)

    def crashed(self, rows: Range, why: str) -> None:
        start, end = rows
        if end - start > 1:
            middle = (start + end) // 2
            self._queue += [(middle, end), (start, middle)]
            return
        self._tries[start] = self._tries.get(start, 0) + 1
        if self._tries[start] < _MOST_TRIES:
            self._queue.append(rows)
            return
        self._store.write(start, end, crashed_row(self._store.plan, why), 0.0)
        self.finished(rows, 0.0, 1)


def parsed_shard(text: str) -> Tuple[int, int]:
    """ "2/8" as (2, 8). Raises StudyError."""
    number, slash, shards = text.partition("/")
    if slash and number.isdigit() and shards.isdigit() and 1 <= int(number) <= int(shards):
        return int(number), int(shards)
    raise StudyError(f"the shard {text!r} is none; give such as 2/8, the second of eight")


def run_shard(
    plan: Plan,
    out: Union[str, "os.PathLike[str]"],
    shard: Tuple[int, int] = (1, 1),
    *,
    threads: Optional[int] = None,
    time_limit: Optional[float] = None,
    on_report: Optional[OnReport] = None,
    worker: Sequence[str] = WORKER,
) -> Outcome:
    """Solves the rows of a shard that are not finished yet, in a process of its own.

    threads: as many as there are processors when absent. time_limit: [s] for each scenario. on_report: called
    with a Progress from time to time. Raises StudyError.
    """
    store = Store(out, plan)
    store.open()
    wanted = shard_range(plan.count, *shard)
    with store.lock(wanted) as lock:
        run = _Run(store, wanted, on_report)
        supervise(run, store, lock, threads=threads, time_limit=time_limit, worker=worker)
    return run.outcome


def supervise(
    run: _Run,
    store: Store,
    lock: IO[bytes],
    *,
    threads: Optional[int],
    time_limit: Optional[float],
    worker: Sequence[str] = WORKER,
) -> None:
    """Has the rows of a run solved by a process of its own, and by the next one when that ends."""
    task = {
        "plan": store.plan.payload(),
        "folder": str(store.folder),
        "threads": threads,
        "time_limit": time_limit,
    }
    process: Optional[_Worker] = None
    starts = 0
    try:
        rows = run.next()
        while rows is not None:
            try:
                if process is None:
                    starts += 1
                    process = _Worker(worker, task, lock)
                    starts = 0
                answer = process.solve(rows, run.report)
                run.finished(rows, answer["seconds"], answer["failed"])
            except _Crash as crash:
                if process is not None:
                    process.close()
                    process = None
                    run.crashed(rows, str(crash))
                elif starts < _MOST_TRIES:
                    run.put_back(rows)
                else:
                    raise StudyError(f"the process that is to solve does not start: {crash}") from crash
            rows = run.next()
    finally:
        if process is not None:
            process.close()


@dataclass
class Status:
    """How far a study is. rate: rows a second while it was worked on, by the journal."""

    rows: int
    done: int
    failed: int
    blocks: int
    rate: float
    missing: List[Range]


def status(plan: Plan, out: Union[str, "os.PathLike[str]"]) -> Status:
    """How far the study in a folder is. Raises StudyError when it is none of this plan."""
    store = Store(out, plan)
    store.check()
    finished = store.finished()
    missing = gaps((0, plan.count), finished)
    done = plan.count - sum(end - start for start, end in missing)
    journal = store.journal()
    seconds = sum(entry["seconds"] for entry in journal)
    rows = sum(entry["rows"][1] - entry["rows"][0] for entry in journal)
    failed = sum(entry["failed"] for entry in journal)
    return Status(plan.count, done, failed, len(finished), rows / seconds if seconds > 0.0 else 0.0, missing)
