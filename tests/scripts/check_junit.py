#!/usr/bin/python3
"""Holds a JUnit report of a rehearsal against the JSON report of the same one.

Reads it as pipelines do, with the junitparser library: the counts must add up, each step and each finding id have a case,
and a case fail where the rehearsal is to be stopped for it. Prints the counts and the cases that did not pass.
"""

import argparse
import json
import sys
from pathlib import Path
from typing import Any, Dict, List

import junitparser

SCHEMA = json.loads((Path(__file__).parents[2] / "docs/report.schema.json").read_text(encoding="utf-8"))
IDS = SCHEMA["$defs"]["finding_id"]["enum"]
LEVELS = ["note", "review", "stop"]
COUNTS = ("tests", "failures", "errors", "skipped")
WORK_NOT_DONE = (2, 5, 70)  # what the command exits with where it could not do its work

Report = Dict[str, Any]
Cases = Dict[str, junitparser.TestCase]


def outcome(case: junitparser.TestCase) -> str:
    return type(case.result[0]).__name__.lower() if case.result else "passed"


def counted(suite: junitparser.TestSuite) -> Dict[str, int]:
    """The counts by the cases themselves."""
    outcomes = [outcome(case) for case in suite]
    return {"tests": len(outcomes), "failures": outcomes.count("failure"), "errors": outcomes.count("error"),
            "skipped": outcomes.count("skipped")}


def wrong_counts(document: junitparser.JUnitXml) -> List[str]:
    suites = list(document)
    told = {name: getattr(document, name) for name in COUNTS}
    if len(suites) != 1:
        return [f"{len(suites)} suites"]
    ours = counted(suites[0])
    return [f"{what} {theirs} for {ours}"
            for what, theirs in (("the document counts", told),
                                 ("the suite counts", {name: getattr(suites[0], name) for name in COUNTS}))
            if theirs != ours]


def fails(report: Report, finding: Dict[str, Any]) -> bool:
    wanted = report["inputs"]["options"]["fail_on"]
    return finding["id"] in ("ended", "not-valid") or (
        wanted in LEVELS and LEVELS.index(finding["severity"]) >= LEVELS.index(wanted))


def expected_of_finding(report: Report, name: str) -> str:
    found = [finding for finding in report["findings"] if finding["id"] == name]
    if any(fails(report, finding) for finding in found):
        return "error" if name == "ended" else "failure"
    if found:
        return "passed"
    options = report["inputs"]["options"]
    not_asked = (name == "again" and not options["again"]) or (name == "not-valid" and not options["commit_check"])
    return "skipped" if report["ended"] or not_asked else "passed"


def expected_of_step(report: Report, step: Dict[str, Any]) -> str:
    if report["ended"] and report["ended"]["last"]["step"] == step["name"]:
        return "error"
    if step["outcome"] in ("did not run", "ended"):
        return "skipped"
    told = any(finding["id"] == "step-failed" and fails(report, finding)
               and any(place["text"] == step["title"] for place in finding["places"]) for finding in report["findings"])
    return "failure" if told else "passed"


def wrong_findings(report: Report, cases: Cases) -> List[str]:
    wrong = [f"finding {name}: {outcome(cases[name])} for {expected_of_finding(report, name)}"
             for name in IDS if outcome(cases[name]) != expected_of_finding(report, name)]
    for finding in report["findings"]:
        case = cases[finding["id"]]
        text = case.system_out if outcome(case) == "passed" else case.result[0].text
        if finding["sentence"].isprintable() and finding["sentence"] not in text:
            wrong.append(f"finding {finding['id']}: {finding['sentence']!r} is not told")
        if fails(report, finding) and finding["sentence"].isprintable() \
                and finding["sentence"] not in case.result[0].message:
            wrong.append(f"finding {finding['id']}: {finding['sentence']!r} is not in its message")
    return wrong


def mistakes(document: junitparser.JUnitXml, report: Report) -> List[str]:
    suite = next(iter(document))
    groups: Dict[str, Cases] = {"rehearsal": {}, "steps": {}, "findings": {}}
    for case in suite:
        configuration, group = case.classname.rsplit(".", 1)
        if configuration != report["inputs"]["configuration"]["name"]:
            return [f"a case of {configuration}"]
        groups[group][case.name] = case
    wrong = wrong_counts(document)
    failed = suite.failures + suite.errors > 0
    if failed != (report["exit_status"] != 0):
        wrong.append(f"{suite.failures} failures and {suite.errors} errors at exit status {report['exit_status']}")
    if bool(groups["rehearsal"]) != (report["exit_status"] in WORK_NOT_DONE):
        wrong.append(f"{len(groups['rehearsal'])} rehearsals at exit status {report['exit_status']}")
    if report["verdict"] is None or (groups["rehearsal"] and not groups["findings"]):
        return wrong + (["more than the error"] if groups["steps"] or groups["findings"] else [])
    if sorted(groups["findings"]) != sorted(IDS):
        return wrong + [f"the findings are {sorted(groups['findings'])}"]
    if list(groups["steps"]) != [step["name"] for step in report["steps"]]:
        return wrong + [f"the steps are {list(groups['steps'])}"]
    wrong += [f"step {step['name']}: {outcome(groups['steps'][step['name']])} for {expected_of_step(report, step)}"
              for step in report["steps"]
              if outcome(groups["steps"][step["name"]]) != expected_of_step(report, step)]
    return wrong + wrong_findings(report, groups["findings"])


def main() -> int:
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("junit", type=Path)
    parser.add_argument("json", type=Path)
    arguments = parser.parse_args()
    document = junitparser.JUnitXml.fromfile(str(arguments.junit))
    wrong = mistakes(document, json.loads(arguments.json.read_text(encoding="utf-8")))
    for line in wrong:
        print(f"mistake: {line}")
    suite = next(iter(document))
    print(f"{suite.name}: {suite.tests} cases, {suite.failures} failures, {suite.errors} errors, {suite.skipped} skipped")
    for case in suite:
        if outcome(case) != "passed":
            print(f"{outcome(case)}: {case.name}: {case.result[0].message}")
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())
