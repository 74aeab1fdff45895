"""Puts the outcomes of scripts/desktops into the documentation: table.py RESULTS DOCUMENT RELEASE

RESULTS contains a folder for each desktop. The table of a release is written between two markers in the
document.
"""

import json
import sys
from pathlib import Path

SCRIPTS = Path(__file__).parents[1]
sys.path[:0] = [str(SCRIPTS), str(SCRIPTS.parent / "Tests/EndToEnd")]
from real_desktops.names import CHECKS, DESKTOPS  # noqa: E402

SIGNS = {"passed": "yes", "failed": "**no**", "impossible": "–"}


def main():
    results, document, release = Path(sys.argv[1]), Path(sys.argv[2]), sys.argv[3]
    outcomes = {name: json.loads(path.read_text()) for name in DESKTOPS
                if (path := results / name / "outcomes.json").exists()}
    text = document.read_text()
    start, end = f"<!-- desktops: {release} -->\n", "<!-- end -->"
    before, marked, rest = text.partition(start)
    if not marked:
        sys.exit(f"{document} has no marker for a table of {release}")
    _, _, after = rest.partition(end)
    document.write_text(before + start + table(outcomes) + end + after)


def table(outcomes):
    titles = [f"{DESKTOPS[name]} {found['version']}" for name, found in outcomes.items()]
    lines = [row("", *titles), row("---", *("---" for _ in titles))]
    notes = []
    for check, title in CHECKS.items():
        cells = [cell(outcomes[name], check, DESKTOPS[name], title, notes) for name in outcomes]
        lines.append(row(title, *cells))
    lines += [""] + [f"{number}. {note}" for number, note in enumerate(notes, 1)]
    return "\n".join(lines).rstrip() + "\n"


def cell(found, check, desktop, title, notes):
    outcome = next((each for each in found["checks"] if each["check"] == check), None)
    if outcome is None:
        return "not tested"
    sign = SIGNS[outcome["result"]]
    if outcome["result"] == "passed":
        return sign
    note = outcome["text"]
    if outcome["result"] == "failed":
        note = f"{desktop}, {title[0].lower()}{title[1:]}: {note}"
    if note not in notes:
        notes.append(note)
    return f"{sign} ({notes.index(note) + 1})"


def row(*cells):
    return "| " + " | ".join(cells) + " |"


if __name__ == "__main__":
    main()
