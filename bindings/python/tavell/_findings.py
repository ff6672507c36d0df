"""Findings: what is wrong, doubtful or worth knowing; and the exceptions that carry them."""

from __future__ import annotations

import ctypes
import json
import math
from dataclasses import dataclass
from html import escape
from typing import (
    TYPE_CHECKING,
    Any,
    Dict,
    Iterable,
    Iterator,
    List,
    Optional,
    Sequence,
    Tuple,
    Union,
    overload,
)

from . import _library
from ._library import LIBRARY, Function, take_text

if TYPE_CHECKING:
    from ._result import Result

SEVERITIES = ("error", "warning", "remark")

# Lines of an exception's text; the rest is counted.
_MOST_LINES = 20


def _one_line(text: str) -> str:
    """Control characters as \\x0a, so that a finding stays one line."""
    return "".join(f"\\x{ord(c):02x}" if ord(c) < 0x20 or ord(c) == 0x7F else c for c in text)


@dataclass(frozen=True)
class Number:
    """A number of a finding: its name such as "velocity", its value and its unit such as "m/s"."""

    name: str
    value: float
    unit: str


@dataclass(frozen=True)
class Finding:
    """One thing that is wrong, doubtful or worth knowing.

    code: stable name such as "unknown-key"; docs/messages has a page for each. severity: "error", "warning"
    or "remark". message: one sentence. remedy: what to do about it. file, line, column, pointer, object:
    where it applies; "" and 0 when that does not apply. pointer is a JSON pointer, or the section of a file
    of another format. objects: all nodes and elements concerned, each with its kind in front: "node tap 3".
    """

    code: str
    severity: str
    message: str
    remedy: str = ""
    file: str = ""
    line: int = 0
    column: int = 0
    pointer: str = ""
    object: str = ""
    objects: Tuple[str, ...] = ()
    numbers: Tuple[Number, ...] = ()

    @property
    def where(self) -> str:
        """The place as one text: "FILE:LINE:COLUMN: POINTER (OBJECT)", without the parts that do not
        apply."""
        text = _one_line(self.file)
        if self.line > 0:
            text += (":" if text else "line ") + str(self.line)
            if self.column > 0:
                text += f":{self.column}"
        inside = _one_line(self.pointer)
        if self.object:
            name = _one_line(self.object)
            inside += f" ({name})" if inside else name
        return f"{text}: {inside}" if text and inside else text + inside

    def number(self, name: str) -> float:
        """The number of a name. Raises KeyError when there is none."""
        for number in self.numbers:
            if number.name == name:
                return number.value
        raise KeyError(name)

    def __str__(self) -> str:
        place = f"{self.where}: " if self.where else ""
        remedy = f"; {_one_line(self.remedy)}" if self.remedy else ""
        return f"{place}{_one_line(self.message)}{remedy} [{self.code}]"


class Findings(Sequence[Finding]):
    """A list of findings that does not change.

    str() gives one line for each. Of one code the first 1000 are kept; count() counts the others too.
    """

    def __init__(self, findings: Iterable[Finding] = (), *, unlisted: Iterable[Tuple[str, int]] = ()) -> None:
        """unlisted: for each severity, how many further findings there were that are not kept."""
        self._findings = tuple(findings)
        self._unlisted = tuple((severity, count) for severity, count in unlisted if count > 0)

    @overload
    def __getitem__(self, position: int) -> Finding:
        ...

    @overload
    def __getitem__(self, position: slice) -> Findings:
        ...

    def __getitem__(self, position: Union[int, slice]) -> Union[Finding, Findings]:
        if isinstance(position, slice):
            return Findings(self._findings[position])
        return self._findings[position]

    def __len__(self) -> int:
        return len(self._findings)

    def __iter__(self) -> Iterator[Finding]:
        return iter(self._findings)

    def __add__(self, others: Findings) -> Findings:
        if not isinstance(others, Findings):
            return NotImplemented
        return Findings(self._findings + others._findings, unlisted=self._unlisted + others._unlisted)

    def __eq__(self, other: object) -> bool:
        if not isinstance(other, Findings):
            return NotImplemented
        return self._findings == other._findings and self._counts() == other._counts()

    def __hash__(self) -> int:
        return hash(self._findings)

    def of(self, severity: str) -> Findings:
        """Those of a severity: "error", "warning" or "remark"."""
        if severity not in SEVERITIES:
            raise ValueError(f"there is no severity {severity!r}; give one of {', '.join(SEVERITIES)}")
        return Findings(
            (finding for finding in self._findings if finding.severity == severity),
            unlisted=(row for row in self._unlisted if row[0] == severity),
        )

    def with_code(self, code: str) -> Findings:
        """Those of a code, such as "unknown-key"."""
        return Findings(finding for finding in self._findings if finding.code == code)

    @property
    def errors(self) -> Findings:
        return self.of("error")

    @property
    def warnings(self) -> Findings:
        return self.of("warning")

    @property
    def remarks(self) -> Findings:
        return self.of("remark")

    @property
    def codes(self) -> List[str]:
        """The code of each finding."""
        return [finding.code for finding in self._findings]

    def count(self, value: Any) -> int:
        """How many findings of a severity there were, or how often a finding is in the list."""
        if isinstance(value, str):
            return self._counts().get(value, 0)
        return self._findings.count(value)

    def worst_first(self) -> Findings:
        """The same: errors, then warnings, then remarks."""
        order = {severity: rank for rank, severity in enumerate(SEVERITIES)}
        return Findings(
            sorted(self._findings, key=lambda each: order[each.severity]), unlisted=self._unlisted
        )

    def _counts(self) -> Dict[str, int]:
        counts = {severity: 0 for severity in SEVERITIES}
        for finding in self._findings:
            counts[finding.severity] += 1
        for severity, count in self._unlisted:
            counts[severity] += count
        return counts

    def summary(self) -> str:
        """Such as "1 error, no warnings, 2 remarks"."""
        parts = []
        for severity, count in self._counts().items():
            parts.append(f"{count or 'no'} {severity}{'' if count == 1 else 's'}")
        return ", ".join(parts)

    def __str__(self) -> str:
        lines = [str(finding) for finding in self._findings]
        lines += [f"{count} more {severity}s are not shown" for severity, count in self._unlisted]
        return "\n".join(lines)

    def __repr__(self) -> str:
        return f"<Findings: {self.summary()}>"

    def _repr_html_(self) -> str:
        colours = {"error": "#b3261e", "warning": "#8a5a00", "remark": "#355c7d"}
        rows = []
        for finding in self.worst_first():
            colour = colours[finding.severity]
            rows.append(
                f'<tr><td style="color:{colour};text-align:left"><b>{finding.severity}</b></td>'
                f'<td style="text-align:left">{escape(finding.where)}</td>'
                f'<td style="text-align:left">{escape(finding.message)}</td>'
                f'<td style="text-align:left">{escape(finding.remedy)}</td>'
                f'<td style="text-align:left"><code>{escape(finding.code)}</code></td></tr>'
            )
        head = "".join(f"<th>{name}</th>" for name in ("", "where", "what is so", "what to do", "code"))
        return (
            f"<div><p>{escape(self.summary())}</p>"
            f"<table><thead><tr>{head}</tr></thead><tbody>{''.join(rows)}</tbody></table></div>"
        )


_NONE = Findings()


class Error(Exception):
    """A call that failed. findings: what there is to say, never empty. result: of a solve that ended without
    a solution; None otherwise."""

    def __init__(self, findings: Findings, result: Optional[Result] = None) -> None:
        super().__init__(findings, result)
        self.findings = findings
        self.result = result

    def __str__(self) -> str:
        shown = self.findings.errors if self.findings.count("error") else self.findings
        lines = str(shown).split("\n")
        if len(lines) > _MOST_LINES:
            lines = lines[:_MOST_LINES] + [f"... and {len(lines) - _MOST_LINES} more, see .findings"]
        return "\n".join(lines)


class BadInput(Error, ValueError):
    """A file, a network, an option or an argument cannot be used."""


class NotConverged(Error):
    """A solve ended without a solution; result holds how far it came."""


class Cancelled(Error):
    """The progress function asked to stop."""


class InternalError(Error):
    """Memory ran out, or a defect of the kit."""


_EXCEPTIONS = {
    _library.NOT_CONVERGED: NotConverged,
    _library.BAD_INPUT: BadInput,
    _library.INTERNAL: InternalError,
    _library.CANCELLED: Cancelled,
}


def _finding_of(entry: Dict[str, Any]) -> Finding:
    numbers = tuple(
        Number(each["name"], math.nan if each["value"] is None else float(each["value"]), each["unit"])
        for each in entry.pop("numbers", ())
    )
    return Finding(objects=tuple(entry.pop("objects", ())), numbers=numbers, **entry)


def _take_findings(address: int) -> Findings:
    """The content of a list of the kit."""
    if LIBRARY.tvkFindingsCount(address) == 0:
        return _NONE
    text = ctypes.c_void_p()
    if LIBRARY.tvkFindingsJson(address, ctypes.byref(text)) != _library.OK:
        raise MemoryError("memory ran out while findings were read")
    found = [_finding_of(entry) for entry in json.loads(take_text(text))]
    kept = {severity: 0 for severity in SEVERITIES}
    for finding in found:
        kept[finding.severity] += 1
    made = {severity: LIBRARY.tvkFindingsCountOf(address, i) for i, severity in enumerate(SEVERITIES)}
    return Findings(found, unlisted=((severity, made[severity] - kept[severity]) for severity in SEVERITIES))


def run(function: Function, *arguments: Any) -> Tuple[int, Findings]:
    """Calls a function whose last argument is a list of findings: its status and what it found."""
    address = LIBRARY.tvkNewFindings()
    if not address:
        raise MemoryError("memory ran out before a call of the kit")
    try:
        status = function(*arguments, address)
        return status, _take_findings(address)
    finally:
        LIBRARY.tvkFreeFindings(address)


def raise_unless_ok(status: int, findings: Findings, result: Optional[Result] = None) -> None:
    """Raises the exception of a status other than OK, with its findings."""
    if status == _library.OK:
        return
    if not len(findings):
        findings = Findings([Finding("internal-error", "error", "a call failed without a finding")])
    raise _EXCEPTIONS.get(status, InternalError)(findings, result)


def checked(function: Function, *arguments: Any) -> Findings:
    """As run(), but raises the exception of a call that failed."""
    status, findings = run(function, *arguments)
    raise_unless_ok(status, findings)
    return findings


def text_of(function: Function, *arguments: Any) -> str:
    """The text of a function whose last arguments are a char** and a list of findings."""
    text = ctypes.c_void_p()
    try:
        checked(function, *arguments, ctypes.byref(text))
    except BaseException:
        take_text(text)
        raise
    return take_text(text)


def refusal(message: str, remedy: str) -> BadInput:
    """The exception for an argument that the package itself refuses, in the form of the kit's own."""
    return BadInput(Findings([Finding("bad-option", "error", message, remedy)]))
