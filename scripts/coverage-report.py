#!/usr/bin/env python3
"""Says which branches of the module the tests have taken: coverage-report.py BUILD TRACEFILE

BUILD is a build folder of the preset "coverage" whose tests have run. Prints a table, writes a tracefile for gcovr, and
fails when a branch was not taken that tests/coverage-exclusions.txt does not explain, or when that file explains one
that was taken or is gone. The ways along which exceptions leave calls are the compiler's and not counted.
"""

import collections
import concurrent.futures
import json
import os
import pathlib
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
SOURCES = ROOT / "src"
EXCLUSIONS = ROOT / "tests" / "coverage-exclusions.txt"
GCOV = "x86_64-w64-mingw32-gcov-posix"

ANY = "any"


class Line:
    """What all objects and all instances of templates together did on a line of source."""

    def __init__(self):
        self.count = 0
        # Instances may differ in how many branches they have; those that do not are added up.
        self.shapes = {}

    def add(self, count, branches):
        self.count += count
        if branches:
            sums = self.shapes.setdefault(len(branches), [0] * len(branches))
            for i, taken in enumerate(branches):
                sums[i] += taken

    def branches(self):
        return [count for _, shape in sorted(self.shapes.items()) for count in shape]


class Exclusion:
    """Branches of the lines with this text that no test takes, and why."""

    def __init__(self, where, fields):
        self.where = where
        self.file = fields["file"]
        self.line = fields["line"]
        self.branches = fields["branch"].split()
        self.why = fields["why"]
        self.found = set()

    def explains(self, file, line, branch):
        if (file, line) != (self.file, self.line):
            return False
        if self.branches == [ANY]:
            self.found.add(ANY)
            return True
        if str(branch) in self.branches:
            self.found.add(str(branch))
            return True
        return False

    def stale(self):
        return [] if self.branches == [ANY] else [branch for branch in self.branches if branch not in self.found]


def read_exclusions():
    """Paragraphs of lines "KEY VALUE"; lines that begin with # count for nothing."""
    exclusions = []
    fields = {}
    lines = EXCLUSIONS.read_text(encoding="utf-8").splitlines()
    for number, line in enumerate(lines + [""], 1):
        if line.startswith("#"):
            continue
        if line:
            key, _, value = line.partition(" ")
            fields[key] = value.strip()
        elif fields:
            where = f"{EXCLUSIONS.relative_to(ROOT)}:{number - 1}"
            if set(fields) != {"file", "line", "branch", "why"}:
                sys.exit(f"{where}: an exclusion has a file, a line, a branch and a why")
            exclusions.append(Exclusion(where, fields))
            fields = {}
    return exclusions


def source_branches(branches):
    """The branches without those of calls that may throw: each of these is a pair, going on and leaving."""
    kept = []
    i = 0
    while i < len(branches):
        if i + 1 < len(branches) and branches[i + 1]["throw"]:
            i += 2
        else:
            kept.append(branches[i]["count"])
            i += 1
    return kept


def read_counts(notes):
    """gcov's counts of one object."""
    output = subprocess.run(
        [GCOV, "--json-format", "--branch-probabilities", "--stdout", notes.name],
        cwd=notes.parent,
        stdout=subprocess.PIPE,
        stderr=subprocess.DEVNULL,
        check=True,
    ).stdout
    return json.loads(output)


def all_notes(build):
    """The notes of each object as it was built, which count nothing, and those beside the counts of each set."""
    notes = [path for folder in ("src", "tests") for path in (build / folder).rglob("*.gcno")]
    for counts in (build / "counts").rglob("*.gcda"):
        # The first part is the set's number.
        parts = counts.relative_to(build / "counts").parts[1:]
        original = build.joinpath(*parts).with_suffix(".gcno")
        beside = counts.with_suffix(".gcno")
        if original.exists():
            beside.unlink(missing_ok=True)
            beside.symlink_to(original)
            notes.append(beside)
    return notes


def collect(build):
    files = collections.defaultdict(lambda: collections.defaultdict(Line))
    notes = all_notes(build)
    if not notes:
        sys.exit(f"Nothing in {build} counts anything.")
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        for counts in pool.map(read_counts, notes):
            for file in counts["files"]:
                path = pathlib.Path(counts["current_working_directory"], file["file"]).resolve()
                if not path.is_relative_to(SOURCES):
                    continue
                lines = files[str(path.relative_to(ROOT))]
                for line in file["lines"]:
                    lines[line["line_number"]].add(line["count"], source_branches(line["branches"]))
    return files


class Total:
    def __init__(self):
        self.lines = self.lines_run = self.branches = self.branches_taken = self.excluded = 0

    def add(self, other):
        for name, value in vars(other).items():
            setattr(self, name, getattr(self, name) + value)

    def row(self, name):
        return (
            f"{name:50} {self.lines_run:6} of {self.lines:5} {self.branches_taken:6} of {self.branches:5}"
            f" {self.excluded:9}"
        )


def write_tracefile(path, files):
    """What gcovr draws its pages from."""
    document = {"gcovr/format_version": "0.3", "files": []}
    for file, lines in sorted(files.items()):
        document["files"].append(
            {
                "file": file,
                "functions": [],
                "lines": [
                    {
                        "branches": [{"count": n, "fallthrough": False, "throw": False} for n in line.branches()],
                        "count": line.count,
                        "line_number": number,
                        "gcovr/noncode": False,
                        "gcovr/excluded": False,
                    }
                    for number, line in sorted(lines.items())
                ],
            }
        )
    pathlib.Path(path).write_text(json.dumps(document), encoding="utf-8")


def main():
    build, tracefile = pathlib.Path(sys.argv[1]).resolve(), sys.argv[2]
    files = collect(build)
    exclusions = read_exclusions()
    write_tracefile(tracefile, files)

    print(f"{'':50} {'lines run':>15} {'branches taken':>15} {'explained':>9}")
    whole = Total()
    problems = []
    for file, lines in sorted(files.items()):
        text = (ROOT / file).read_text(encoding="utf-8").splitlines()
        if max(lines, default=0) > len(text):
            sys.exit(f"{file} has changed since it was built.")
        total = Total()
        for number, line in sorted(lines.items()):
            total.lines += 1
            total.lines_run += line.count != 0
            source = text[number - 1].strip()
            branches = line.branches()
            for branch, taken in enumerate(branches, 1):
                total.branches += 1
                total.branches_taken += taken != 0
                if taken != 0:
                    continue
                if any([exclusion.explains(file, source, branch) for exclusion in exclusions]):
                    total.excluded += 1
                else:
                    problems.append(f"{file}:{number}: branch {branch} of {len(branches)} is not taken: {source}")
        whole.add(total)
        print(total.row(file))
    print(whole.row("all"))

    for exclusion in exclusions:
        for branch in exclusion.stale():
            problems.append(f"{exclusion.where}: branch {branch} is taken, or gone: {exclusion.line}")
    for problem in problems:
        print(problem)
    return 1 if problems else 0


sys.exit(main())
