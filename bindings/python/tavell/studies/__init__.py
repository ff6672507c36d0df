"""Studies of thousands of solves: Monte Carlo, failures, sizing, sensitivity, calibration.

    from tavell import studies

    plan = studies.Plan.read("demand.study.json")
    studies.run(plan, "demand.study")           # solves what is not finished yet
    frame = studies.table(plan, "demand.study")

The command is python -m tavell.sweep, or tavell sweep; docs/studies.md has the whole of it.
"""

from __future__ import annotations

import os
from typing import Any, Optional, Union

from ._batch import ELEMENT, NETWORK, NODE, OUTCOMES, Input, Output, Rows, solve_many
from ._collect import table, write_findings, write_table
from ._plan import Column, Limit, Plan, StudyError
from ._run import OnReport, Outcome, Progress, Status, run_shard, status
from ._store import finished


def run(
    plan: Plan,
    out: Union[str, "os.PathLike[str]"],
    *,
    client: Optional[Any] = None,
    threads: Optional[int] = None,
    time_limit: Optional[float] = None,
    on_report: Optional[OnReport] = None,
) -> Outcome:
    """Solves all rows of a study that are not finished yet and keeps them in the folder out.

    client: a dask.distributed.Client whose workers solve; a process of this machine when absent. threads: of
    that process, as many as there are processors when absent. time_limit: [s] for each scenario. on_report:
    called with a Progress from time to time. Raises StudyError.
    """
    if client is None:
        return run_shard(plan, out, threads=threads, time_limit=time_limit, on_report=on_report)
    from ._dask import run_on_dask

    return run_on_dask(plan, out, client, time_limit=time_limit, on_report=on_report)


__all__ = [
    "ELEMENT",
    "NETWORK",
    "NODE",
    "OUTCOMES",
    "Column",
    "Input",
    "Limit",
    "Outcome",
    "Output",
    "Plan",
    "Progress",
    "Rows",
    "Status",
    "StudyError",
    "finished",
    "run",
    "run_shard",
    "solve_many",
    "status",
    "table",
    "write_findings",
    "write_table",
]
