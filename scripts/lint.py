"""Runs clang-tidy on the sources of a build that changed since they last passed.

    lint.py BUILD CHECKS SOURCES PASSED MOST

A source counts as changed when its own text, a header that it includes, its compiler options, the checks
or the linter changed. SOURCES is a pattern for the paths below the repository. PASSED is a file with a
digest for each source that passed, shared by all clones.

At most MOST sources are linted together, as one source that includes them. Together, twelve sources take
about as long as three, because they include the same headers. If something is found, each of them is
linted by itself, so the result does not depend on the others. The few checks that look only at the main
file find nothing in sources linted together.
"""

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
import tempfile
from collections import defaultdict

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


def sources(build, pattern, settings):
    """The sources that match: path, digest of all that the result depends on, and compiler options."""
    objects = included_files(build)
    entries = json.loads(pathlib.Path(build, "compile_commands.json").read_text())
    for entry in entries:
        source = os.path.relpath(entry["file"], ROOT)
        if re.match(pattern, source):
            command = entry["command"].replace(str(ROOT), ".")
            compiler, *options = shlex.split(entry["command"])
            at = options.index("-o")
            files = objects[options[at + 1]]
            parts = [settings, command] + sorted(digest_of(file) for file in files)
            digest = hashlib.sha256("\n".join(parts).encode()).hexdigest()
            yield source, digest, tuple(options[:at])


def batches(changed, most):
    """The sources in groups of at most `most` with the same compiler options."""
    by_options = defaultdict(list)
    for source, _, options in changed:
        by_options[options].append(source)
    for options, group in by_options.items():
        for start in range(0, len(group), most):
            yield options, group[start:start + most]


def complaints(*command):
    result = subprocess.run(["clang-tidy", "-quiet", *command], cwd=ROOT, capture_output=True, text=True)
    failed = result.returncode != 0 or "warning:" in result.stdout
    return result.stdout + result.stderr if failed else None


def lint_alone(build, checks, source):
    return complaints("-p", build, "-checks=" + checks, "-extra-arg=-Wno-unknown-warning-option", source)


def passes_together(checks, options, group):
    with tempfile.NamedTemporaryFile("w", suffix=".cpp") as together:
        together.writelines(f'#include "{ROOT / source}"\n' for source in group)
        together.flush()
        return not complaints(
            f"-config-file={ROOT / '.clang-tidy'}", f"-checks={checks},-bugprone-suspicious-include",
            together.name, "--", *options, "-Wno-shadow", "-Wno-unknown-warning-option")


def lint(build, checks, batch):
    """What the linter says of each source of the batch that does not pass."""
    options, group = batch
    if len(group) > 1 and passes_together(checks, options, group):
        return {}
    said = {source: lint_alone(build, checks, source) for source in group}
    return {source: text for source, text in said.items() if text}


def main(build, checks, pattern, passed_file, most):
    build = str(pathlib.Path(build).resolve())
    passed_file = pathlib.Path(passed_file)
    passed = passed_file.read_text().split() if passed_file.exists() else []
    settings = "\n".join([checks, text_of("clang-tidy", "--version"), digest_of(ROOT / ".clang-tidy")])
    wanted = list(sources(build, pattern, settings))
    known = set(passed)
    changed = [each for each in wanted if each[1] not in known]
    print(f"{len(changed)} of {len(wanted)} sources changed since they last passed.")
    failed = set()
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        for said in pool.map(functools.partial(lint, build, checks), batches(changed, int(most))):
            print(*said.values(), sep="", end="", flush=True)
            failed.update(said)
    good = [digest for source, digest, _ in wanted if source not in failed]
    passed_file.parent.mkdir(parents=True, exist_ok=True)
    draft = passed_file.with_name(f"{passed_file.name}.{os.getpid()}")
    draft.write_text("\n".join(list(dict.fromkeys(good + passed))[:DIGESTS_KEPT]) + "\n")
    draft.replace(passed_file)
    return 1 if failed else 0


sys.exit(main(*sys.argv[1:]))
