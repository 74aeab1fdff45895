"""Compares the lines that no test reached with the reasons in docs/coverage.md.

    uncovered.py LINES    the execution count of each line, as llvm-cov exports it for lcov
"""

import pathlib
import re
import sys

LAYER = pathlib.Path("Sources/StemvaultConnect").resolve()
REASONS = pathlib.Path("docs/coverage.md")


def counts_by_file(lines):
    """The execution counts by line number, for each file of the program's layer."""
    counts, file = {}, None
    for line in pathlib.Path(lines).read_text().splitlines():
        kind, _, rest = line.partition(":")
        if kind == "SF":
            file = counts.setdefault(pathlib.Path(rest).resolve(), {})
        elif kind == "DA":
            number, count = rest.split(",")[:2]
            file[int(number)] = int(count)
    return {path: file for path, file in counts.items() if path.parent == LAYER}


def reasons():
    """The pairs of file name and line text for which there is a reason."""
    found, file = set(), None
    for line in REASONS.read_text().splitlines():
        if heading := re.fullmatch(r"### (\S+)", line):
            file = heading[1]
        elif reason := re.match(r"- `(.+?)`: \w", line):
            found.add((file, reason[1]))
    return found


def main(lines):
    known, needed, problems = reasons(), set(), []
    total = missed_in_all = 0
    for path, counts in sorted(counts_by_file(lines).items()):
        text = path.read_text().splitlines()
        missed = sorted(number for number, count in counts.items() if count == 0)
        total += len(counts)
        missed_in_all += len(missed)
        print(f"{100 - 100 * len(missed) / len(counts):6.1f} %  {path.name}")
        for number in missed:
            line = (path.name, text[number - 1].strip())
            needed.add(line)
            print(f"            {number}: {line[1]}")
            if line not in known:
                problems.append(f"{path.name}:{number} is not reached and has no reason: {line[1]}")
    print(f"{100 - 100 * missed_in_all / total:6.1f} %  of all {total} lines")
    problems += [f"{file}: there is a reason for a line that is reached or gone: {line}"
                 for file, line in sorted(known - needed)]
    sys.exit("\n".join(problems) or 0)


if __name__ == "__main__":
    main(sys.argv[1])
