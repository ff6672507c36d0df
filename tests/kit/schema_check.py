"""The published schema of network files is a valid schema, takes every example and refuses broken files.

Usage: schema_check.py [SOURCE_FOLDER]. Needs python3-jsonschema; without it the check is skipped (exit status 77).
"""
import copy
import json
import pathlib
import sys

try:
    import jsonschema
except ImportError:
    print("skipped: python3-jsonschema is not installed")
    sys.exit(77)

SOURCE = pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else pathlib.Path(__file__).parents[2])

# A network with something of everything that the schema knows.
EVERYTHING = {
    "$schema": "urn:tavell:schema:network:1",
    "tavell": 1,
    "title": "Everything",
    "source": "made up",
    "answer": {"text": "none", "tolerance": 0.1, "nodes": {"a": {"pressure": "1 bar"}},
               "elements": {"1": {"mass_flow": 0.1}}},
    "units": {"pressure": "bar", "diameter": "mm"},
    "result_units": {"volume_flow": "l/min"},
    "fluid": {"name": "ethylene glycol", "temperature": "20 degC", "concentration": 0.3},
    "gravity": [0, 0, -1],
    "coordinates": "schematic",
    "settings": {"minor_loss": "specified", "friction": "colebrook", "temperatures": True,
                 "viscosity_follows_temperature": False, "pressure_datum": "1 bar", "velocity_limit": 3},
    "materials": {"old iron": {"roughness": "1 mm", "source": "measured"}},
    "fittings": {"strainer": {"k": 3}},
    "curves": {"p": {"points": [[0, 3], ["1 l/s", 2], ["2 l/s", 1], ["3 l/s", "20 kPa"]], "reference_density": 998}},
    "nodes": [
        {"name": "a", "at": [0, "2 ft", 0], "inlet": {"pressure": 3, "temperature": 300}, "description": "start"},
        {"name": "b", "at": [1, 0, 0], "outlet": {"pressure": 3, "mass_flow": "0.1 kg/s"}},
        {"name": "c", "at": [2, 0, 0], "outlet": {"volume_flow": "12 l/min"}},
    ],
    "elements": [
        {"name": "1", "type": "pipe", "from": "a", "to": "b", "diameter": "25 mm", "length": 10, "material": "old iron",
         "fittings": ["exit", {"fitting": "strainer", "count": 2}], "heat": {"wall_temperature": "20 degC"},
         "closed": False, "check_valve": True, "vertices": [[0, 1], [0, 1, 2]]},
        {"name": "2", "type": "pump", "from": "b", "to": "c", "curve": "p"},
        {"name": "3", "type": "kv_valve", "from": "b", "to": "c", "wetted_perimeter": 90, "area": "4 cm2", "kv": 3},
    ],
    "scenarios": {"night": {"nodes": {"b": {"outlet": {"mass_flow": None}}}, "elements": {"2": {"closed": True}},
                            "fluid": "water", "settings": {"friction": None}, "gravity": [0, 0, 0]}},
}


def broken_copies():
    """Yields (what is broken, document)."""
    def changed(what, change):
        document = copy.deepcopy(EVERYTHING)
        change(document)
        return what, document

    yield changed("unknown key", lambda d: d.update(nods=[]))
    yield changed("other version", lambda d: d.update(tavell=2))
    yield changed("no nodes", lambda d: d.pop("nodes"))
    yield changed("unknown unit of a text", lambda d: d["elements"][0].update(diameter="25 mn"))
    yield changed("unit of another quantity", lambda d: d["elements"][0].update(diameter="25 bar"))
    yield changed("negative diameter", lambda d: d["elements"][0].update(diameter=-1))
    yield changed("unknown declared unit", lambda d: d["units"].update(pressure="m"))
    yield changed("key of another type of element", lambda d: d["elements"][1].update(roughness=0))
    yield changed("no section", lambda d: d["elements"][0].pop("diameter"))
    yield changed("unknown type of element", lambda d: d["elements"][0].update(type="tube"))
    yield changed("inlet and outlet", lambda d: d["nodes"][0].update(outlet={"pressure": 0}))
    yield changed("two flows", lambda d: d["nodes"][2]["outlet"].update(mass_flow=1))
    yield changed("nothing imposed", lambda d: d["nodes"][2].update(outlet={}))
    yield changed("short curve", lambda d: d["curves"]["p"].update(points=[[0, 1]]))
    yield changed("renaming scenario", lambda d: d["scenarios"]["night"]["nodes"]["b"].update(name="x"))
    yield changed("two kinds of heat", lambda d: d["elements"][0]["heat"].update(heat=1))


def main():
    with open(SOURCE / "kit" / "schema" / "network-1.schema.json", encoding="utf-8") as file:
        schema = json.load(file)
    jsonschema.Draft202012Validator.check_schema(schema)
    validator = jsonschema.Draft202012Validator(schema)
    failures = []
    examples = sorted((SOURCE / "examples" / "networks").glob("*.json"))
    if not examples:
        failures.append("there are no examples")
    for path in examples:
        document = json.loads(path.read_text(encoding="utf-8"))
        failures += [f"{path.name}: {error.json_path}: {error.message}" for error in validator.iter_errors(document)]
    failures += [f"everything: {error.json_path}: {error.message}" for error in validator.iter_errors(EVERYTHING)]
    failures += [f"taken although broken: {what}" for what, document in broken_copies() if validator.is_valid(document)]
    for failure in failures:
        print(failure)
    print(f"{len(examples)} examples, {len(failures)} failures")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
