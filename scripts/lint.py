"""Runs clang-tidy on the sources of a build that changed since they last passed.

    lint.py BUILD CHECKS SOURCES PASSED

A source counts as changed when its own text, a header that it includes, its compiler options, the checks
or the linter changed. SOURCES is a pattern for the paths below the repository. PASSED is a file with a
digest for each source that passed, shared by all clones.
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


def digests(build, pattern, settings):
    """The sources that match, each with the digest of all that its result depends on."""
    objects = included_files(build)
    entries = json.loads(pathlib.Path(build, "compile_commands.json").read_text())
    for entry in entries:
        source = os.path.relpath(entry["file"], ROOT)
        if re.match(pattern, source):
            command = entry["command"].replace(str(ROOT), ".")
            options = shlex.split(command)
            files = objects[options[options.index("-o") + 1]]
            parts = [settings, command] + sorted(digest_of(file) for file in files)
            yield source, hashlib.sha256("\n".join(parts).encode()).hexdigest()


def lint(build, checks, source):
    command = ["clang-tidy", "-quiet", "-p", build, "-checks=" + checks,
               "-extra-arg=-Wno-unknown-warning-option", source]
    return subprocess.run(command, cwd=ROOT, capture_output=True, text=True)


def main(build, checks, pattern, passed_file):
    build = str(pathlib.Path(build).resolve())
    passed_file = pathlib.Path(passed_file)
    passed = passed_file.read_text().split() if passed_file.exists() else []
    settings = "\n".join([checks, text_of("clang-tidy", "--version"), digest_of(ROOT / ".clang-tidy")])
    wanted = dict(digests(build, pattern, settings))
    known = set(passed)
    changed = [source for source, digest in wanted.items() if digest not in known]
    print(f"{len(changed)} of {len(wanted)} sources changed since they last passed.")
    failed = set()
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        results = pool.map(functools.partial(lint, build, checks), changed)
        for source, result in zip(changed, results):
            if result.returncode != 0 or "warning:" in result.stdout:
                failed.add(source)
                print(result.stdout, result.stderr, sep="")
    good = [digest for source, digest in wanted.items() if source not in failed]
    passed_file.parent.mkdir(parents=True, exist_ok=True)
    draft = passed_file.with_name(f"{passed_file.name}.{os.getpid()}")
    draft.write_text("\n".join(list(dict.fromkeys(good + passed))[:DIGESTS_KEPT]) + "\n")
    draft.replace(passed_file)
    return 1 if failed else 0


sys.exit(main(*sys.argv[1:]))
