"""Pairs of files of any size, for measuring the program."""

import json
import os
import sqlite3
import subprocess

PER_SITE, PER_PATH = 8, 5
START = 1_700_000_000


def fill(main, thresholds, sites, paths):
    """Puts PER_SITE alignments for each site and PER_PATH for each path into a pair that is empty."""
    db = sqlite3.connect(main)
    db.execute("ATTACH ? AS thresholds", (thresholds,))
    alignments = sites * PER_SITE + paths * PER_PATH
    db.executemany("INSERT INTO Sites VALUES (?, ?)", ((n, f"Site {n}") for n in range(1, sites + 1)))
    db.executemany("INSERT INTO Paths VALUES (?, ?)", ((n, f"Path {n}") for n in range(1, paths + 1)))
    db.executemany("INSERT INTO Orientation VALUES (?, ?, ?, ?)",
                   ((n, n * 7919 % 36000 / 100, n * 31 % 900 / 100 - 4.5, n % 200 / 100 - 1)
                    for n in range(1, 2 * alignments + 1)))
    db.executemany("INSERT INTO Geolocation VALUES (?, ?, ?, ?)",
                   ((n, 40 + n % 20000 / 1000, 5 + n % 30000 / 1000, n % 500 + 0.5)
                    for n in range(1, alignments + paths * PER_PATH + 1)))
    db.executemany("INSERT INTO Height VALUES (?, ?, 1)", ((n, n % 60 + 0.25) for n in range(1, alignments + 1)))
    for number in range(alignments):
        key, shared = number + 1, (2 * number + 1, number + 1, START + number * 60, 2 * number + 2, number + 1)
        note = f"measurement {key} by the second crew"
        if number < sites * PER_SITE:
            site = number // PER_SITE + 1
            db.execute("INSERT INTO AntennaAlignment VALUES (?, ?, ?, ?, 0, ?, ?, ?, ?, ?, 0, ?, 1)",
                       (key, site, f"Sector {number % PER_SITE}", f"Position {number % 3}", *shared, note))
            db.execute("INSERT INTO AntennaAlignmentThresholds VALUES (?, ?, ?, 1, 0.5, 2)", (key, key, site))
        else:
            key -= sites * PER_SITE
            path = (key - 1) // PER_PATH + 1
            db.execute("INSERT INTO PathAlignment VALUES (?, ?, '', '', 0, ?, ?, ?, ?, ?, ?, 0, ?)",
                       (key, path, alignments + key, *shared, note))
            db.execute("INSERT INTO PathAlignmentThresholds VALUES (?, ?, ?, 1, 0.5, 1000)", (key, key, path))
    db.commit()
    db.close()


def make(tool, folder, sites, paths):
    """The paths of a pair in the folder, which is made where it is not there."""
    pair = [f"{folder}/main-{sites}-{paths}", f"{folder}/thresholds-{sites}-{paths}"]
    if os.path.exists(pair[0]):
        return pair
    subprocess.run([tool, "create", *pair], check=True, stdout=subprocess.DEVNULL)
    fill(*pair, sites, paths)
    return pair


def entry(number):
    """An alignment for `import`."""
    shared = {"identifier": f"Place {number // 8}", "time": f"2024-05-14T{number % 24:02}:{number % 60:02}:00Z",
              "target": {"azimuth": number % 360, "tilt": -2, "roll": 0},
              "measured": {"azimuth": number % 360, "tilt": -2.25, "roll": 0.5},
              "location": {"latitude": 47.25, "longitude": 8.5, "elevation": 400},
              "height": {"value": 31.5, "source": "manual"}}
    options = {"azimuthOffset": 0, "tiltInversion": False, "note": f"measurement {number} by the second crew"}
    if number % 5 == 4:
        return {"kind": "path", **shared, "farEnd": {"latitude": 47.5, "longitude": 8.75, "elevation": 420},
                "options": {**options, "thresholds": {"azimuth": 1, "tilt": 0.5, "pathLength": 1000}}}
    return {"kind": "site", **shared, "sector": f"Sector {number % 8}", "position": f"Position {number % 3}",
            "options": {**options, "rollPrecision": 1,
                        "thresholds": {"azimuth": 1, "tilt": 0.5, "roll": 2}}}


def write_entries(name, count):
    with open(name, "w", encoding="utf-8") as file:
        json.dump([entry(number) for number in range(count)], file)
