"""Starts a desktop and tests the program in it: check.py NAME PLACE

Writes the result of each check to PLACE/results, as JSON, with a picture and evidence of failures.
"""

import json
import sys
from pathlib import Path

SCRIPTS = Path(__file__).parents[1]
sys.path[:0] = [str(SCRIPTS), str(SCRIPTS.parent / "Tests/EndToEnd")]
from real_desktops.checks import Checks  # noqa: E402
from real_desktops.desktops import DESKTOPS  # noqa: E402
from virtual_desktop import waiting  # noqa: E402

waiting.DEADLINE = 20.0  # Whole desktops are slow on a busy machine without a graphics card.


def main():
    name, place = sys.argv[1], Path(sys.argv[2])
    with DESKTOPS[name](place / "results") as desktop:
        checks = Checks(desktop, place)
        checks.run_all()
    outcomes = checks.outcomes
    (place / "results/outcomes.json").write_text(json.dumps(
        {"version": checks.version, "checks": outcomes}, indent=1, ensure_ascii=False))
    return 1 if any(outcome["result"] == "failed" for outcome in outcomes) else 0


sys.exit(main())
