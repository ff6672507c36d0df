"""The tables of bench/run, in Markdown."""

import dataclasses
import pathlib
import platform
import re


@dataclasses.dataclass
class Median:
    """Of the repeats of one stage of one network; the peak is the highest of them."""

    milliseconds: float
    iterations: int = 0
    peak: float = 0.0  # [MiB]
    repeats: int = 0


def cases_of(medians):
    """(family, nodes) that were timed."""
    return sorted({(key[1], key[2]) for key in medians if key[0] != "EPANET" and key[1] != "ten"})


def three_digits(value):
    """As a decimal number of at least three digits that count."""
    if value >= 100:
        return f"{value:,.0f}"
    return f"{value:.{1 if value >= 10 else 2 if value >= 1 else 3}f}"


def size_name(nodes):
    exponent = len(str(nodes)) - 1
    return f"1e{exponent}" if nodes == 10**exponent else f"{nodes:,}"


def ratio(other, own):
    if other is None or own is None:
        return "-"
    value = other.milliseconds / own.milliseconds
    return f"{value:.{0 if value >= 10 else 2 if value >= 0.1 else 3}f}"


def time_of(median, without="not run"):
    return without if median is None else three_digits(median.milliseconds)


def markdown(title, rows):
    """The first column is text, the others are numbers."""
    lines = ["| " + " | ".join(title) + " |", "|---|" + "---:|" * (len(title) - 1)]
    lines += ["| " + " | ".join(row) + " |" for row in rows]
    return "\n".join(lines)


def solve_table(medians):
    """Times of a solve against those of EPANET."""
    title = (
        "Family", "Nodes", "tavell [ms]", "Iterations", "epanet-js [ms]", "Iterations", "Ratio", "EPANET [ms]", "Ratio",
    )  # fmt: skip
    rows = []
    for family, nodes in cases_of(medians):
        own, peer, native = (medians.get((name, family, nodes, "solve")) for name in ("tavell", "epanet-js", "EPANET"))
        rows.append(
            (
                family,
                size_name(nodes),
                time_of(own),
                str(own.iterations) if own else "-",
                time_of(peer),
                str(peer.iterations) if peer else "-",
                ratio(peer, own),
                time_of(native),
                ratio(native, own),
            )
        )
    return markdown(title, rows)


def host_table(medians):
    """Where the time goes around and in a solve, and memory."""
    stages = ("build", "solve:start", "solve:iteration", "solve:finish", "read", "release")
    title = ("Family", "Nodes", "Build", "First iteration", "Iteration", "Results", "Read", "Release", "Build [MiB]", "Solve [MiB]")
    rows = []
    for family, nodes in cases_of(medians):
        found = [medians.get(("tavell", family, nodes, stage)) for stage in stages]
        peaks = [medians.get(("tavell", family, nodes, stage)) for stage in ("build", "solve")]
        rows.append(
            (
                family,
                size_name(nodes),
                *(time_of(median, "-") for median in found),
                *(three_digits(median.peak) if median else "-" for median in peaks),
            )
        )
    lines = [markdown(title, rows)]
    ten = [median for key, median in medians.items() if key[1] == "ten"]
    if ten:
        per_second = round(1000 / ten[0].milliseconds, -2)
        lines.append(f"A network of ten elements is built, solved, read and released {per_second:,.0f} times a second.")
    lines.append(f"Machine: {machine_name()}.")
    return "\n\n".join(lines)


def machine_name():
    information = pathlib.Path("/proc/cpuinfo")
    if information.exists() and (found := re.search(r"model name\s*: (.*)", information.read_text(encoding="utf-8"))):
        return found[1].strip()
    return platform.machine()


def write_sections(path, sections):
    """Puts each text between the comments "bench/run: NAME" and "end" of a Markdown file."""
    document = path.read_text(encoding="utf-8")
    for name, text in sections.items():
        pattern = re.compile(rf"(<!-- bench/run: {name} -->\n).*?(\n<!-- end -->)", re.DOTALL)
        if not pattern.search(document):
            raise SystemExit(f"{path.name} has no place for the table {name!r}")
        document = pattern.sub(lambda found, text=text: found[1] + text + found[2], document)
    path.write_text(document, encoding="utf-8")
