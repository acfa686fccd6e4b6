#!/usr/bin/env python3
"""What other programs make of the formats: GDAL, SQLite, GeographicLib's GeodSolve, Python's csv.

standards.py TOOL SURVEY: SURVEY is a JSON file to import.
"""
import contextlib
import copy
import csv
import io
import json
import math
import os
import sqlite3
import subprocess
import sys
import tempfile
import unittest

TOOL, SURVEY = os.path.abspath(sys.argv[1]), os.path.abspath(sys.argv[2])
FILES = ["m", "t"]


def run(*words, stdin=None):
    """Standard output of a program that succeeds and says nothing on standard error."""
    done = subprocess.run(words, input=stdin, stdout=subprocess.PIPE, stderr=subprocess.PIPE, check=False)
    assert done.returncode == 0, (words, done.stderr)
    assert done.stderr == b"", (words, done.stderr)
    return done.stdout


def tool(command, *options):
    return run(TOOL, command, *FILES, *options)


def far_places(entries):
    """Copies of a site around the poles and the antimeridian."""
    site = copy.deepcopy(entries[0])
    places = []
    for number, (latitude, longitude, azimuth) in enumerate(
        [(0, 180, 90), (0, -180, 90), (60, 179.999, 90), (-60, -179.999, 270), (89.999, 20, 0), (-89.999, 20, 180),
         (89.9999, -179, 80), (90, 0, 45), (-90, 77, 10), (0.001, 0, 180)]
    ):
        place = copy.deepcopy(site)
        place["identifier"] = "far %d" % number
        place["location"].update(latitude=latitude, longitude=longitude)
        place["target"]["azimuth"] = azimuth
        places.append(place)
    return places


class Standards(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.TemporaryDirectory()
        os.chdir(cls.folder.name)
        with open(SURVEY, encoding="utf-8") as file:
            entries = json.load(file)
        hostile = copy.deepcopy(entries[0])
        hostile["identifier"] = 'a "quoted", <b>&amp;</b>\tname\x01'
        hostile["options"]["note"] = '=HYPERLINK("x")\r\n,;\n"\x02\U0001f5fc'
        plain = copy.deepcopy(entries[0])
        plain.update(identifier="plain", sector="on the plain map")
        plain["location"].update(latitude=0, longitude=10)
        plain["target"]["azimuth"], plain["measured"]["azimuth"] = 90, 0
        cls.entries = entries + [hostile, plain] + far_places(entries)
        with open("in.json", "w", encoding="utf-8") as file:
            json.dump(cls.entries, file)
        tool("create")
        run(TOOL, "import", *FILES, "in.json")

    @classmethod
    def tearDownClass(cls):
        os.chdir("/")
        cls.folder.cleanup()

    def newest(self):
        newest = {}
        for entry in json.loads(tool("export", "--latest")):
            newest[entry["kind"], entry["identifier"], entry.get("sector"), entry.get("position")] = entry
        return newest

    def check_position(self, position):
        self.assertIsInstance(position, list)
        self.assertEqual(len(position), 2)
        for degrees, limit in zip(position, (180, 90)):
            self.assertLessEqual(abs(degrees), limit)
            self.assertLessEqual(len(repr(degrees).partition(".")[2]), 7, degrees)

    def check_line(self, line):
        self.assertGreaterEqual(len(line), 2)
        for position in line:
            self.check_position(position)
        for here, there in zip(line, line[1:]):
            self.assertLessEqual(abs(here[0] - there[0]), 180, "a line across the antimeridian")

    def test_geojson_is_rfc_7946(self):
        collection = json.loads(tool("map", "--format", "geojson"))
        self.assertEqual(set(collection), {"type", "features"})
        self.assertEqual(collection["type"], "FeatureCollection")
        self.assertEqual({feature["geometry"]["type"] for feature in collection["features"]},
                         {"Point", "LineString", "MultiLineString"})
        for feature in collection["features"]:
            self.assertEqual(set(feature), {"type", "geometry", "properties"})
            self.assertEqual(feature["type"], "Feature")
            geometry = feature["geometry"]
            self.assertEqual(set(geometry), {"type", "coordinates"})
            if geometry["type"] == "Point":
                self.check_position(geometry["coordinates"])
            elif geometry["type"] == "LineString":
                self.check_line(geometry["coordinates"])
            else:
                self.assertEqual(geometry["type"], "MultiLineString")
                for line in geometry["coordinates"]:
                    self.check_line(line)

    def layers(self, name, content):
        with open(name, "wb") as file:
            file.write(content)
        return run("ogrinfo", "-ro", "-al", name).decode()

    def test_gdal_reads_geojson(self):
        seen = self.layers("a.geojson", tool("map", "--format", "geojson"))
        sites = [key for key in self.newest() if key[0] == "site"]
        paths = [key for key in self.newest() if key[0] == "path"]
        self.assertEqual(seen.count("OGRFeature("), 3 * len(sites) + 4 * len(paths))
        self.assertEqual(seen.count("  role (String) = measured\n"), len(sites) + len(paths))
        self.assertEqual(seen.count("  role (String) = path\n"), len(paths))
        self.assertIn("MULTILINESTRING", seen)

    def test_gdal_reads_kml(self):
        seen = self.layers("a.kml", tool("map", "--format", "kml"))
        newest = self.newest()
        self.assertEqual(seen.count("\nLayer name: "), len({key[:2] for key in newest}))
        self.assertEqual(seen.count("OGRFeature("), sum(3 if key[0] == "site" else 4 for key in newest))
        self.assertEqual(seen.count("POINT ("), len(newest))

    def drawn(self, kind, role):
        """Every pixel that features of the role take, of a square of 0.04 degrees around 10 east on the equator."""
        name = "plain." + kind
        with open(name, "wb") as file:
            file.write(tool("map", "--format", kind, "--sector", "on the plain map"))
        layer = run("ogrinfo", "-ro", "-q", name).decode().splitlines()[0]
        layer = layer.partition(": ")[2].partition(" (")[0]
        run("gdal_rasterize", "-q", "-burn", "255", "-ot", "Byte", "-ts", "40", "40", "-te", "9.98", "-0.02", "10.02",
            "0.02", "-l", layer, "-where", "role = '%s'" % role, "-of", "GTiff", name, "plain.tif")
        run("gdal_translate", "-q", "-of", "PNM", "plain.tif", "plain.pgm")
        os.remove("plain.tif")
        with open("plain.pgm", "rb") as file:
            pixels = file.read()[-1600:]
        return {(number % 40, number // 40) for number in range(1600) if pixels[number]}

    def test_the_map_drawn_plainly(self):
        # A pixel is a thousandth of a degree. 1000 m are 9.04 of them to the north, 8.98 to the east.
        corner = 20
        for kind in ("geojson", "kml"):
            north = self.drawn(kind, "measured")
            self.assertEqual({row for _, row in north} & set(range(12, corner)), set(range(12, corner)), kind)
            self.assertLessEqual({column for column, _ in north}, {corner - 1, corner}, kind)
            self.assertLessEqual({row for _, row in north}, set(range(10, corner + 1)), kind)
            east = self.drawn(kind, "target")
            self.assertEqual({column for column, _ in east} & set(range(21, 28)), set(range(21, 28)), kind)
            self.assertLessEqual({row for _, row in east}, {corner - 1, corner}, kind)
            self.assertLessEqual({column for column, _ in east}, set(range(corner - 1, 30)), kind)
            place = self.drawn(kind, "instrument")
            self.assertEqual(len(place), 1, kind)
            self.assertLessEqual(place, {(19, 19), (19, 20), (20, 19), (20, 20)}, kind)
            self.assertEqual(self.drawn(kind, "path"), set(), kind)

    def test_rays_end_where_geodsolve_says(self):
        newest = self.newest()
        checked = 0
        for feature in json.loads(tool("map", "--format", "geojson", "--ray", "1000"))["features"]:
            properties = feature["properties"]
            if properties["role"] not in ("target", "measured"):
                continue
            entry = newest[properties["kind"], properties["identifier"], properties["sector"], properties["position"]]
            location, azimuth = entry["location"], entry[properties["role"]]["azimuth"]
            asked = "%.9f %.9f %.9f 1000" % (location["latitude"], location["longitude"], azimuth)
            latitude, longitude = run("GeodSolve", "-p", "6", stdin=asked.encode()).split()[:2]
            line = feature["geometry"]["coordinates"]
            end = (line[-1] if feature["geometry"]["type"] == "MultiLineString" else line)[-1]
            asked = b"%s %s %.9f %.9f" % (latitude, longitude, end[1], end[0])
            self.assertLess(float(run("GeodSolve", "-i", "-p", "6", stdin=asked).split()[2]), 0.01, (properties, end))
            checked += 1
        self.assertEqual(checked, 2 * len(newest))

    def test_paths_of_the_survey_point_at_their_far_ends(self):
        paths = [entry for entry in json.loads(tool("export")) if entry["kind"] == "path"]
        self.assertEqual(len(paths), 4)
        for entry in paths:
            here, there = entry["location"], entry["farEnd"]
            asked = "%(latitude)r %(longitude)r" % here + " %(latitude)r %(longitude)r" % there
            bearing, _, distance = map(float, run("GeodSolve", "-i", stdin=asked.encode()).split())
            self.assertLess(abs(entry["target"]["azimuth"] - bearing % 360), 0.01, entry["identifier"])
            rise = there["elevation"] - here["elevation"] - entry["height"]["value"]
            self.assertLess(abs(entry["target"]["tilt"] - math.degrees(math.atan2(rise, distance))), 0.1)

    def test_csv_is_rfc_4180(self):
        content = tool("export", "--format", "csv")
        self.assertTrue(content.endswith(b"\r\n"))
        rows = list(csv.DictReader(io.StringIO(content.decode(), newline=""), strict=True))
        exported = json.loads(tool("export"))
        self.assertEqual(len(rows), len(self.entries))
        for row, entry in zip(rows, exported):
            self.assertNotIn(None, row)
            self.assertNotIn(None, row.values())
            self.assertEqual(row["uid"], entry["uid"])
            self.assertEqual(row["identifier"], entry["identifier"])
            self.assertEqual(row["options.note"], entry["options"]["note"])
            self.assertEqual(float(row["measured.tilt"]), entry["measured"]["tilt"])

    def test_only_line_ends_are_outside_of_quotes(self):
        outside = b"".join(tool("export", "--format", "csv", "--separator", ";", "--bom").split(b'"')[::2])
        self.assertEqual(outside[:3], b"\xef\xbb\xbf")
        self.assertNotIn(b"\r", outside.replace(b"\r\n", b""))
        self.assertNotIn(b"\n", outside.replace(b"\r\n", b""))

    def test_sqlite_imports_csv(self):
        with open("a.csv", "wb") as file:
            file.write(tool("export", "--format", "csv"))
        run("sqlite3", "a.sqlite", ".mode csv", ".import a.csv alignments")
        # Not asked through the program: some versions write control characters as faulty JSON.
        with contextlib.closing(sqlite3.connect("a.sqlite")) as imported:
            rows = imported.execute('SELECT uid, "options.note" FROM alignments').fetchall()
        self.assertEqual(rows, [(entry["uid"], entry["options"]["note"]) for entry in json.loads(tool("export"))])


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], "-v"])
