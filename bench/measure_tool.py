#!/usr/bin/env python3
"""Times tarnbeam-db side by side with what SQLite alone takes, and prints tables. ./bench/run --tool calls this."""

import argparse
import math
import os
import resource
import statistics
import subprocess
import sys
import tempfile
import time

import pairs

OPEN_FILES = 256
SITES, PATHS, IMPORTED = 5000, 2000, 10_000

COUNTS = """SELECT 'site', SiteIdentifier, count(a.SiteKey), max(LinuxTimeUTC)
  FROM Sites s LEFT JOIN AntennaAlignment a USING (SiteKey) GROUP BY s.SiteKey
UNION ALL SELECT 'path', PathIdentifier, count(a.PathKey), max(LinuxTimeUTC)
  FROM Paths p LEFT JOIN PathAlignment a USING (PathKey) GROUP BY p.PathKey"""
SHARED = """target.AzimuthDegrees, target.TiltDegrees, target.RollDegrees,
  measured.AzimuthDegrees, measured.TiltDegrees, measured.RollDegrees,
  place.LatitudeDegreesNorth, place.LongitudeDegreesEast, place.ElevationMeters,
  {far}, HeightInMeters, HeightType, {offset}, a.TiltInversionEnabled, {roll}, a.Note,
  t.AzimuthThreshold, t.TiltThreshold, {thresholds}"""
JOINS = """JOIN Orientation target ON target.OrientationKey = a.TargetOrientationKey
  JOIN Orientation measured ON measured.OrientationKey = a.MeasuredOrientationKey
  JOIN Geolocation place ON place.GeolocationKey = a.LocationKey
  JOIN Height ON HeightKey = a.SiteHeightKey"""
# Thresholds are searched for by a key that no index of the file holds; SQLite makes one for the query.
ROWS = f"""SELECT 'site', Sites.SiteIdentifier, SectorName, AntennaPosition, datetime(LinuxTimeUTC, 'unixepoch'),
  {SHARED.format(far="'', '', ''", offset="AzimuthOffsetDegrees", roll="RollPrecision",
                 thresholds="t.RollThreshold, ''")}
  FROM AntennaAlignment a JOIN Sites USING (SiteKey) {JOINS}
  LEFT JOIN thresholds.AntennaAlignmentThresholds t ON t.AntennaAlignmentKey = a.AntennaAlignmentKey
UNION ALL SELECT 'path', Paths.PathIdentifier, '', '', datetime(LinuxTimeUTC, 'unixepoch'),
  {SHARED.format(far="far.LatitudeDegreesNorth, far.LongitudeDegreesEast, far.ElevationMeters",
                 offset="AzimuthOffset", roll="''", thresholds="'', t.PathLengthThreshold")}
  FROM PathAlignment a JOIN Paths USING (PathKey) {JOINS}
  JOIN Geolocation far ON far.GeolocationKey = a.PathLocationKey
  LEFT JOIN thresholds.PathAlignmentThresholds t ON t.PathAlignmentKey = a.PathAlignmentKey"""


class Times:
    """Of one command: by the clock, and of the processor."""

    def __init__(self):
        self.clock, self.processor = [], []

    def add(self, clock, processor):
        self.clock.append(clock)
        self.processor.append(processor)

    def medians(self):
        return statistics.median(self.clock), statistics.median(self.processor)


def few_files():
    resource.setrlimit(resource.RLIMIT_NOFILE, (OPEN_FILES, OPEN_FILES))


def run(*commands):
    """Seconds that the commands take one after the other, with what they print thrown away."""
    before, start = resource.getrusage(resource.RUSAGE_CHILDREN), time.perf_counter()
    for command in commands:
        subprocess.run(command, check=True, stdout=subprocess.DEVNULL, preexec_fn=few_files)
    clock, after = time.perf_counter() - start, resource.getrusage(resource.RUSAGE_CHILDREN)
    return clock, after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime


def sqlite(main, thresholds, sql, *options):
    return ["sqlite3", *options, "-cmd", f"ATTACH '{thresholds}' AS thresholds", main, sql]


def new_import(tool, folder, entries):
    pair = [f"{folder}/new-main", f"{folder}/new-thresholds"]
    for name in pair:
        if os.path.exists(name):
            os.remove(name)
    subprocess.run([tool, "create", *pair], check=True, stdout=subprocess.DEVNULL)
    return run([tool, "import", *pair, entries])


def saves(program, entries):
    with tempfile.TemporaryDirectory(dir="/dev/shm") as folder:
        done = subprocess.run([program, entries, f"{folder}/main", f"{folder}/thresholds"], check=True,
                              stdout=subprocess.PIPE, text=True)
        return tuple(float(word) for word in done.stdout.split())


def comparisons(tool, saver, folder, sizes):
    """Name, what it is compared with, the limit of the ratio, and the two measurements."""
    sites, paths, imported = sizes
    main, thresholds = pairs.make(tool, folder, sites, paths)
    entries = f"{folder}/entries.json"
    pairs.write_entries(entries, imported)
    own = lambda *words: lambda: run([tool, words[0], main, thresholds, *words[1:]])
    other = lambda *arguments: lambda: run(sqlite(main, thresholds, *arguments))
    return [("list", "the same counts, GROUP BY", 20, own("list"), other(COUNTS)),
            ("export --format csv", "the same columns by joins", 10, own("export", "--format", "csv"),
             other(ROWS, "-csv")),
            ("report --all --format csv", "the same columns by joins", 10,
             own("report", "--all", "--format", "csv"), other(ROWS, "-csv")),
            ("check", "PRAGMA integrity_check of both", 5, own("check"),
             lambda: run(*(["sqlite3", name, "PRAGMA integrity_check"] for name in (main, thresholds)))),
            (f"import of {imported}", "the library's saves alone, in memory", 2,
             lambda: new_import(tool, folder, entries), lambda: saves(saver, entries))]


def measure(groups, repetitions):
    """All in turn, over and over, so that what else the machine does meets all of them."""
    taken = [[Times() for _ in group] for group in groups]
    for _ in range(repetitions):
        for group, times in zip(groups, taken):
            for one, into in zip(group, times):
                into.add(*one())
    return [[one.medians() for one in times] for times in taken]


def print_table(header, rows):
    print("| " + " | ".join(header) + " |")
    print("|---" + "|--:" * (len(header) - 1) + "|")
    for row in rows:
        print("| " + " | ".join(cell if isinstance(cell, str) else f"{cell:.3g}" for cell in row) + " |")
    print()


def print_comparisons(tool, saver, folder, sizes, repetitions):
    compared = comparisons(tool, saver, folder, sizes)
    rows, all_met = [], True
    for (name, against, limit, *_), (mine, others) in zip(
            compared, measure([one[3:] for one in compared], repetitions)):
        by_clock, by_processor = (above / below for above, below in zip(mine, others))
        # What else the machine does slows both, and not always alike: the processor's time is surer.
        met = by_processor <= limit
        all_met = all_met and met
        rows.append([name, against, mine[0], others[0], by_clock, mine[1], others[1], by_processor, f"{limit}",
                     "met" if met else "missed"])
    print("Medians in seconds, by the clock and of the processor's time.\n")
    print_table(["command", "against", "clock", "other", "ratio", "processor", "other", "ratio", "at most", ""],
                rows)
    return all_met


def print_growth(tool, folder, sizes, repetitions):
    """Exponents near 1 mean in proportion, near 2 with the square."""
    commands = {"list": [], "export": [], "report --all": ["--format", "csv"], "map": ["--format", "geojson"]}
    made = [pairs.make(tool, folder, sites, paths) for sites, paths in sizes]
    counts = [sites * pairs.PER_SITE + paths * pairs.PER_PATH for sites, paths in sizes]
    rows = []
    for name, options in commands.items():
        measured = [[lambda pair=pair: run([tool, *name.split()[:1], *pair, *name.split()[1:], *options])]
                    for pair in made]
        taken = [one[0][1] for one in measure(measured, repetitions)]
        rows.append([name] + taken +
                    [math.log(taken[-1] / taken[-2]) / math.log(counts[-1] / counts[-2])])
    print("Growth: seconds of the processor's time, and the exponent between the two largest.\n")
    print_table(["command"] + [f"{count} alignments" for count in counts] + ["exponent"], rows)


def main():
    options = argparse.ArgumentParser(description=__doc__)
    options.add_argument("tool")
    options.add_argument("saver")
    options.add_argument("--short", action="store_true", help="small files once: does it still run?")
    options.add_argument("--folder", help="where the files lie; the folder for temporary files otherwise")
    chosen = options.parse_args()
    with tempfile.TemporaryDirectory(dir=chosen.folder) as folder:
        if chosen.short:
            print_comparisons(chosen.tool, chosen.saver, folder, (50, 20, 100), 1)
            print_growth(chosen.tool, folder, [(25, 10), (50, 20)], 1)
            return
        all_met = print_comparisons(chosen.tool, chosen.saver, folder, (SITES, PATHS, IMPORTED), 5)
        print_growth(chosen.tool, folder, [(500, 200), (5000, 2000), (10000, 4000)], 3)
    sys.exit(0 if all_met else 1)


if __name__ == "__main__":
    main()
