"""Findings: the list, the text, the exceptions that carry them."""

import copy
import ctypes
import math
import pickle

import pytest

import tavell
from tavell import _findings, _library
from tavell._library import LIBRARY

BAD_FILE = """{
  "tavell": 1,
  "nodes": [{"name": "a", "at": [0, 0, 0], "inlet": {"pressure": 3e5}},
            {"name": "b", "at": [10, 0, 0], "outlet": {"pressure": 1e5}}],
  "elements": [{"name": "p", "type": "pipe", "from": "a", "to": "c", "diamter": 0.1}]
}"""


def findings_of(text):
    with pytest.raises(tavell.BadInput) as caught:
        tavell.Network.from_json(text, name="house.json")
    return caught.value.findings


def test_a_finding_has_code_severity_message_remedy_and_place():
    (finding,) = findings_of(BAD_FILE).with_code("unknown-key")
    assert finding.severity == "error"
    assert finding.message == 'the key "diamter" is unknown here'
    assert finding.remedy == 'did you mean "diameter"?'
    assert finding.file == "house.json"
    assert finding.line == 5
    assert finding.pointer == "/elements/0/diamter"
    assert finding.object == "element p"
    assert finding.where == "house.json:5: /elements/0/diamter (element p)"


def test_everything_that_is_wrong_is_found():
    assert {"unknown-key", "unknown-node", "missing-key"} <= set(findings_of(BAD_FILE).codes)


@pytest.mark.parametrize("text", [BAD_FILE, "{", '{"tavell": 2}', '{"a\\u0007": 1}', "[1, 2"])
def test_the_text_is_that_of_the_kit(text):
    address = LIBRARY.tvkNewFindings()
    network = ctypes.c_void_p()
    data = text.encode()
    status = LIBRARY.tvkReadNetworkText(data, len(data), b"house.json", ctypes.byref(network), address)
    words = ctypes.c_void_p()
    LIBRARY.tvkFindingsText(address, ctypes.byref(words))
    expected = _library.take_text(words)
    LIBRARY.tvkFreeFindings(address)
    assert status == _library.BAD_INPUT
    if text.startswith("{"):
        assert str(findings_of(text)) + "\n" == expected


def test_the_exception_says_what_is_wrong_in_words():
    with pytest.raises(tavell.BadInput) as caught:
        tavell.Network.from_json(BAD_FILE, name="house.json")
    assert 'house.json:5: /elements/0/diamter (element p): the key "diamter" is unknown here' in str(
        caught.value
    )
    assert isinstance(caught.value, ValueError)
    assert isinstance(caught.value, tavell.Error)
    assert caught.value.result is None


def test_a_long_exception_is_cut_and_says_so():
    many = ", ".join(f'"k{i}": 1' for i in range(50))
    with pytest.raises(tavell.BadInput) as caught:
        tavell.Network.from_json("{" + many + "}")
    lines = str(caught.value).split("\n")
    assert len(lines) == 21
    assert lines[-1] == f"... and {len(caught.value.findings) - 20} more, see .findings"


def test_the_list_is_a_sequence():
    findings = findings_of(BAD_FILE)
    assert findings[0] == list(findings)[0]
    assert findings[0] in findings
    assert findings[-1:] == tavell.Findings([findings[-1]])
    assert len(findings + findings) == 2 * len(findings)
    assert findings == copy.deepcopy(findings)
    assert findings.count(findings[0]) == 1
    assert bool(findings) and not tavell.Findings()
    assert len({findings, copy.copy(findings)}) == 1
    assert findings != tavell.Findings()
    assert findings != "text"


def test_severities_are_counted_and_sorted():
    rows = [
        tavell.Finding("low", "remark", "a remark"),
        tavell.Finding("high", "error", "an error", "mend it"),
        tavell.Finding("middle", "warning", "a warning"),
    ]
    findings = tavell.Findings(rows)
    assert findings.worst_first().codes == ["high", "middle", "low"]
    assert findings.errors.codes == ["high"]
    assert findings.warnings.codes == ["middle"]
    assert findings.remarks.codes == ["low"]
    assert findings.summary() == "1 error, 1 warning, 1 remark"
    assert repr(findings + findings) == "<Findings: 2 errors, 2 warnings, 2 remarks>"
    assert str(findings[1]) == "an error; mend it [high]"
    with pytest.raises(ValueError, match="there is no severity 'fatal'"):
        findings.of("fatal")


def test_more_of_a_kind_than_are_kept_are_counted():
    # The kit keeps 1000 findings of a code.
    network = tavell.Network()
    with pytest.raises(tavell.BadInput) as caught:
        network.node_positions([f"n{i}" for i in range(1200)])
    findings = caught.value.findings
    assert len(findings) == 1000
    assert findings.count("error") == 1200
    assert findings.errors.count("error") == 1200
    assert str(findings).endswith("\n200 more errors are not shown")


def test_numbers_have_names_and_units():
    number = tavell.Number("velocity", 3.5, "m/s")
    finding = tavell.Finding("c", "warning", "fast", numbers=(number,))
    assert finding.number("velocity") == 3.5
    with pytest.raises(KeyError):
        finding.number("colour")


def test_numbers_come_from_the_kit():
    network = tavell.Network()
    network.add_node("a", inlet={"pressure": 5e5})
    network.add_node("b", 10, outlet={"pressure": 0})
    network.add_pipe("p", "a", "b", 0.05)
    (finding,) = network.solve().diagnose().with_code("velocity-above-limit")
    velocity = finding.number("velocity")
    assert velocity == pytest.approx(network.solve().element("p")["velocity"])
    assert finding.numbers[0].unit == "m/s"
    assert finding.objects == ("element p",)


def test_what_is_no_number_is_nan():
    entry = {"code": "c", "severity": "remark", "message": "m", "remedy": ""}
    found = _findings._finding_of({**entry, "numbers": [{"name": "x", "value": None, "unit": ""}]})
    assert math.isnan(found.number("x"))


def test_notebooks_get_a_table_without_the_markup_of_the_network():
    finding = tavell.Finding("c", "error", "<b>bad</b>", object="node <script>")
    page = tavell.Findings([finding])._repr_html_()
    assert "&lt;b&gt;bad&lt;/b&gt;" in page
    assert "<script>" not in page
    assert "1 error, no warnings, no remarks" in page


def test_memory_that_runs_out_is_an_internal_error():
    network = tavell.Network()
    network.add_nodes(["a", "b"])
    curve = [(0, 4e5), (1e-3, 3.9e5), (2e-3, 3.5e5), (3e-3, 2.5e5)]
    network.add_pump("p", "a", "b", curve)
    with pytest.raises(tavell.InternalError) as caught:
        network._live.change(LIBRARY.tvkSetCurve, 0, 2**60, 8, 8)
    assert caught.value.findings.codes == ["out-of-memory"]
    assert "larger than memory" in str(caught.value)


def test_a_status_without_a_finding_is_an_internal_error_that_says_so():
    with pytest.raises(tavell.InternalError) as caught:
        _findings.checked(lambda findings: _library.INTERNAL)
    assert caught.value.findings.codes == ["internal-error"]


@pytest.mark.parametrize(
    "kind", [tavell.BadInput, tavell.NotConverged, tavell.Cancelled, tavell.InternalError]
)
def test_exceptions_can_be_pickled(kind):
    findings = tavell.Findings([tavell.Finding("c", "error", "m", numbers=(tavell.Number("x", 1.0, ""),))])
    again = pickle.loads(pickle.dumps(kind(findings)))
    assert type(again) is kind
    assert again.findings == findings
    assert str(again) == str(kind(findings))
