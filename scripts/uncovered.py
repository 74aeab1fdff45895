"""Compares the lines that no test reached with the reasons in docs/coverage.md.

    uncovered.py LINES    the execution count of each line, as llvm-cov exports it for lcov
"""

import pathlib
import re
import sys

SOURCES = pathlib.Path("Sources").resolve()
REASONS = pathlib.Path("docs/coverage.md")
# Lines that belong to the line before or after them.
WITHOUT_WORK = ("{", "}", "};", "});", "else")


def counts_by_file(lines):
    """The execution counts by line number, for each file of Sources, by its path there."""
    counts, file = {}, None
    for line in pathlib.Path(lines).read_text().splitlines():
        kind, _, rest = line.partition(":")
        if kind == "SF":
            file = counts.setdefault(pathlib.Path(rest).resolve(), {})
        elif kind == "DA":
            number, count = rest.split(",")[:2]
            file[int(number)] = int(count)
    return {str(path.relative_to(SOURCES)): file
            for path, file in counts.items() if path.is_relative_to(SOURCES)}


def reasons():
    """The pairs of file name and line text for which there is a reason."""
    found, file = set(), None
    for line in REASONS.read_text().splitlines():
        if heading := re.fullmatch(r"### (\S+)", line):
            file = heading[1]
        elif reason := re.match(r"- `(.+?)`:", line):
            found.add((file, reason[1]))
    return found


def main(lines):
    known, needed, problems = reasons(), set(), []
    total = missed_in_all = 0
    for name, counts in sorted(counts_by_file(lines).items()):
        text = (SOURCES / name).read_text().splitlines()
        missed = sorted(number for number, count in counts.items()
                        if count == 0 and text[number - 1].strip() not in WITHOUT_WORK)
        total += len(counts)
        missed_in_all += len(missed)
        print(f"{100 - 100 * len(missed) / len(counts):6.1f} %  {name}")
        for number in missed:
            line = (name, text[number - 1].strip())
            needed.add(line)
            print(f"            {number}: {line[1]}")
            if line not in known:
                problems.append(f"{name}:{number} is not reached and has no reason: {line[1]}")
    print(f"{100 - 100 * missed_in_all / total:6.1f} %  of all {total} lines")
    for file, line in sorted(known - needed):  # No failure, because some are reached by coincidence.
        print(f"{file}: there is a reason for a line that this run reached: {line}")
    sys.exit("\n".join(problems) or 0)


if __name__ == "__main__":
    main(sys.argv[1])
