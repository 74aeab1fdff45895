"""python3 scripts/drives_checks PROGRAMS FOLDER [DRIVE...]: run as root, in a separate mount namespace."""

import os
import platform
import shutil
import sys
import tempfile
import time

from checks import Checks, Fault
from mounts import DRIVES

COLUMNS = ["both_ways", "dates", "odd_names", "full_disk", "kills", "watching", "hanging", "disconnection"]
HEADINGS = ["drive", "copied there and back", "date", "odd names", "full disk", "killed", "watched",
            "daemon stopped", "disconnected"]


def attempt(name, column, check):
    start = time.monotonic()
    try:
        outcome = check()
    except (Fault, OSError, TimeoutError) as fault:
        outcome = f"**FAILED:** {fault}"
    print(f"{name:20} {column:10} {time.monotonic() - start:6.1f} s  {outcome}", flush=True)
    return outcome


def row(name, programs, folder):
    home = os.path.join(folder, "home")
    try:
        drive = DRIVES[name](folder)
    except (OSError, TimeoutError, AttributeError) as error:
        return [name] + [f"not tested: {error}"] * len(COLUMNS)
    except Exception as error:  # Only the message of the failed command gives the reason.
        text = getattr(error, "stderr", b"") or str(error).encode()
        why = text.decode(errors="replace").strip().splitlines()[-1]
        return [name] + ["not tested: " + why] * len(COLUMNS)
    try:
        checks = Checks(programs, drive, home)
        return [name] + [attempt(name, column, getattr(checks, column)) for column in COLUMNS]
    finally:
        drive.unmount()


def main():
    programs, build, *names = sys.argv[1:]
    unknown = [name for name in names if name not in DRIVES]
    if unknown:
        sys.exit(f"no drive named {unknown[0]} ({', '.join(DRIVES)})")
    rows = []
    for name in names or DRIVES:
        folder = tempfile.mkdtemp(prefix="drive-", dir=build)
        rows.append(row(name, programs, folder))
        shutil.rmtree(folder, ignore_errors=True)
    table = ["| " + " | ".join(HEADINGS) + " |", "|" + " --- |" * len(HEADINGS)]
    table += ["| " + " | ".join(cell.replace("|", "\\|") for cell in cells) + " |" for cells in rows]
    facts = f"Run on {time.strftime('%Y-%m-%d')} with Linux {platform.release().split('-')[0]}."
    text = facts + "\n\n" + "\n".join(table) + "\n"
    with open(os.path.join(build, "table.md"), "w", encoding="utf-8") as file:
        file.write(text)
    print("\n" + text)
    sys.exit(any("FAILED" in cell for cells in rows for cell in cells))


main()
