#!/usr/bin/env python3
"""Runs the benchmark program and prints one table. ./bench/run builds the program and calls this."""

import argparse
import glob
import json
import math
import os
import re
import statistics
import subprocess
import sys
import tempfile

LIBRARY, GUARDED, FLOOR, VALUES, HASH, QT, CPP = (
    "library", "library+guard", "floor", "floor+Qt values", "floor, search by hash", "Qt SQL", "SQLiteCpp")
DATA = "/opt/tarnbeam/database"
UNSHARE = ["unshare", "--mount"] if os.geteuid() == 0 else ["unshare", "--user", "--map-root-user", "--mount"]
# A mount namespace of its own, so that neither root nor the real folder is needed; $1 is what to mount there.
NAMESPACE = f"""
mount -t tmpfs tmpfs /opt
mkdir -p {DATA}
[ "$1" = memory ] || mount --bind "$1" {DATA}
shift
exec "$@"
"""


def run(medium, command):
    """Runs a command whose data folder is in memory or in the folder `medium`; returns what it prints.

    Where mount namespaces are refused, "memory" is the real folder, wherever that is.
    """
    if medium != "memory":
        # Bound before /opt is covered, so it may lie anywhere but there.
        medium = os.path.abspath(medium)
    if medium != "memory" or subprocess.run(UNSHARE + ["true"], stderr=subprocess.DEVNULL).returncode == 0:
        command = UNSHARE + ["bash", "-euc", NAMESPACE, "-", medium] + command
    elif not os.access(DATA, os.W_OK):
        sys.exit(f"Mount namespaces are not allowed here, and {DATA} cannot be written to")
    done = subprocess.run(command, stdout=subprocess.PIPE, text=True)
    if done.returncode != 0:
        sys.exit(f"failed: {' '.join(command)}")
    return done.stdout


def split(title):
    """"operation/size/contender" -> (operation, size or None, contender)."""
    operation, *size, contender = title.split("/")
    return operation, int(size[0]) if size else None, contender


def instructions(program, limits):
    with tempfile.TemporaryDirectory() as folder:
        run("memory", ["valgrind", "--tool=callgrind", "--instr-atstart=no", "-q",
                       f"--callgrind-out-file={folder}/out", program, "--costs"] + limits)
        counted = {}
        for name in glob.glob(f"{folder}/out.*"):
            text = open(name, encoding="utf-8").read()
            trigger = re.search(r"^desc: Trigger: Client Request: (.*)$", text, re.M)
            total = re.search(r"^(?:totals|summary): (\d+)", text, re.M)
            if trigger and total:
                counted[split(trigger.group(1))] = int(total.group(1))
        return counted


def times(medium, program, limits, selection, repetitions):
    """Median time in microseconds of repetitions that are mixed at random, in the order of the operations.

    In memory nothing is waited for, so processor time is what wall time would be on an otherwise idle machine.
    On disk it is wall time.
    """
    kind = "cpu_time" if medium == "memory" else "real_time"
    printed = run(medium, [program, *limits, f"--benchmark_filter={selection}", "--benchmark_format=json",
                           f"--benchmark_repetitions={repetitions}",
                           "--benchmark_enable_random_interleaving=true"])
    taken = {}
    for one in json.loads(printed)["benchmarks"]:
        if one["run_type"] == "iteration":
            title = one["name"].split("/iterations:")[0]
            taken.setdefault(split(title), []).append(one[kind])
    listed = run("memory", [program, *limits, f"--benchmark_filter={selection}", "--benchmark_list_tests=true"])
    order = [split(line.split("/iterations:")[0]) for line in listed.splitlines()]
    return {title: statistics.median(taken[title]) for title in order}


def number(value):
    if value is None:
        return "–"
    return f"{value:.0f}" if value >= 100 else f"{value:.3g}"


def ratio(values, row, other, mine=LIBRARY):
    """What `mine` takes as a multiple of what `other` takes."""
    operation, size = row
    above, below = values.get((operation, size, mine)), values.get((operation, size, other))
    return above / below if above and below else None


def print_rows(header, rows):
    print("| " + " | ".join(header) + " |")
    print("|" + "---|" + "--:|" * (len(header) - 1))
    for row in rows:
        print("| " + " | ".join(cell if isinstance(cell, str) else number(cell) for cell in row) + " |")
    print()


def rows_of(values):
    return list(dict.fromkeys((operation, size) for operation, size, _ in values))


def title_of(row):
    return row[0] if row[1] is None else f"{row[0]}, {row[1]}"


def print_costs(taken, costs, counted):
    print("Time in microseconds, peak memory in KiB; ratios are library : other. Allocations, peak, writes "
          "and syncs are library / floor.\n")
    rows = []
    for row in rows_of(taken):
        both = [costs.get(row + (contender,)) for contender in (LIBRARY, FLOOR)]
        pair = lambda key, unit=1: " / ".join(f"{cost[key] / unit:.0f}" for cost in both) if all(both) else "–"
        rows.append([title_of(row), taken.get(row + (LIBRARY,))]
                    + [ratio(taken, row, other) for other in (FLOOR, VALUES, QT, CPP)]
                    + [counted.get(row + (LIBRARY,)), ratio(counted, row, FLOOR), pair("allocations"),
                       pair("peak", 1024), pair("writes"), pair("syncs")])
    print_rows(["operation", "time", ": floor", ": floor+Qt values", ": Qt SQL", ": SQLiteCpp", "instructions",
                ": floor", "allocations", "peak", "writes", "syncs"], rows)


def exponent(points):
    """Slope of a straight line through (log size, log time)."""
    logs = [(math.log(size), math.log(time)) for size, time in points]
    x_mean, y_mean = (statistics.mean(axis) for axis in zip(*logs))
    return sum((x - x_mean) * (y - y_mean) for x, y in logs) / sum((x - x_mean) ** 2 for x, _ in logs)


def print_growth(taken):
    print("Growth: time ~ size^exponent, fitted over the sizes measured; the last column is the exponent "
          "between the two largest.\n")
    rows = []
    for operation in dict.fromkeys(name for name, _ in rows_of(taken)):
        series = {}
        for contender in (LIBRARY, FLOOR):
            series[contender] = sorted((size, time) for (name, size, who), time in taken.items()
                                       if name == operation and who == contender and size)
        if len(series[LIBRARY]) > 1:
            rows.append([operation, exponent(series[LIBRARY]), exponent(series[FLOOR]),
                         exponent(series[LIBRARY][-2:])])
    print_rows(["operation", "library", "floor", "library, largest"], rows)


def print_search(taken):
    print("What the cleanup's linear search costs: floor that searches so, the same floor searching by hash "
          "(microseconds).\n")
    rows = [[title_of(row), taken.get(row + (FLOOR,)), taken.get(row + (HASH,)), ratio(taken, row, HASH, FLOOR)]
            for row in rows_of(taken) if row + (HASH,) in taken and "1 to 7" in row[0]]
    print_rows(["conversion", "linear", "by hash", "ratio"], rows)


def print_guard(counted):
    found = [(ratio(counted, row, LIBRARY, GUARDED), title_of(row)) for row in rows_of(counted)]
    found = sorted(pair for pair in found if pair[0])
    if found:
        print(f"What a guard around an operation costs: between {found[0][0]:.4f} ({found[0][1]}) and "
              f"{found[-1][0]:.4f} ({found[-1][1]}) times the instructions of the library without one.\n")


def print_memory(costs):
    many, few = 10000, 100
    name = "read reports, as many others"
    if (name, many, LIBRARY) not in costs:
        return
    # The floor holds no records: what the others hold in addition grows with the records alone.
    def per_record(contender):
        above = [costs[name, size, contender]["peak"] - costs[name, size, FLOOR]["peak"] for size in (few, many)]
        return (above[1] - above[0]) / (many - few)
    print("Memory of a read, bytes per record above the floor: "
          + ", ".join(f"{who} {per_record(who):.0f}" for who in (LIBRARY, VALUES, QT, CPP)) + ".\n")


def print_targets(taken, counted):
    def worst(values, other, sizes, beginnings, mine):
        found = [(ratio(values, row, other, mine), title_of(row)) for row in rows_of(values)
                 if row[0].startswith(beginnings) and (sizes is None or row[1] in sizes)
                 and ratio(values, row, other, mine)]
        return max(found, default=None)
    light = ("save", "list", "restore", "store")
    targets = [
        ("save, list, preferences, screens: time : floor", 1.05, FLOOR, None, light, taken),
        ("save, list, preferences, screens: instructions : floor", 1.25, FLOOR, None, light, counted),
        ("read 10 000: time : floor+Qt values", 1.10, VALUES, [10000], "read reports", taken),
        ("read 10 000: time : Qt SQL", 1 / 1.5, QT, [10000], "read reports", taken),
        ("conversion: time : floor", 1.05, FLOOR, None, "convert", taken),
        ("with a guard: instructions : library", 1.01, LIBRARY, None, "", counted, GUARDED),
    ]
    rows = []
    for text, limit, other, sizes, beginnings, values, *mine in targets:
        found = worst(values, other, sizes, beginnings, *(mine or [LIBRARY]))
        if found is not None:
            rows.append([text, f"{limit:.2f}", f"{found[0]:.3f}", found[1],
                         "met" if found[0] <= limit else "missed"])
    print_rows(["figure", "at most", "worst", "where", ""], rows)


def main():
    options = argparse.ArgumentParser(description=__doc__)
    options.add_argument("program")
    options.add_argument("--quick", action="store_true", help="no conversions above 1000, fewer repetitions")
    options.add_argument("--short", action="store_true", help="smallest sizes once: does it still run?")
    options.add_argument("--no-instructions", action="store_true", help="leave callgrind out")
    options.add_argument("--disk", metavar="FOLDER", help="also time durable operations on this folder's disk")
    chosen = options.parse_args()

    limits, conversions, repetitions = [], [(r"^convert .*/1000?/", 9), (r"^convert .*/10000/", 3),
                                            (r"^convert .*/50000/", 1)], 25
    if chosen.quick:
        limits, conversions, repetitions = ["--largest-conversion", "1000"], [(r"^convert", 5)], 15
    if chosen.short:
        limits = ["--largest", "100", "--largest-conversion", "100"]
        conversions, repetitions = [(r"^convert", 1)], 1

    program = os.path.abspath(chosen.program)
    # Costs besides time do not vary, and need no conversion of the largest files.
    cost_limits = limits or ["--largest-conversion", "10000"]
    costs = {split(title): cost for title, cost in json.loads(run("memory", [program, "--costs"] + cost_limits)).items()}
    counted = {} if chosen.no_instructions or chosen.short else \
        instructions(program, ["--largest-conversion", "100"])
    taken = {}
    for selection, count in [("-^convert", repetitions)] + conversions:
        taken.update(times("memory", program, limits, selection, count))

    print("## Data in memory (tmpfs)\n")
    print_costs(taken, costs, counted)
    print_growth(taken)
    print_search(taken)
    print_guard(counted)
    print_memory(costs)
    print_targets(taken, counted)
    if chosen.disk:
        with tempfile.TemporaryDirectory(dir=chosen.disk) as folder:
            durable = times(folder, program, ["--largest", "1000", "--largest-conversion", "1000"],
                            "^(create|save|delete|store|convert 1 to 7/1000)", 5)
        print("## Data on disk\n")
        print_rows(["operation", "time", ": floor", ": Qt SQL", ": SQLiteCpp"],
                   [[title_of(row), durable[row + (LIBRARY,)]] + [ratio(durable, row, who) for who in (FLOOR, QT, CPP)]
                    for row in rows_of(durable)])


if __name__ == "__main__":
    main()
