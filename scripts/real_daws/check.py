"""Tests with one of the audio programs, or a group of them: check.py NAME PLACE

Writes the outcomes to PLACE/results, as JSON, with logs and evidence of failures.
"""

import importlib
import json
import subprocess
import sys
import traceback
from pathlib import Path

SCRIPTS = Path(__file__).parents[1]
sys.path[:0] = [str(SCRIPTS), str(SCRIPTS.parent / "Tests/EndToEnd")]
from real_daws.desktop import AudioDesktop  # noqa: E402
from virtual_desktop import waiting  # noqa: E402

waiting.DEADLINE = 20.0  # Whole programs are slow to start on a busy machine.


def version_of(package):
    text = subprocess.run(["dpkg-query", "-W", "-f=${Version}", package], capture_output=True,
                          text=True, check=True).stdout
    return text.split(":")[-1].split("-")[0].split("+")[0].split("~")[0]


def is_wrong(row):
    """A row without an expected number of prompts only documents what was observed."""
    if row["expected"] is None:
        return False
    return row["asked"] != row["expected"] or row["early"] or (
        row["asked"] and row["copy"] != "identical")


def main():
    name, place = sys.argv[1], Path(sys.argv[2])
    module = importlib.import_module(f"real_daws.{name}")
    rows = {"sessions": [], "exports": [], "failures": [], "untried": []}
    for trial in module.TRIALS:
        results = place / "results" / trial.__name__
        results.mkdir()
        with AudioDesktop(results) as desktop:
            try:
                trial(desktop, rows)
            except Exception as failure:  # The other trials must still run.
                desktop.keep_evidence(results / "failed")
                (results / "failed/error.txt").write_text(traceback.format_exc())
                what = (str(failure) or type(failure).__name__).splitlines()[0]
                rows["failures"].append(f"{trial.__name__.replace('_', ' ')}: {what}")
                print(f"  FAILED {trial.__name__}: {what}", flush=True)
    rows["failures"] += [f"{row['program']}, {row['export']}: {row}" for row in rows["exports"]
                         if is_wrong(row)]
    versions = {package: version_of(package) for package in module.PACKAGES}
    (place / "results/outcomes.json").write_text(
        json.dumps({"versions": versions} | rows, indent=1, ensure_ascii=False))
    for row in rows["sessions"] + rows["exports"]:
        print(" ", row, flush=True)
    return 1 if rows["failures"] else 0


sys.exit(main())
