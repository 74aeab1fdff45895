"""Runs clang-tidy on the sources of a build that changed since they last passed.

    lint.py BUILD CHECKS FOLDERS PASSED

A source counts as changed when its own text, a header that it includes, its compiler options, the checks
or the linter changed. FOLDERS is a pattern for the first part of the paths below the repository. PASSED is
a file with a digest for each source that passed, shared by all clones.

Sources that the build combines are linted together, because most of the linter's work is in the headers
that they share. If something is found, each of them is linted by itself, so the result does not depend on
the others. The few checks that look only at the main file find nothing in combined sources.
"""

import collections
import concurrent.futures
import functools
import hashlib
import json
import os
import pathlib
import re
import shlex
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
DIGESTS_KEPT = 5000  # Enough for a dozen versions of every source.


def text_of(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


@functools.cache
def digest_of(path):
    return hashlib.sha256(pathlib.Path(path).read_bytes()).hexdigest()


def included_files(build):
    """The files that each object was made from, as the compiler reported them to ninja."""
    objects = {}
    for entry in text_of("ninja", "-C", build, "-t", "deps").split("\n\n"):
        head, *files = entry.splitlines() or [""]
        if found := re.match(r"(.+): #deps .*\(VALID\)", head):  # Others belong to removed sources.
            objects[found[1]] = [os.path.join(build, file.strip()) for file in files]
    return objects


def combined_sources(file):
    """The sources that a file combines, or the file itself if it is a source."""
    if "/Unity/" not in file:
        return [file]
    return re.findall('^#include "(.+)"$', pathlib.Path(file).read_text(), re.MULTILINE)


Unit = collections.namedtuple("Unit", "file sources options digest")


def units(build, folders, settings):
    """What the compiler is called with in these folders."""
    objects = included_files(build)
    for entry in json.loads(pathlib.Path(build, "compile_commands.json").read_text()):
        sources = combined_sources(entry["file"])
        if re.match(f"({folders})/", os.path.relpath(sources[0], ROOT)):
            command = entry["command"].replace(str(ROOT), ".")
            compiler, *options = shlex.split(entry["command"])
            at = options.index("-o")
            files = objects[options[at + 1]]
            parts = [settings, command] + sorted(digest_of(file) for file in files)
            digest = hashlib.sha256("\n".join(parts).encode()).hexdigest()
            yield Unit(entry["file"], sources, options[:at], digest)


def complaints(checks, source, options):
    """What the linter says of a source, or None."""
    result = subprocess.run(
        ["clang-tidy", "-quiet", f"-config-file={ROOT / '.clang-tidy'}", f"-checks={checks}", source, "--",
         *options, "-Wno-unknown-warning-option"],
        cwd=ROOT, capture_output=True, text=True)
    failed = result.returncode != 0 or "warning:" in result.stdout
    return result.stdout + result.stderr if failed else None


def lint(checks, unit):
    """What the linter says of each source of the unit that does not pass."""
    together = len(unit.sources) > 1
    if together and not complaints(f"{checks},-bugprone-suspicious-include", unit.file, unit.options):
        return {}
    said = {source: complaints(checks, source, unit.options) for source in unit.sources}
    return {source: text for source, text in said.items() if text}


def main(build, checks, folders, passed_file):
    build = str(pathlib.Path(build).resolve())
    passed_file = pathlib.Path(passed_file)
    passed = passed_file.read_text().split() if passed_file.exists() else []
    settings = "\n".join([checks, text_of("clang-tidy", "--version"), digest_of(ROOT / ".clang-tidy")])
    wanted = list(units(build, folders, settings))
    known = set(passed)
    changed = [unit for unit in wanted if unit.digest not in known]
    changed.sort(key=lambda unit: -len(unit.sources))  # So that no long one is left for the end.
    print(f"Changed since they last passed: {len(changed)} of {len(wanted)}.")
    failed = set()
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        for unit, said in zip(changed, pool.map(functools.partial(lint, checks), changed)):
            print(*said.values(), sep="", end="", flush=True)
            if said:
                failed.add(unit.digest)
    good = [unit.digest for unit in wanted if unit.digest not in failed]
    passed_file.parent.mkdir(parents=True, exist_ok=True)
    draft = passed_file.with_name(f"{passed_file.name}.{os.getpid()}")
    draft.write_text("\n".join(list(dict.fromkeys(good + passed))[:DIGESTS_KEPT]) + "\n")
    draft.replace(passed_file)
    return 1 if failed else 0


sys.exit(main(*sys.argv[1:]))
