"""Studies at a prompt: python -m tavell.sweep, or tavell sweep.

Exit status: 0 when all is done, 1 when scenarios failed or rows are missing, 2 for input that cannot be used.
"""

from __future__ import annotations

import argparse
import json
import pathlib
import sys
from typing import Any, Dict, List, Optional, Sequence, Tuple

from . import Network
from ._findings import Error
from .studies import (
    Plan,
    Progress,
    StudyError,
    run,
    run_shard,
    status,
    write_findings,
    write_table,
)
from .studies._collect import parquet_engine
from .studies._run import parsed_shard

_SHOWN = 5  # scenarios of a plan


def _positive(text: str) -> int:
    number = int(text)
    if number < 1:
        raise argparse.ArgumentTypeError(f"{text} is not above 0")
    return number


def _seconds(text: str) -> float:
    number = float(text)
    if not 0.0 < number <= 1e9:
        raise argparse.ArgumentTypeError(f"{text} is no time above 0 s")
    return number


def _parser() -> argparse.ArgumentParser:
    parser = argparse.ArgumentParser(
        prog="tavell sweep", description="Studies of many solves: Monte Carlo, failures, grids, tables."
    )
    commands = parser.add_subparsers(dest="command", required=True, metavar="COMMAND")

    plan = commands.add_parser("plan", help="make a plan for a network, or check one and show what it does")
    plan.add_argument("file", metavar="NETWORK|PLAN", help="a network file, or a plan")
    plan.add_argument("-o", "--output", metavar="PLAN", help="the plan to be made for a network")
    plan.add_argument("--kind", choices=("demand", "failures"), default="demand",
                      help="of the plan to be made: random demands (default), or each element closed once")  # fmt: skip
    plan.add_argument("--scenarios", type=_positive, default=1000, help="of the plan to be made, if random")
    plan.add_argument("--seed", type=int, default=1, help="of the plan to be made")

    running = commands.add_parser("run", help="solve the scenarios of a plan that are not finished yet")
    running.add_argument("plan", metavar="PLAN")
    running.add_argument("--out", required=True, metavar="DIR", help="the folder of the study")
    running.add_argument("--shard", metavar="I/N", help="the I-th of N parts only, counted from 1")
    running.add_argument("--threads", type=_positive, help="default: the number of processors")
    running.add_argument("--time-limit", type=_seconds, metavar="SECONDS", help="for each scenario")
    running.add_argument("--dask", nargs="?", const="", metavar="ADDRESS",
                         help="solve on the workers of this scheduler; without an address on processes of this machine")  # fmt: skip
    running.add_argument("--quiet", action="store_true", help="no progress")

    state = commands.add_parser("status", help="say how far a study is")
    collecting = commands.add_parser("collect", help="write the table of a study and its summary")
    for each in (state, collecting):
        each.add_argument("plan", metavar="PLAN")
        each.add_argument("--out", required=True, metavar="DIR", help="the folder of the study")
    collecting.add_argument(
        "--format", choices=("csv", "parquet"), help="both when left out, Parquet where a package writes it"
    )
    collecting.add_argument(
        "-o", "--output", metavar="TABLE", help="default: DIR/table.csv or DIR/table.parquet"
    )
    collecting.add_argument("--partial", action="store_true", help="though rows are missing")
    collecting.add_argument("--summary", metavar="FOLDER", help="write numbers, plots and a page there")
    return parser


def _starting_plan(network: Network, path: str, arguments: argparse.Namespace) -> Dict[str, Any]:
    """A plan that can be run as it is, and changed."""
    content: Dict[str, Any] = {
        "tavell_study": 1,
        "title": f"{arguments.kind} of {pathlib.Path(path).name}",
        "network": {"path": path, "hash": Network.from_json(network.to_json()).hash()},
        "generator": "philox4x64",
        "seed": arguments.seed,
    }
    if arguments.kind == "failures":
        content["vary"] = [{"name": "closed", "close_each": "*"}]
    else:
        key = _demand_key(network)
        content["scenarios"] = arguments.scenarios
        draw = {"distribution": "normal", "mean": 1.0, "sd": 0.1, "truncate": [0.5, 1.5]}
        content["vary"] = [
            {"name": "demand", "nodes": "*", "key": key, "as": "factor", "each": True, "draw": draw}
        ]
    content["record"] = [
        {"name": "lowest pressure", "nodes": "*", "quantity": "min:pressure"},
        {"name": "lowest at", "nodes": "*", "quantity": "argmin:pressure"},
        {"name": "highest velocity", "elements": "*", "quantity": "max_abs:velocity"},
        {"name": "highest at", "elements": "*", "quantity": "argmax_abs:velocity"},
        {"network": "certificate"},
    ]
    content["limits"] = [{"name": "below 1 bar", "column": "lowest pressure", "below": 1e5}]
    return content


def _demand_key(network: Network) -> str:
    for key in ("outlet/mass_flow", "outlet/volume_flow"):
        if (network.node_values(key) == network.node_values(key)).any():
            return key
    raise StudyError(
        "no node of the network has an outlet with a flow to vary; take --kind failures, or write a plan"
    )


def _plan(arguments: argparse.Namespace) -> int:
    path = pathlib.Path(arguments.file)
    try:
        content = json.loads(path.read_text(encoding="utf-8"))
        is_plan = isinstance(content, dict) and "tavell_study" in content
    except (OSError, ValueError):
        is_plan = False
    if not is_plan:
        return _make_plan(arguments)
    if arguments.output is not None:
        raise StudyError(f"{path} is a plan already; name a network to make one, or leave -o out")
    plan = Plan.read(path)
    columns, values = plan.drawn(0, min(_SHOWN, plan.count))
    inputs, _ = plan.inputs(0, 1)
    print(f"{plan.count} scenarios of a network of {plan.network.node_count} nodes and "
          f"{plan.network.element_count} elements")  # fmt: skip
    print(f"each sets {len(inputs)} values and keeps {len(plan.outputs)}; plan {plan.hash[:12]}")
    shown = columns[:8]
    for k, row in enumerate(values):
        texts = [f"{column.name} {column.text(value) or '-'}" for column, value in zip(shown, row)]
        print(f"scenario {k}: {', '.join(texts)}{', ...' if len(columns) > len(shown) else ''}")
    return 0


def _make_plan(arguments: argparse.Namespace) -> int:
    if arguments.output is None:
        raise StudyError(f"{arguments.file} is no plan; to make one for a network add -o PLAN.json")
    target = pathlib.Path(arguments.output)
    try:
        network = Network.read(arguments.file)
    except Error as error:
        raise StudyError(f"the network cannot be used: {str(error).splitlines()[0]}") from error
    if not 0 <= arguments.seed < 2**64:
        raise StudyError(f"the seed {arguments.seed} is none; give a whole number from 0 to 2^64 - 1")
    named = pathlib.Path(arguments.file).resolve()
    folder = target.resolve().parent
    path = str(named.relative_to(folder)) if folder in named.parents else str(named)
    content = _starting_plan(network, path, arguments)
    Plan.of(content, folder)
    try:
        with open(target, "x", encoding="utf-8") as file:
            file.write(json.dumps(content, indent=2, ensure_ascii=False) + "\n")
    except FileExistsError as error:
        raise StudyError(f"{target} is there already; give another name") from error
    except OSError as error:
        raise StudyError(f"{target} cannot be written: {error.strerror}") from error
    print(f"{target} is written; next: tavell sweep run {target} --out {target.with_suffix('').name}")
    return 0


def _duration(seconds: float) -> str:
    if seconds == float("inf"):
        return "-"
    whole = int(seconds + 0.5)
    return f"{whole // 3600}:{whole // 60 % 60:02d}:{whole % 60:02d}"


class _Bar:
    """A line of progress at a terminal."""

    def __init__(self, is_shown: bool) -> None:
        self._is_shown = is_shown
        self._width = 0

    def __call__(self, progress: Progress) -> None:
        if not self._is_shown:
            return
        filled = 24 * progress.done // progress.rows
        text = (
            f"[{'#' * filled}{'.' * (24 - filled)}] {progress.done}/{progress.rows}, {progress.rate:.0f}/s, "
            f"{_duration(progress.seconds_left)} left, {progress.failed} failed"
        )
        sys.stderr.write("\r" + text.ljust(self._width))
        sys.stderr.flush()
        self._width = len(text)

    def end(self) -> None:
        if self._width:
            sys.stderr.write("\n")


def _run(arguments: argparse.Namespace) -> int:
    plan = Plan.read(arguments.plan)
    bar = _Bar(not arguments.quiet and sys.stderr.isatty())
    try:
        if arguments.dask is not None:
            if arguments.shard is not None:
                raise StudyError("--dask solves all parts itself; leave --shard out")
            outcome = _run_on_dask(plan, arguments, bar)
        else:
            shard = (1, 1) if arguments.shard is None else parsed_shard(arguments.shard)
            outcome = run_shard(plan, arguments.out, shard, threads=arguments.threads,
                                time_limit=arguments.time_limit, on_report=bar)  # fmt: skip
    finally:
        bar.end()
    print(f"{outcome.solved} scenarios solved, {outcome.failed} of them failed")
    return 1 if outcome.failed else 0


def _run_on_dask(plan: Plan, arguments: argparse.Namespace, bar: _Bar) -> Any:
    try:
        import distributed
    except ImportError as error:
        raise StudyError(
            "--dask needs the Python package distributed; install it, or leave --dask out"
        ) from error
    make_client: Any = distributed.Client
    make_cluster: Any = distributed.LocalCluster
    if arguments.dask:
        try:
            client = make_client(arguments.dask, timeout=10)
        except (OSError, ValueError) as error:
            raise StudyError(f"there is no scheduler of dask at {arguments.dask}: {error}") from error
        with client:
            return run(plan, arguments.out, client=client, time_limit=arguments.time_limit, on_report=bar)
    with make_cluster(n_workers=arguments.threads, threads_per_worker=1, dashboard_address=None) as cluster:
        with make_client(cluster) as client:
            return run(plan, arguments.out, client=client, time_limit=arguments.time_limit, on_report=bar)


def _status(arguments: argparse.Namespace) -> int:
    plan = Plan.read(arguments.plan)
    state = status(plan, arguments.out)
    print(
        f"{state.done} of {state.rows} scenarios are finished, in {state.blocks} files; {state.failed} failed"
    )
    if state.rate > 0.0:
        print(f"{state.rate:.1f} scenarios a second")
    for start, end in state.missing[:10]:
        print(f"missing: {start} to {end - 1}")
    if len(state.missing) > 10:
        print(f"and {len(state.missing) - 10} more ranges")
    return 1 if state.missing or state.failed else 0


def _tables(arguments: argparse.Namespace) -> List[Tuple[str, pathlib.Path]]:
    """Formats and names of the tables to be written: CSV, and Parquet too where a package writes it; one when
    its format or name is given."""
    if arguments.output is not None:
        target = pathlib.Path(arguments.output)
        by_ending = "parquet" if target.suffix == ".parquet" else "csv"
        return [(arguments.format or by_ending, target)]
    if arguments.format is not None:
        formats = [arguments.format]
    else:
        formats = ["csv"] + (["parquet"] if parquet_engine() else [])
    return [(format, pathlib.Path(arguments.out) / f"table.{format}") for format in formats]


def _collect(arguments: argparse.Namespace) -> int:
    plan = Plan.read(arguments.plan)
    out = pathlib.Path(arguments.out)
    for format, target in _tables(arguments):
        write_table(plan, out, target, format=format, is_partial=arguments.partial)
        print(f"{target} is written")
    failed = write_findings(plan, out, out / "failed.jsonl")
    print(f"{failed} scenarios failed")
    if failed:
        print(f"their findings are in {out / 'failed.jsonl'}")
    if arguments.summary is not None:
        from .studies._summary import write_summary

        for path in write_summary(plan, out, arguments.summary, is_partial=arguments.partial):
            print(f"{path} is written")
    return 1 if failed or status(plan, out).missing else 0


_COMMANDS = {"plan": _plan, "run": _run, "status": _status, "collect": _collect}


def main(arguments: Optional[Sequence[str]] = None) -> int:
    """Runs the command; the answer is its exit status."""
    given: List[str] = list(sys.argv[1:] if arguments is None else arguments)
    parsed = _parser().parse_args(given)
    try:
        return _COMMANDS[parsed.command](parsed)
    except StudyError as error:
        print(f"tavell sweep: {error}", file=sys.stderr)
        return 2
    except KeyboardInterrupt:
        print("tavell sweep: stopped; what is finished is kept", file=sys.stderr)
        return 130


if __name__ == "__main__":
    sys.exit(main())
