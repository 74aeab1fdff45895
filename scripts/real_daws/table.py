"""Puts the outcomes of scripts/daws into the documentation: table.py RESULTS DOCUMENT

RESULTS contains a folder for each program or group that was tested. The tables are written between two
markers in the document.
"""

import json
import sys
from pathlib import Path

NAMES = ("ardour", "audacity", "lmms", "qtractor", "rosegarden", "wine", "exporters")
START, END = "<!-- daws -->\n", "<!-- end -->"


def main():
    results, document = Path(sys.argv[1]), Path(sys.argv[2])
    outcomes = {name: json.loads(path.read_text()) for name in NAMES
                if (path := results / name / "outcomes.json").exists()}
    before, marked, rest = document.read_text().partition(START)
    if not marked:
        sys.exit(f"{document} has no marker for the tables")
    document.write_text(before + START + text(outcomes) + END + rest.partition(END)[2])


def text(outcomes):
    lines = [f"Tested with: {versions(outcomes)}.", "",
             "| DAW | open files of its session, and how soon the session is found | another session "
             "in the same program |", "|---|---|---|"]
    sessions = [each for outcome in outcomes.values() for each in outcome["sessions"]]
    for program in dict.fromkeys(each["program"] for each in sessions):
        first, *others = [found(each) for each in sessions if each["program"] == program]
        lines.append(row(program, first, "; ".join(others) or "not tested"))
    lines += ["", "| program | export | on disk | lasted | asked | after its end | copy |",
              "|---|---|---|---:|---|---:|---|"]
    for outcome in outcomes.values():
        lines += [export(each) for each in outcome["exports"]]
    failures = [failure for outcome in outcomes.values()
                for failure in outcome.get("untried", []) + outcome["failures"]]
    if failures:
        lines += ["", "Could not be tested completely:", "", *(f"- {failure}" for failure in failures)]
    return "\n".join(lines) + "\n"


def versions(outcomes):
    named = {package: version for outcome in outcomes.values()
             for package, version in outcome["versions"].items()}
    return ", ".join(f"{package} {version}" for package, version in named.items())


def found(session):
    holds = ", ".join(f"`{name}`" for name in session["holds"]) or "nothing"
    seconds = session["seconds"]
    return f"{holds}: not found" if seconds is None else f"{holds}: {seconds:.1f} s"


def export(seen):
    asked = {0: "not asked", 1: "once"}.get(seen["asked"], f"{seen['asked']} times")
    if seen["early"]:
        asked += f", {seen['early']} too early"
    after = "–" if seen["after"] is None else f"{seen['after']:.1f} s"
    return row(seen["program"], seen["export"], seen["on_disk"], f"{seen['took']:.1f} s", asked, after,
               "–" if seen["copy"] == "none" else seen["copy"])


def row(*cells):
    return "| " + " | ".join(cells) + " |"


if __name__ == "__main__":
    main()
