"""The folder of a study: what it is about, finished rows, locks and a journal.

Finished rows are in files "rows-START-END.npz". Each is written under another name, flushed to the disk and
then renamed, so that a file which is there is whole. They are what tells finished from unfinished; the journal
holds a line for each file with where and how fast it was made.
"""

from __future__ import annotations

import errno
import io
import json
import os
import pathlib
import re
import socket
import sys
import time
from contextlib import contextmanager
from typing import Any, Dict, Iterator, List, Tuple, Union

import numpy as np

from ._batch import Rows
from ._plan import Plan, StudyError

Range = Tuple[int, int]  # from, and the first that is not in it

_BLOCK = re.compile(r"rows-(\d{16})-(\d{16})\.npz")
_LOCK = re.compile(r"lock-(\d{16})-(\d{16})")
_LOCK_PATIENCE = 3.0  # [s], for the worker of a run that was killed to notice that


def overlap(a: Range, b: Range) -> bool:
    return a[0] < b[1] and b[0] < a[1]


def gaps(wanted: Range, covered: List[Range]) -> List[Range]:
    """The parts of a range that no other one covers."""
    missing = []
    place = wanted[0]
    for start, end in sorted(covered):
        if end <= place or start >= wanted[1]:
            continue
        if start > place:
            missing.append((place, start))
        place = end
    if place < wanted[1]:
        missing.append((place, wanted[1]))
    return missing


def shard_range(count: int, number: int, shards: int) -> Range:
    """Rows of shard 1 to shards, in equal parts."""
    return count * (number - 1) // shards, count * number // shards


def _write_error(path: pathlib.Path, error: OSError) -> StudyError:
    why = "the disk is full" if error.errno in (errno.ENOSPC, errno.EDQUOT) else error.strerror
    return StudyError(f"{path} cannot be written: {why}; what is finished is kept, mend that and run again")


def _lock_file(file: Any) -> bool:
    try:
        if sys.platform == "win32":
            import msvcrt

            msvcrt.locking(file.fileno(), msvcrt.LK_NBLCK, 1)
        else:
            import fcntl

            fcntl.flock(file.fileno(), fcntl.LOCK_EX | fcntl.LOCK_NB)
    except OSError:
        return False
    return True


class Store:
    """The folder of one study. Raises StudyError when it belongs to another plan or cannot be written."""

    def __init__(self, folder: Union[str, "os.PathLike[str]"], plan: Plan) -> None:
        self.folder = pathlib.Path(folder)
        self.plan = plan

    def open(self) -> None:
        """Makes the folder, or checks that it is that of the plan."""
        about = self.folder / "study.json"
        try:
            self.folder.mkdir(parents=True, exist_ok=True)
            if not about.exists():
                text = json.dumps(
                    {"plan_hash": self.plan.hash, "scenarios": self.plan.count, "plan": self.plan.content},
                    indent=2,
                )
                self._write_new(about, text.encode() + b"\n")
        except OSError as error:
            raise _write_error(about, error) from error
        self.check()

    def check(self) -> None:
        about = self.folder / "study.json"
        try:
            known = json.loads(about.read_text(encoding="utf-8"))["plan_hash"]
        except OSError as error:
            raise StudyError(
                f"{self.folder} is no folder of a study: {error.strerror}: {about.name}"
            ) from error
        except (ValueError, KeyError, TypeError) as error:
            raise StudyError(f"{about} is damaged; give another folder") from error
        if known != self.plan.hash:
            raise StudyError(
                f"{self.folder} holds another study: its plan has the hash {known[:12]}..., this one "
                f"{self.plan.hash[:12]}...; give another folder"
            )

    def _write_new(self, path: pathlib.Path, content: bytes) -> bool:
        """Writes a file as a whole; one that is there already stays, and the answer is False."""
        temporary = path.with_name(f".{path.name}.{socket.gethostname()}.{os.getpid()}.tmp")
        try:
            with open(temporary, "wb") as file:
                file.write(content)
                file.flush()
                os.fsync(file.fileno())
            if path.exists():
                return False
            os.rename(temporary, path)
        finally:
            if temporary.exists():
                temporary.unlink()
        self._flush_folder()
        return True

    def _flush_folder(self) -> None:
        if sys.platform == "win32":
            return
        folder = os.open(self.folder, os.O_RDONLY)
        try:
            os.fsync(folder)
        finally:
            os.close(folder)

    def block(self, start: int, end: int) -> pathlib.Path:
        return self.folder / f"rows-{start:016d}-{end:016d}.npz"

    def finished(self) -> List[Range]:
        """Ranges of rows that are finished, in order."""
        if not self.folder.is_dir():
            return []
        return finished(self.folder)

    def write(self, start: int, end: int, rows: Rows, seconds: float) -> None:
        """Keeps finished rows. Raises StudyError when they cannot be written."""
        buffer = io.BytesIO()
        np.savez(
            buffer,
            plan=np.frombuffer(self.plan.hash.encode(), np.uint8),
            results=rows.results,
            outcomes=rows.outcomes,
            iterations=rows.iterations,
            texts=np.frombuffer(json.dumps(rows.texts).encode(), np.uint8),
        )
        path = self.block(start, end)
        try:
            if self._write_new(path, buffer.getvalue()):
                self._note({"rows": [start, end], "seconds": round(seconds, 6), "failed": int((rows.outcomes != 0).sum()),
                            "host": socket.gethostname(), "process": os.getpid(), "time": round(time.time(), 3)})  # fmt: skip
        except OSError as error:
            raise _write_error(path, error) from error

    def _note(self, entry: Dict[str, Any]) -> None:
        """Adds a line to the journal; one call of write() keeps lines of several processes apart."""
        journal = os.open(self.folder / "journal.jsonl", os.O_WRONLY | os.O_CREAT | os.O_APPEND, 0o666)
        try:
            os.write(journal, (json.dumps(entry) + "\n").encode())
        finally:
            os.close(journal)

    def journal(self) -> List[Dict[str, Any]]:
        path = self.folder / "journal.jsonl"
        if not path.exists():
            return []
        entries = []
        for line in path.read_text(encoding="utf-8").split("\n"):
            try:
                entries.append(json.loads(line))
            except ValueError:  # a line that a full disk cut off
                continue
        return entries

    def read(self, start: int, end: int) -> Rows:
        path = self.block(start, end)
        try:
            with np.load(io.BytesIO(path.read_bytes()), allow_pickle=False) as data:
                if bytes(data["plan"]).decode() != self.plan.hash:
                    raise StudyError(f"{path} belongs to another plan; remove it and run again")
                texts = {int(row): text for row, text in json.loads(bytes(data["texts"])).items()}
                rows = Rows(data["results"], data["outcomes"], data["iterations"], texts)
        except (OSError, ValueError, KeyError, EOFError) as error:
            raise StudyError(f"{path} is damaged ({error}); remove it and run again") from error
        except Exception as error:  # zipfile.BadZipFile, zlib.error
            if isinstance(error, StudyError):
                raise
            raise StudyError(f"{path} is damaged ({error}); remove it and run again") from error
        if rows.results.shape != (end - start, len(self.plan.outputs)):
            raise StudyError(f"{path} is damaged (other rows than its name says); remove it and run again")
        return rows

    @contextmanager
    def lock(self, wanted: Range) -> Iterator[Any]:
        """Keeps other runs away from a range of rows; gives the lock's open file. Raises StudyError when one is at
        work there."""
        path = self.folder / f"lock-{wanted[0]:016d}-{wanted[1]:016d}"
        try:
            file = open(path, "a+b")
        except OSError as error:
            raise _write_error(path, error) from error
        with file:
            patience = time.monotonic() + _LOCK_PATIENCE
            while not (_lock_file(file) and self._is_free(wanted, path)):
                if time.monotonic() > patience:
                    raise StudyError(
                        f"another run is at work in {self.folder} on these rows; wait for its end"
                    )
                time.sleep(0.1)
            self._clear_temporaries(wanted)
            yield file

    def _is_free(self, wanted: Range, own: pathlib.Path) -> bool:
        """Whether no run of another division works on some of the rows."""
        for name in os.listdir(self.folder):
            match = _LOCK.fullmatch(name)
            if not match or name == own.name or not overlap(wanted, (int(match[1]), int(match[2]))):
                continue
            with open(self.folder / name, "a+b") as other:
                if not _lock_file(other):
                    return False
        return True

    def _clear_temporaries(self, wanted: Range) -> None:
        """Removes what killed processes left behind in the rows that are locked now."""
        for name in os.listdir(self.folder):
            match = _BLOCK.match(name[1:]) if name.startswith(".") and name.endswith(".tmp") else None
            if match and overlap(wanted, (int(match[1]), int(match[2]))):
                (self.folder / name).unlink()


def finished(folder: Union[str, "os.PathLike[str]"]) -> List[Range]:
    """The ranges of rows that are finished in a folder, in order."""
    found = (_BLOCK.fullmatch(name) for name in os.listdir(folder))
    return sorted((int(match[1]), int(match[2])) for match in found if match)
