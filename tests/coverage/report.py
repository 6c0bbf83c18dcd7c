#!/usr/bin/env python3
"""report.py EXPORT EXPLAINED: what of the products the tests never ran.

EXPORT is what "llvm-cov export" wrote; EXPLAINED names the lines that need no test, with the reason.
Prints one line per product folder and one per finding.  Fails on a finding that has no explanation,
and on an explanation whose line is gone.
"""

import collections
import json
import os
import sys

FOLDERS = ("rukcmd", "dpa", "infra", "ifindex", "ofp", "platform", "agentsim")
CODE_REGION = 0


class File:
    """Counts of one source file.  Those of a template's instances and of all programs are added up."""

    def __init__(self, path):
        with open(path, encoding="utf-8") as source:
            self.texts = [line.strip() for line in source]
        self.regions = collections.Counter()  # (line, column, end line, end column): runs
        self.branches = {}  # (line, column, end line, end column): [times true, times false]

    def add_function(self, function):
        for *place, count, file_id, _, kind in function["regions"]:
            if kind == CODE_REGION and file_id == 0:
                self.regions[tuple(place)] += count
        for *place, true, false, file_id, _, _ in function["branches"]:
            if file_id == 0:
                counts = self.branches.setdefault(tuple(place), [0, 0])
                counts[0] += true
                counts[1] += false

    def never_run(self):
        """The outermost regions that never ran.  "if constexpr" leaves some out of every instance."""
        found = []
        for region in sorted(self.regions, key=lambda r: (r[0], r[1], -r[2], -r[3])):
            if self.regions[region] > 0 or "if constexpr" in self.texts[region[0] - 1]:
                continue
            if not any(holds(outer, region) for outer in found):
                found.append(region)
        return found

    def one_sided(self):
        """Conditions that ran and had one outcome only.

        One that never ran is behind another finding, or is a constant, which has no outcomes.
        """
        return {place: counts for place, counts in self.branches.items() if (counts[0] == 0) != (counts[1] == 0)}

    def outcomes(self):
        """Outcomes seen, and all there are; constants in code that ran are left out."""
        dead = self.never_run()
        counted = [
            counts
            for place, counts in self.branches.items()
            if any(counts) or any(holds(region, place) for region in dead)
        ]
        return sum((true > 0) + (false > 0) for true, false in counted), 2 * len(counted)

    def findings(self):
        """(line, what is missing), one for each line.  A function is found at its name."""
        missing = collections.defaultdict(list)
        for place, (true, _) in sorted(self.one_sided().items()):
            missing[place[0]].append("never false" if true else "never true")
        for line, *_ in self.never_run():
            line -= self.texts[line - 1] == "{"
            if line not in missing:
                missing[line].append("never run")
        return sorted((line, ", ".join(dict.fromkeys(what))) for line, what in missing.items())


def holds(outer, inner):
    return outer[:2] <= inner[:2] and inner[2:4] <= outer[2:4]


def read_explanations(path):
    """{(file, text of the line): reason}"""
    explained = {}
    for number, line in enumerate(open(path, encoding="utf-8"), 1):
        if line.strip() and not line.startswith("#"):
            # The line itself may hold the separator.
            parts = [part.strip() for part in line.split(" | ", 1)]
            parts += [part.strip() for part in parts.pop().rsplit(" | ", 1)]
            if len(parts) != 3:
                sys.exit(f"{path}:{number}: not 'FILE | LINE | REASON'")
            explained[parts[0], parts[1]] = parts[2]
    return explained


def per_cent(part, whole):
    return f"{part:6d} of {whole:6d} {100 * part / max(whole, 1):7.2f} %"


def main(export_path, explained_path):
    export = json.load(open(export_path, encoding="utf-8"))["data"][0]
    explained = read_explanations(explained_path)

    def product_file(name):
        path = os.path.relpath(os.path.normpath(name))
        return path if path.split("/")[0] in FOLDERS else None

    files = {}
    for function in export["functions"]:
        path = product_file(function["filenames"][0])
        if path:
            files.setdefault(path, File(path)).add_function(function)
    lines = {product_file(file["filename"]): file["summary"]["lines"] for file in export["files"]}

    print(f"{'':10} {'lines run':>27} {'outcomes of conditions seen':>27}")
    for folder in FOLDERS:
        inside = [path for path in files if path.startswith(folder + "/")]
        outcomes = [files[path].outcomes() for path in inside]
        print(
            f"{folder:10}",
            per_cent(sum(lines[p]["covered"] for p in inside), sum(lines[p]["count"] for p in inside)),
            per_cent(sum(seen for seen, _ in outcomes), sum(all_ for _, all_ in outcomes)),
        )

    unexplained, used = 0, 0
    for path in sorted(files):
        for line, what in files[path].findings():
            text = files[path].texts[line - 1]
            if (path, text) in explained:
                used += 1
            else:
                unexplained += 1
                print(f"{path}:{line}: {what}: {text}")
    gone = [(path, text) for path, text in explained if path not in files or text not in files[path].texts]
    for path, text in gone:
        print(f"{explained_path}: {path} has no line '{text}'")
    print(f"{used} lines explained in {explained_path}, {unexplained} not")
    return 1 if unexplained or gone else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
