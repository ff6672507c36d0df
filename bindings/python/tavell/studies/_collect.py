"""The table of a finished study, and its summary."""

from __future__ import annotations

import importlib.util
import json
import math
import os
import pathlib
from typing import TYPE_CHECKING, Any, Callable, Dict, Iterator, List, Optional, Tuple, Union

import numpy as np

from .._arrays import Floats
from ._batch import OUTCOMES, Rows
from ._plan import Column, Plan, StudyError
from ._store import Store, gaps

if TYPE_CHECKING:
    import pandas as pd

_PARQUET = ("pyarrow", "fastparquet")


def _finding_text(rows: Rows, row: int) -> str:
    """The first error of a row, else its first finding: "code: message"."""
    found = rows.findings(row)
    worst = next((each for each in found if each["severity"] == "error"), found[0] if found else None)
    return "" if worst is None else f'{worst["code"]}: {worst["message"]}'


def blocks(store: Store, *, is_partial: bool = False) -> Iterator[Tuple[int, Rows]]:
    """Finished rows in the order of the scenarios, each once, with the number of the first. Raises StudyError
    when some are missing, unless is_partial."""
    plan = store.plan
    finished = store.finished()
    missing = gaps((0, plan.count), finished)
    if missing and not is_partial:
        start, end = missing[0]
        count = sum(last - first for first, last in missing)
        raise StudyError(
            f"{count} of {plan.count} rows are not finished, the first are {start} to {end - 1}; run the study again, "
            "or collect what there is with --partial"
        )
    place = 0
    for start, end in finished:
        if end <= place:
            continue
        rows = store.read(start, end)
        yield max(start, place), _cut(rows, max(0, place - start))
        place = end


def _cut(rows: Rows, first: int) -> Rows:
    if first == 0:
        return rows
    texts = {row - first: text for row, text in rows.texts.items() if row >= first}
    return Rows(rows.results[first:], rows.outcomes[first:], rows.iterations[first:], texts)


def _csv_field(text: str) -> str:
    if any(letter in text for letter in ',"\n\r'):
        return '"' + text.replace('"', '""') + '"'
    return text


class _Table:
    """The columns of the table and their texts."""

    def __init__(self, plan: Plan) -> None:
        self.plan = plan
        self.inputs: List[Column] = plan.drawn(0, 0)[0] if plan.shows_inputs else []
        self.names = plan.header()

    def numbers(self, start: int, rows: Rows) -> Tuple[Floats, Floats]:
        """What varies and the limits of rows."""
        drawn = (
            self.plan.drawn(start, start + len(rows.results))[1]
            if self.inputs
            else np.zeros((len(rows.results), 0))
        )
        return drawn, self.plan.flags(rows.results)

    def lines(self, start: int, rows: Rows) -> Iterator[str]:
        drawn, flags = self.numbers(start, rows)
        for i in range(len(rows.results)):
            fields = [str(start + i)]
            fields += [column.text(value) for column, value in zip(self.inputs, drawn[i])]
            fields += [column.text(value) for column, value in zip(self.plan.output_columns, rows.results[i])]
            fields += ["" if math.isnan(flag) else str(int(flag)) for flag in flags[i]]
            fields += [OUTCOMES[rows.outcomes[i]], str(int(rows.iterations[i])), _finding_text(rows, i)]
            yield ",".join(_csv_field(field) for field in fields) + "\n"

    def frame(self, start: int, rows: Rows) -> pd.DataFrame:
        import pandas as pd

        drawn, flags = self.numbers(start, rows)
        columns: Dict[str, Any] = {"scenario": np.arange(start, start + len(rows.results), dtype=np.int64)}

        def add(column: Column, values: Floats) -> None:
            is_named = column.names is not None
            columns[column.name] = [column.text(value) for value in values] if is_named else values

        for i, column in enumerate(self.inputs):
            add(column, drawn[:, i])
        for i, column in enumerate(self.plan.output_columns):
            add(column, rows.results[:, i])
        for i, limit in enumerate(self.plan.limits):
            columns[limit.name] = flags[:, i]
        columns["outcome"] = [OUTCOMES[outcome] for outcome in rows.outcomes]
        columns["iterations"] = rows.iterations
        columns["finding"] = [_finding_text(rows, i) for i in range(len(rows.results))]
        return pd.DataFrame(columns)


def _opened(plan: Plan, out: Union[str, "os.PathLike[str]"]) -> Store:
    store = Store(out, plan)
    store.check()
    return store


def table(plan: Plan, out: Union[str, "os.PathLike[str]"], *, is_partial: bool = False) -> pd.DataFrame:
    """The table of a study, one row for each scenario in their order. Raises StudyError when rows are missing,
    unless is_partial."""
    import pandas as pd

    columns = _Table(plan)
    frames = [columns.frame(start, rows) for start, rows in blocks(_opened(plan, out), is_partial=is_partial)]
    if not frames:
        return pd.DataFrame(columns=columns.names)
    return pd.concat(frames, ignore_index=True)


def _replace(path: pathlib.Path, write: Callable[[pathlib.Path], None]) -> None:
    """Has a file written as a whole, under another name first; when that fails, the old one stays."""
    temporary = path.with_name(f".{path.name}.{os.getpid()}.tmp")
    try:
        write(temporary)
        with open(temporary, "rb+") as file:
            os.fsync(file.fileno())
        os.replace(temporary, path)
    except OSError as error:
        raise StudyError(f"{path} cannot be written: {error.strerror}; nothing was changed") from error
    finally:
        if temporary.exists():
            temporary.unlink()


def _replace_content(path: pathlib.Path, content: Iterator[bytes]) -> None:
    def write(temporary: pathlib.Path) -> None:
        with open(temporary, "wb") as file:
            for part in content:
                file.write(part)

    _replace(path, write)


def parquet_engine() -> Optional[str]:
    """The package that writes Parquet files, if any is installed."""
    return next((name for name in _PARQUET if importlib.util.find_spec(name) is not None), None)


def write_table(
    plan: Plan,
    out: Union[str, "os.PathLike[str]"],
    path: Union[str, "os.PathLike[str]"],
    *,
    format: str = "csv",
    is_partial: bool = False,
) -> None:
    """Writes the table to a file: "csv", the same bytes however the study was divided, or "parquet". Raises
    StudyError."""
    target = pathlib.Path(path)
    if format == "parquet":
        engine = parquet_engine()
        if engine is None:
            raise StudyError(
                "Parquet needs the Python package pyarrow or fastparquet; install one, or take --format csv"
            )
        frame = table(plan, out, is_partial=is_partial)

        def write(temporary: pathlib.Path) -> None:
            # by name: fastparquet writes to no open file
            frame.to_parquet(str(temporary), engine=engine, index=False)

        _replace(target, write)
        return
    store = _opened(plan, out)
    columns = _Table(plan)

    def content() -> Iterator[bytes]:
        yield (",".join(_csv_field(name) for name in columns.names) + "\n").encode()
        for start, rows in blocks(store, is_partial=is_partial):
            yield "".join(columns.lines(start, rows)).encode()

    _replace_content(target, content())


def write_findings(
    plan: Plan, out: Union[str, "os.PathLike[str]"], path: Union[str, "os.PathLike[str]"]
) -> int:
    """Writes all findings of the rows that are not ok, one JSON object a line; the answer is their number."""
    count = 0

    def content() -> Iterator[bytes]:
        nonlocal count
        for start, rows in blocks(_opened(plan, out), is_partial=True):
            for row in np.flatnonzero(rows.outcomes):
                count += 1
                entry = {
                    "scenario": start + int(row),
                    "outcome": OUTCOMES[rows.outcomes[row]],
                    "findings": rows.findings(int(row)),
                }
                yield (json.dumps(entry, ensure_ascii=False) + "\n").encode()

    _replace_content(pathlib.Path(path), content())
    return count
