#!/usr/bin/env python3
"""Judges the benchmarks' results against their goals.

Usage: report.py [--json] GOALS RESULT.json...

The results are Google Benchmark's JSON.  Of a benchmark's repetitions the fastest counts: what
disturbs a measurement only ever makes it slower.
"""
import json
import os
import re
import sys

# What Google Benchmark says of each run besides its counters.
OWN_FIELDS = {"name", "run_name", "run_type", "family_index", "per_family_instance_index",
              "repetitions", "repetition_index", "threads", "iterations", "real_time", "cpu_time",
              "time_unit", "error_occurred", "error_message", "label"}


def read_results(paths):
    """The least CPU time by benchmark, in nanoseconds; the least of a counter by name/counter."""
    results = {}

    def note(name, value):
        results[name] = min(value, results.get(name, value))

    scale = {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}
    for path in paths:
        if os.path.getsize(path) == 0:
            continue  # the filter left nothing of this program
        with open(path, encoding="utf-8") as file:
            for run in json.load(file)["benchmarks"]:
                if run["run_type"] != "iteration" or run.get("error_occurred"):
                    continue
                name = re.sub("/(iterations:|repeats:).*", "", run["run_name"])
                note(name, run["cpu_time"] * scale[run["time_unit"]])
                for counter in run.keys() - OWN_FIELDS:
                    note(f"{name}/{counter}", run[counter])
    return results


def read_goals(path):
    with open(path, encoding="utf-8") as file:
        for line in file:
            if line.strip() and not line.startswith("#"):
                measure, ours, peers, must, aim = (part.strip() for part in line.split("|"))
                yield measure, ours, peers.split(), float(must), float(aim)


def judge(results, goals):
    """One row of the table for each goal; value is None where something was not measured."""
    for measure, ours, peers, must, aim in goals:
        row = {"measure": measure, "must": must, "aim": aim, "ours": results.get(ours)}
        measured = ours in results and all(peer in results for peer in peers)
        peer = min(peers, key=results.get) if measured and peers else None
        row["peer"] = peer
        row["theirs"] = results[peer] if peer else None
        row["value"] = None
        row["verdict"] = "not measured"
        if measured:
            row["value"] = round(results[ours] / (row["theirs"] if peer else 1), 3)
            row["verdict"] = verdict(row["value"], must, aim)
        yield row


def verdict(value, must, aim):
    if value > must:
        return "FALLS SHORT"
    return "must" if value > aim else "aim"


def print_table(rows):
    print(f"{'measure':40}{'ours':>11}{'theirs':>11}  {'of':30}{'ratio':>10}{'must':>8}{'aim':>8}")
    for row in rows:
        ours = "" if row["ours"] is None else f"{row['ours']:.5g}"
        theirs = "" if row["theirs"] is None else f"{row['theirs']:.5g}"
        value = "" if row["value"] is None else f"{row['value']:g}"
        print(f"{row['measure']:40}{ours:>11}{theirs:>11}  {row['peer'] or '':30}"
              f"{value:>10}{row['must']:8g}{row['aim']:8g}  {row['verdict']}")
    verdicts = [row["verdict"] for row in rows]
    print(f"{len(rows)} measures: {verdicts.count('aim')} reach their aim, "
          f"{verdicts.count('must')} what they must, {verdicts.count('FALLS SHORT')} fall short, "
          f"{verdicts.count('not measured')} not measured")


def main():
    arguments = sys.argv[1:]
    as_json = "--json" in arguments
    files = [argument for argument in arguments if argument != "--json"]
    if len(files) < 2:
        sys.exit(__doc__.strip())
    rows = list(judge(read_results(files[1:]), read_goals(files[0])))
    if as_json:
        json.dump(rows, sys.stdout, indent=1)
        print()
    else:
        print_table(rows)
    sys.exit(0 if all(row["verdict"] in ("must", "aim") for row in rows) else 1)


main()
