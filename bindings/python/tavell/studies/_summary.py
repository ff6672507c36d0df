"""What a study shows, as numbers, plots and a page: with matplotlib where it is installed."""

from __future__ import annotations

import html
import json
import math
import os
import pathlib
from dataclasses import dataclass
from typing import Any, Dict, List, Optional, Tuple, Union

import numpy as np
import pandas as pd

from .._arrays import Floats
from .._findings import Error
from .._network import Network
from .._units import ELEMENT_QUANTITIES, NODE_QUANTITIES
from ._batch import ELEMENT, NODE
from ._collect import _replace_content, table
from ._plan import Plan, StudyError

_MOST_PLOTTED = 6  # columns of results
_MOST_BARS = 12  # of a tornado
_WORST = 3  # scenarios that are drawn
_SHARES = (0.01, 0.05, 0.25, 0.5, 0.75, 0.95, 0.99)


@dataclass
class _Picture:
    """A file of the page, and what is said below it."""

    file: str
    caption: str


def _unit(plan: Plan, column: int) -> str:
    """The SI unit of a column of results, "" for none."""
    output = plan.outputs[column]
    quantities = {NODE: NODE_QUANTITIES, ELEMENT: ELEMENT_QUANTITIES}.get(output.part, {})
    return quantities.get(output.quantity.rpartition(":")[2], ("", ""))[1]


def _statistics(values: Floats) -> Dict[str, Any]:
    known = values[~np.isnan(values)]
    if not len(known):
        return {"count": 0}
    quantiles = {str(share): float(np.quantile(known, share)) for share in _SHARES}
    return {
        "count": int(len(known)),
        "mean": float(known.mean()),
        "deviation": float(known.std()),
        "lowest": float(known.min()),
        "highest": float(known.max()),
        "quantiles": quantiles,
    }


def correlations(frame: pd.DataFrame, inputs: List[str], output: str) -> List[Tuple[str, float]]:
    """Rank correlations (Spearman 1904) of what varies with a column of results, the strongest first."""
    ranks = frame[inputs + [output]].rank()
    found = []
    for name in inputs:
        both = ranks[[name, output]].dropna().to_numpy()
        if len(both) > 2 and both[:, 0].std() > 0.0 and both[:, 1].std() > 0.0:
            found.append((name, float(np.corrcoef(both.T)[0, 1])))
    return sorted(found, key=lambda each: -abs(each[1]))


def worst_scenarios(plan: Plan, frame: pd.DataFrame) -> Tuple[List[int], Optional[str]]:
    """Scenarios that go farthest beyond the first limit; without limits those where the first column of numbers is
    lowest. And the column that says so."""
    columns = [column.name for column in plan.output_columns]
    is_upper = False
    name = next((column.name for column in plan.output_columns if column.names is None), None)
    if plan.limits:
        name = columns[plan.limits[0].columns[0]]
        is_upper = plan.limits[0].below is None
    if name is None:
        return [], None
    values = frame[name].astype(float)
    order = (-values if is_upper else values).sort_values(kind="stable", na_position="last")
    return [int(frame["scenario"][i]) for i in order.index[:_WORST] if not math.isnan(values[i])], name


def scenario_network(plan: Plan, scenario: int) -> Network:
    """The network of one scenario, for a solve of its own. Raises StudyError when it is refused."""
    base = plan.network if plan.scenario is None else plan.network.scenario(plan.scenario)
    network = base.copy()
    inputs, values = plan.inputs(scenario, scenario + 1)
    try:
        for each, value in zip(inputs, values[0]):
            if math.isnan(value):
                continue
            if each.part == NODE:
                network.set_node_values(each.key, value, [each.position])
            elif each.part == ELEMENT:
                network.set_element_values(each.key, value, [each.position])
            else:
                network.patch(_patch(network, each.key, float(value)))
    except Error as error:
        raise StudyError(f"scenario {scenario} is refused: {str(error).splitlines()[0]}") from error
    return network


def _patch(network: Network, pointer: str, value: Any) -> Dict[str, Any]:
    """The patch that a pointer into an object in the form of a scenario stands for; lists are replaced whole."""
    tokens = [token.replace("~1", "/").replace("~0", "~") for token in pointer.split("/")[1:]]
    document = network.to_dict()
    for key in ("nodes", "elements"):
        document[key] = {each["name"]: each for each in document[key]}
    document.setdefault("gravity", [0.0, 0.0, -1.0])
    found: Any = document
    for depth, token in enumerate(tokens):
        if isinstance(found, list):
            value = _with(found, tokens[depth:], value)
            return dict(_nested(tokens[:depth], value))
        found = found.get(token) if isinstance(found, dict) else None
    return dict(_nested(tokens, value))


def _with(given: Any, tokens: List[str], value: float) -> Any:
    if not tokens:
        return value
    changed = list(given)
    changed[int(tokens[0])] = _with(changed[int(tokens[0])], tokens[1:], value)
    return changed


def _nested(tokens: List[str], value: Any) -> Any:
    patch: Any = value
    for token in reversed(tokens):
        patch = {token: patch}
    return patch


def _plot(
    plan: Plan,
    frame: pd.DataFrame,
    tornados: Dict[str, List[Tuple[str, float]]],
    units: Dict[str, str],
    folder: pathlib.Path,
) -> List[_Picture]:
    """Histograms, exceedance curves and tornados as SVG of the columns that are not the same in all scenarios."""
    try:
        import matplotlib
    except ImportError:
        return []
    matplotlib.use("Agg")
    from matplotlib.figure import Figure
    from matplotlib.ticker import EngFormatter, MaxNLocator

    pictures = []
    for i, (name, bars) in enumerate(tornados.items()):
        values = frame[name].to_numpy(dtype=float)
        values = np.sort(values[~np.isnan(values)])
        if not len(values) or values[0] == values[-1]:
            continue
        unit = units[name]
        figure = Figure(figsize=(12, 3.6), layout="constrained")
        histogram, exceedance, tornado = figure.subplots(1, 3)
        histogram.hist(values, bins=min(60, max(8, int(math.sqrt(len(values))))), color="#355c7d")
        histogram.set(ylabel="scenarios")
        exceedance.plot(values, 1.0 - (np.arange(len(values)) + 0.5) / len(values), color="#355c7d")
        exceedance.set(ylabel="share of scenarios above")
        for axes in (histogram, exceedance):
            axes.set_xlabel(f"{name} [{unit}]" if unit not in ("", "Pa") else name)
            axes.xaxis.set_major_locator(MaxNLocator(4))
            if unit == "Pa":
                axes.xaxis.set_major_formatter(EngFormatter(unit))
            for end in _limits_of(plan, name):
                axes.axvline(end, color="#b3261e")
        shown = bars[:_MOST_BARS][::-1]
        tornado.barh([bar[0] for bar in shown], [bar[1] for bar in shown], color="#8a5a00")
        tornado.axvline(0.0, color="black", linewidth=0.8)
        tornado.set(xlabel=f"rank correlation with {name}", xlim=(-1, 1))
        file = f"column-{i + 1}.svg"
        figure.savefig(folder / file, metadata={"Date": None})
        pictures.append(_Picture(file, name))
    return pictures


def _limits_of(plan: Plan, name: str) -> List[float]:
    """The limits of a column of results."""
    ends = [
        end
        for limit in plan.limits
        if name in [plan.output_columns[column].name for column in limit.columns]
        for end in (limit.below, limit.above)
    ]
    return [end for end in ends if end is not None]


def _pictures(
    plan: Plan, scenarios: List[int], captions: Dict[int, str], folder: pathlib.Path
) -> List[_Picture]:
    pictures = []
    for scenario in scenarios:
        file = f"scenario-{scenario}.svg"
        try:
            result = scenario_network(plan, scenario).solve(energy=plan.energy)
            result.picture(folder / file)
        except Error:  # it was solved before, from other starting values at most: a page without its picture
            continue
        pictures.append(_Picture(file, captions[scenario]))
    return pictures


def write_summary(
    plan: Plan,
    out: Union[str, "os.PathLike[str]"],
    folder: Union[str, "os.PathLike[str]"],
    *,
    is_partial: bool = False,
) -> List[pathlib.Path]:
    """Writes summary.json, plots, the network in its worst scenarios, and index.html with all of it. The paths of
    the two. Raises StudyError."""
    target = pathlib.Path(folder)
    frame = table(plan, out, is_partial=is_partial)
    numeric = [column.name for column in plan.output_columns if column.names is None]
    inputs = [
        column.name for column in (plan.drawn(0, 0)[0] if plan.shows_inputs else []) if column.names is None
    ]
    tornados = {name: correlations(frame, inputs, name) for name in numeric[:_MOST_PLOTTED]}
    units = {column.name: _unit(plan, i) for i, column in enumerate(plan.output_columns)}
    worst, worst_by = worst_scenarios(plan, frame)
    captions = {}
    for scenario in worst:
        value = float(frame.loc[frame["scenario"] == scenario, worst_by].iloc[0])
        captions[scenario] = f"scenario {scenario}: {worst_by} {value:.6g} {units[str(worst_by)]}"
    summary: Dict[str, Any] = {
        "title": plan.content.get("title", ""),
        "plan_hash": plan.hash,
        "scenarios": plan.count,
        "rows": int(len(frame)),
        "outcomes": {
            str(key): int(count) for key, count in frame["outcome"].value_counts().sort_index().items()
        },
        "limits": {limit.name: int(np.nansum(frame[limit.name])) for limit in plan.limits},
        "columns": {
            name: {"unit": units[name], **_statistics(frame[name].to_numpy(dtype=float))} for name in numeric
        },
        "rank_correlations": {name: dict(found[:_MOST_BARS]) for name, found in tornados.items()},
        "worst_scenarios": worst,
    }
    try:
        target.mkdir(parents=True, exist_ok=True)
        pictures = _plot(plan, frame, tornados, units, target)
        pictures += _pictures(plan, worst, captions, target)
    except OSError as error:
        raise StudyError(f"the summary cannot be written to {target}: {error.strerror}") from error
    numbers = json.dumps(summary, indent=2, ensure_ascii=False) + "\n"
    _replace_content(target / "summary.json", iter([numbers.encode()]))
    _replace_content(target / "index.html", iter([_page(summary, pictures).encode()]))
    return [target / "summary.json", target / "index.html"]


def _page(summary: Dict[str, Any], pictures: List[_Picture]) -> str:
    rows = []
    for name, values in summary["columns"].items():
        numbers = [values.get(key) for key in ("mean", "deviation", "lowest", "highest")]
        numbers += [values.get("quantiles", {}).get(share) for share in ("0.05", "0.5", "0.95")]
        fields = "".join(f"<td>{'' if number is None else format(number, '.6g')}</td>" for number in numbers)
        rows.append(f"<tr><th>{html.escape(name)}</th><td>{values['unit']}</td>{fields}</tr>")
    head = "".join(
        f"<th>{each}</th>"
        for each in ("", "", "mean", "deviation", "lowest", "highest", "5 %", "50 %", "95 %")
    )
    counts = ", ".join(f"{count} {name}" for name, count in summary["outcomes"].items())
    limits = "".join(f"<li>{html.escape(name)}: {count}</li>" for name, count in summary["limits"].items())
    if limits:
        limits = f"<h2>Scenarios beyond a limit</h2><ul>{limits}</ul>"
    images = "".join(
        f'<figure><figcaption>{html.escape(each.caption)}</figcaption><img src="{each.file}" alt=""></figure>'
        for each in pictures
    )
    title = html.escape(summary["title"] or "Study")
    return (
        f'<!DOCTYPE html><html lang="en"><meta charset="utf-8"><title>{title}</title><style>body{{font-family:'
        "sans-serif;margin:2em;max-width:75em}td{text-align:right}td,th{padding:.2em .8em}th{text-align:left}"
        "figure{margin:2em 0}figcaption{font-weight:bold}img{max-width:100%}</style>"
        f"<h1>{title}</h1><p>{summary['rows']} of {summary['scenarios']} scenarios: {counts}; plan "
        f"{summary['plan_hash'][:12]}</p>{limits}<h2>Results</h2><table><tr>{head}</tr>{''.join(rows)}</table>"
        f"{images}</html>\n"
    )
