#!/usr/bin/python3
"""Holds the JSON reports of the tests to docs/report.schema.json.

Each test that makes a report of `bgp-rehearse run` leaves it in the folder that BGP_JSON_REPORTS names. `begin` empties the
folder before the tests run, but for the report of an example; afterwards, what they left there is looked at."""

import copy
import json
import os
import pathlib
import subprocess
import sys
import unittest
from typing import Any, Callable, Dict, List, Optional

import fastjsonschema
import jsonschema

ROOT = pathlib.Path(__file__).resolve().parents[2]
os.environ["XDG_CONFIG_HOME"] = "/nonexistent"  # no bgp-rehearse.toml of one's own counts
FOLDER = pathlib.Path(os.environ["BGP_JSON_REPORTS"])
SCHEMA = json.loads((ROOT / "docs/report.schema.json").read_text(encoding="utf-8"))

# Fifteen times as fast as the one below, which can tell what is wrong in fewer words, and more exactly.
is_report = fastjsonschema.compile(SCHEMA)

Document = Dict[str, Any]


def validator() -> jsonschema.Draft202012Validator:
    return jsonschema.Draft202012Validator(SCHEMA)


def reports() -> List[pathlib.Path]:
    return sorted(FOLDER.glob("*.json"))


def mistake_in(document: Document) -> Optional[str]:
    try:
        is_report(document)
        return None
    except fastjsonschema.JsonSchemaException as wrong:
        error = jsonschema.exceptions.best_match(validator().iter_errors(document))
        return f"{error.json_path}: {error.message}" if error else wrong.message


def whole_report() -> Document:
    """A small report that has something of everything that wrong reports are made from."""
    row = {"path": "/router/bgp{2}", "list": "/router/bgp", "keys": {"as-number": "2"}, "within": [],
           "fate": "moved and changed", "from": {"path": "/router/bgp{1}", "keys": {"as-number": "1"}}, "step": None,
           "leaves": [{"name": "router-id", "before": None, "after": "192.0.2.1", "step": "update_router_bgp"}]}
    numbers = {name: 1 for name in ("stored", "kept", "changed", "moved", "moved_and_changed", "removed", "new", "result")}
    range_of = {"least": 0.1, "most": 0.2}
    return {
        "schema": 2, "version": "0.1.0", "exit_status": 0, "error": None, "verdict": "SAFE", "reason": "Nothing is lost.",
        "inputs": {"configuration": {"name": "x.xml", "sha256": "0" * 64},
                   "library": {"path": "x.so", "version": None, "sha256": None},
                   "options": {"fail_on": "stop", "severities": [], "max_entries": 1, "commit_check": False,
                               "again": False, "time_limit": 600.0, "memory_limit": None},
                   "assumptions": [{"name": "user profile", "value": "0", "option": "--user-profile", "given": False,
                                    "decided": []}]},
        "account": {**numbers, "lists": [{"path": "/router/bgp", **numbers}]},
        "findings": [{"id": "row-left", "severity": "note", "count": 1, "reason": "rows", "sentence": "1 row", "advice": None, "step": None,
                      "places": [{"path": "/router/bgp{1}", "text": "AS 1"}]}],
        "steps": [{"name": "update", "title": "choice of steps", "outcome": "ran", "text": "", "line": "", "runs": 1,
                   "reads": 1, "writes": 2, "failed_writes": 0}],
        "calls": {"maapi_create": {"calls": 1, "failures": 0}},
        "predicted": {"call_seconds": range_of, "connection_seconds": range_of, "calls": 1, "connections": 0,
                      "seconds": range_of, "steps": []},
        "failed_writes": [{"step": "update", "function": "maapi_create", "error": 2, "path": "/x", "class": "expected",
                           "sentence": "it is there"}],
        "faults": [], "returned": 0, "ended": None, "check": None, "changes": [row],
    }


WRONG: Dict[str, Callable[[Document], Any]] = {
    "a member too many": lambda report: report.update(more=1),
    "another schema": lambda report: report.update(schema=1),
    "no findings": lambda report: report.pop("findings"),
    "an unknown verdict": lambda report: report.update(verdict="FINE"),
    "a message at status 0": lambda report: report.update(error="odd"),
    "no message at status 5": lambda report: report.update(exit_status=5),
    "an account without a verdict": lambda report: report.update(verdict=None, reason=None, error="odd", exit_status=2),
    "a sum that is none": lambda report: report["inputs"]["configuration"].update(sha256="0" * 63),
    "an option too many": lambda report: report["inputs"]["options"].update(more=1),
    "a negative count": lambda report: report["account"].update(stored=-1),
    "a list without its path": lambda report: report["account"]["lists"][0].pop("path"),
    "an unknown finding": lambda report: report["findings"][0].update(id="odd"),
    "a place that is a text": lambda report: report["findings"][0].update(places=["/x"]),
    "an unknown outcome": lambda report: report["steps"][0].update(outcome="odd"),
    "a call that was not made": lambda report: report["calls"]["maapi_create"].update(calls=0),
    "a time as text": lambda report: report["predicted"].update(seconds="1 s"),
    "an unknown class": lambda report: report["failed_writes"][0].update({"class": "odd"}),
    "an unknown fate": lambda report: report["changes"][0].update(fate="odd"),
    "a move from nowhere": lambda report: report["changes"][0].pop("from"),
    "a new row from elsewhere": lambda report: report["changes"][0].update(fate="new"),
    "a key that is a number": lambda report: report["changes"][0]["keys"].update({"as-number": 2}),
    "a value that is a number": lambda report: report["changes"][0]["leaves"][0].update(after=2),
    "a leaf without its step": lambda report: report["changes"][0]["leaves"][0].pop("step"),
    "changes of an upgrade that ended": lambda report: report.update(
        exit_status=1, error="it ended", returned=None, account=None, predicted=None,
        ended={"kind": "exit", "function": "", "source": "", "line": 0, "text": "", "signal": 0, "status": 7,
               "last": {"step": "update", "reading": None, "writing": None, "function": None, "under_way": False,
                        "reads": 0, "writes": 0, "failed_writes": 0, "log": []}}),
}


class ReportSchema(unittest.TestCase):
    def test_is_a_schema(self) -> None:
        jsonschema.Draft202012Validator.check_schema(SCHEMA)

    def test_takes_a_whole_report(self) -> None:
        validator().validate(whole_report())
        self.assertIsNone(mistake_in(whole_report()))

    def test_refuses_wrong_reports(self) -> None:
        for what, spoil in WRONG.items():
            report = copy.deepcopy(whole_report())
            spoil(report)
            with self.subTest(what):
                self.assertFalse(validator().is_valid(report))
                self.assertIsNotNone(mistake_in(report))

    def test_takes_the_reports_of_the_tests(self) -> None:
        self.assertNotEqual(reports(), [], "not even that of the example is there")
        for path in reports():
            with self.subTest(path.name):
                self.assertIsNone(mistake_in(json.loads(path.read_text(encoding="utf-8"))))


def begin() -> None:
    FOLDER.mkdir(parents=True, exist_ok=True)
    for path in reports():
        path.unlink()
    subprocess.run([os.environ["BGP_REHEARSE"], "run", ROOT / "examples/edge-router.xml", f"--json={FOLDER}/example.json",
                    "--json-log", "--again", "--commit-check", "--fail-on", "never"], check=True, stdout=subprocess.DEVNULL)


if __name__ == "__main__":
    if sys.argv[1:] == ["begin"]:
        begin()
    else:
        unittest.main()
