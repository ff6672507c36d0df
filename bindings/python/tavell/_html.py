"""What notebooks show of networks, results and certificates."""

from __future__ import annotations

import os
import tempfile
from html import escape
from typing import TYPE_CHECKING, Any, Mapping, Union

from ._findings import Error

if TYPE_CHECKING:
    from ._network import Network
    from ._result import Result

# Networks up to this many elements are drawn.
_MOST_DRAWN = 400
_PICTURE_WIDTH = 640
# Rows of a table.
_MOST_ROWS = 12


def network_page(network: Network) -> str:
    try:
        title = repr(network).strip("<>")
    except Error:
        title = "Network"
    if "closed" in title:
        return f"<p>{escape(title)}</p>"
    return f"<div><p><b>{escape(title)}</b></p>{_picture(network, network.element_count)}</div>"


def result_page(result: Result) -> str:
    title = repr(result).strip("<>")
    if "closed" in title:
        return f"<p>{escape(title)}</p>"
    page = f"<div><p><b>{escape(title)}</b></p>"
    if not result.has_values:
        return f"{page}{result.findings._repr_html_()}</div>"
    certificate = result.certificate()
    page += f"<p>{escape(str(certificate).splitlines()[0])}</p>"
    page += _picture(result, len(result.element_names))
    for frame in (result.nodes, result.elements):
        page += _table(frame)
    return page + "</div>"


def certificate_table(fields: Mapping[str, Any]) -> str:
    rows = "".join(
        f'<tr><td style="text-align:left">{escape(name)}</td>'
        f'<td style="text-align:left">{escape("" if value is None else str(value))}</td></tr>'
        for name, value in fields.items()
    )
    return f"<table><tbody>{rows}</tbody></table>"


def _picture(drawn: Union[Network, Result], count: int) -> str:
    """The drawing as SVG; nothing for large networks and for what cannot be drawn."""
    if not 0 < count <= _MOST_DRAWN:
        return ""
    with tempfile.TemporaryDirectory(prefix="tavell-") as folder:
        path = os.path.join(folder, "picture.svg")
        try:
            drawn.picture(path, width=_PICTURE_WIDTH)
        except Error:
            return ""
        with open(path, encoding="utf-8") as file:
            text = file.read()
    start = text.find("<svg")
    return text[start:] if start >= 0 else ""


def _table(frame: Any) -> str:
    units = frame.attrs["units"]
    named = frame.head(_MOST_ROWS).rename(
        columns={key: f"{key} [{units[key]}]" if units.get(key) else key for key in frame.columns}
    )
    rest = len(frame) - _MOST_ROWS
    more = f"<p>and {rest} more</p>" if rest > 0 else ""
    table: str = named.to_html(float_format=lambda value: f"{value:.6g}")
    return table + more
