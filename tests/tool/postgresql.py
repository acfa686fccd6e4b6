#!/usr/bin/env python3
"""Many pairs in one PostgreSQL, which is started here for an ordinary user and reached by a socket alone.

postgresql.py TOOL EXAMPLE: EXAMPLE is the folder with schema.sql and load.
"""
import glob
import json
import os
import shutil
import signal
import subprocess
import sys
import tempfile
import unittest

TOOL, EXAMPLE = os.path.abspath(sys.argv[1]), os.path.abspath(sys.argv[2])
HERE = os.path.dirname(os.path.abspath(__file__))
PAIRS = 50
# Angles that 32 bits keep whole.
SITE = {"kind": "site", "target": {"azimuth": 90, "tilt": -2, "roll": 0},
        "location": {"latitude": 59.318742, "longitude": 10.477905, "elevation": 38.4},
        "height": {"value": 31.5, "source": "gps"},
        "options": {"azimuthOffset": 0, "tiltInversion": False, "note": "", "rollPrecision": 1}}
PATH = {"kind": "path", "target": {"azimuth": 175.375, "tilt": -0.5, "roll": 0},
        "measured": {"azimuth": 175.5, "tilt": -0.5, "roll": 0.125},
        "location": {"latitude": 54.183316, "longitude": 19.404528, "elevation": 3.125},
        "farEnd": {"latitude": 54.152287, "longitude": 19.408831, "elevation": 27.75},
        "height": {"value": 48.5, "source": 7}}


def site(name, sector, day, deviation, threshold):
    entry = dict(SITE, identifier=name, sector=sector, position="Top", time="2024-05-%02dT07:00:00Z" % day)
    entry["measured"] = {"azimuth": 90 + deviation, "tilt": -2.125, "roll": 0}
    entry["options"] = dict(SITE["options"], note='"Ole", =1+1\r\nline 2' if day % 2 else "",
                            thresholds={"azimuth": threshold, "tilt": 0, "roll": 0})
    return entry


def path(name, day):
    options = {"azimuthOffset": 0, "tiltInversion": True, "note": "dish, 0.6 m",
               "thresholds": {"azimuth": 0.0625, "tilt": 1, "pathLength": -1}}
    return dict(PATH, identifier=name, time="2024-06-%02dT23:59:59Z" % day, options=options)


def entries_of(pair):
    """Sites that several instruments have been at; a third of the measurements were copied from pair to pair."""
    name = "Żuławy %d" % (pair % 20)
    entries = [site(name, "A", 1 + pair % 25, 0.5 * (pair % 4), 1), site(name, "B", 20, 2, 0 if pair % 5 else 1),
               site("moved on", "A", 1 + pair % 9, pair / 4, 2), path("P%d" % (pair % 10), 1 + pair % 28)]
    if pair > 0:
        entries += entries_of(pair - 1)[:2]
    return entries


def run(*words, environment=None, status=0):
    done = subprocess.run(words, stdout=subprocess.PIPE, stderr=subprocess.PIPE, env=environment, check=False)
    assert done.returncode == status, (words, done.returncode, done.stdout, done.stderr)
    return done.stdout.decode()


def succeeds(*words):
    return subprocess.run(words, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, check=False).returncode == 0


class Server:
    """A cluster in a folder of its own, until it is stopped. The program refuses to run as root, so root becomes
    nobody; where there is nobody else, in a namespace of one user, that user gets another number."""

    def __init__(self):
        self.folder = tempfile.mkdtemp(prefix="pg")
        self.user, owner = [], None
        if os.geteuid() == 0:
            nobody = ["setpriv", "--reuid=65534", "--regid=65534", "--clear-groups"]
            if succeeds(*nobody, "true"):
                self.user, owner = nobody, 65534
            else:
                self.user = ["unshare", "--user", "--map-user=1000", "--map-group=1000"]
        os.mkdir(self.folder + "/data")
        if owner is not None:
            for place in (self.folder, self.folder + "/data"):
                os.chown(place, owner, owner)
        os.chmod(self.folder, 0o755)
        self.programs = os.path.dirname(max(
            glob.glob("/usr/lib/postgresql/*/bin/initdb"), key=lambda place: float(place.split("/")[4])))
        self.process = None

    def start(self):
        data = self.folder + "/data"
        run(*self.user, self.programs + "/initdb", "-D", data, "-U", "tester", "-A", "trust", "-E", "UTF8",
            "--locale=C", "--no-sync")
        self.process = subprocess.Popen(
            [*self.user, "setpriv", "--pdeathsig=QUIT", self.programs + "/postgres", "-D", data, "-k", self.folder,
             "-c", "listen_addresses=", "-c", "fsync=off", "-c", "log_min_messages=log",
             "-c", "unix_socket_permissions=0777"],
            stderr=subprocess.PIPE, text=True, cwd="/")
        said = []
        for line in self.process.stderr:
            said.append(line)
            if "ready to accept connections" in line:
                return
        raise AssertionError("".join(said))

    def stop(self):
        if self.process:
            # At once, but with all that it has made.
            self.process.send_signal(signal.SIGQUIT)
            self.process.communicate()
        shutil.rmtree(self.folder)


class ManyInstruments(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(cls.folder.cleanup)
        os.chdir(cls.folder.name)
        cls.addClassCleanup(os.chdir, "/")
        server = Server()
        cls.addClassCleanup(server.stop)
        server.start()
        cls.environment = dict(os.environ, PGHOST=server.folder, PGUSER="tester", PGDATABASE="office", PGTZ="UTC",
                               PATH=os.path.dirname(TOOL) + ":" + os.environ["PATH"])
        cls.psql("CREATE DATABASE office", PGDATABASE="postgres")
        cls.schema()
        run(TOOL, "create", "empty-m", "empty-t")
        cls.pairs = []
        for pair in range(PAIRS):
            cls.pairs += cls.make_pair(str(pair), entries_of(pair))
        run(TOOL, "create", "m", "t")
        cls.merged = run(TOOL, "merge", "m", "t", *cls.pairs).splitlines()[-1]
        cls.loaded = cls.load(*cls.pairs)

    @staticmethod
    def make_pair(name, entries):
        with open("in.json", "w", encoding="utf-8") as file:
            json.dump(entries, file)
        files = ["m" + name, "t" + name]
        for file, empty in zip(files, ("empty-m", "empty-t")):
            shutil.copy(empty, file)
        run(TOOL, "import", *files, "in.json")
        return files

    @classmethod
    def psql(cls, sql, **environment):
        return run("psql", "-XAtq", "-v", "ON_ERROR_STOP=1", "-c", sql,
                   environment=dict(cls.environment, **environment))

    @classmethod
    def rows(cls, sql):
        return json.loads(cls.psql("SELECT coalesce(json_agg(answer), '[]') FROM (%s) AS answer" % sql))

    @classmethod
    def schema(cls, **environment):
        run("psql", "-Xq", "-v", "ON_ERROR_STOP=1", "-f", EXAMPLE + "/schema.sql",
            environment=dict(cls.environment, **environment))

    @classmethod
    def load(cls, *files, status=0):
        return run(EXAMPLE + "/load", *files, environment=cls.environment, status=status).splitlines()

    def exported(self, *options):
        return json.loads(run(TOOL, "export", "m", "t", *options))

    def test_loading_again_adds_nothing(self):
        total = sum(len(entries_of(pair)) for pair in range(PAIRS))
        different = len({json.dumps(entry, sort_keys=True) for pair in range(PAIRS) for entry in entries_of(pair)})
        self.assertLess(different, total)
        self.assertEqual(self.loaded[0], "m0: 4 added, 0 already there")
        self.assertEqual(sum(int(line.split()[1]) for line in self.loaded), different)
        self.assertIn("%d added, %d already there, " % (different, total - different), self.merged)
        before = self.psql("SELECT * FROM alignments ORDER BY arrival")
        self.assertEqual(before.count("dish"), len({(pair % 10, pair % 28) for pair in range(PAIRS)}))
        self.schema()
        again = ["m%d: 0 added, %d already there" % (pair, len(entries_of(pair))) for pair in range(PAIRS)]
        self.assertEqual(self.load(*self.pairs), again)
        self.assertEqual(self.psql("SELECT * FROM alignments ORDER BY arrival"), before)

    def test_counts_are_those_of_list(self):
        rows = self.rows("""
          SELECT kind, identifier, count(*) AS reports,
            to_char(max(time), 'YYYY-MM-DD"T"HH24:MI:SS"Z"') AS "lastMeasured",
            (SELECT CASE WHEN bool_or(verdict = 'fail') THEN 'fail'
                         WHEN bool_or(verdict = 'pass') THEN 'pass' ELSE 'none' END
             FROM latest WHERE latest.kind = alignments.kind AND latest.identifier = alignments.identifier) AS verdict
          FROM alignments GROUP BY kind, identifier ORDER BY kind DESC, min(arrival)""")
        listed = json.loads(run(TOOL, "list", "m", "t", "--format", "json"))
        self.assertEqual(len(listed), 31)
        self.assertEqual({row["verdict"] for row in listed}, {"pass", "fail"})
        self.assertEqual(rows, listed)

    def test_latest_and_failing_are_those_of_the_program(self):
        for view, options in (("alignments", []), ("latest", ["--latest"]), ("failing", ["--latest", "--failed"])):
            uids = sorted(entry["uid"] for entry in self.exported(*options))
            self.assertGreater(len(uids), 10)
            self.assertEqual([row["uid"] for row in self.rows("SELECT uid FROM %s ORDER BY uid::text" % view)], uids)
        reports = run(TOOL, "report", "m", "t", "--all", "--latest", "--failed", "--format", "json")
        self.assertEqual(len(json.loads(reports)), int(self.psql("SELECT count(*) FROM failing")))

    def test_every_value_arrives(self):
        stored = {row["uid"]: row for row in self.rows("SELECT * FROM alignments")}
        for entry in self.exported():
            row = stored[entry["uid"]]
            for angle in ("azimuth", "tilt", "roll"):
                for part in ("target", "measured"):
                    self.assertEqual(row[part + "_" + angle], entry[part][angle])
                if angle in entry["judgement"]:
                    self.assertAlmostEqual(row["deviation_" + angle], entry["judgement"][angle]["deviation"], 6)
                    self.assertEqual(row["options_thresholds_" + angle], entry["options"]["thresholds"][angle])
            for part, prefix in (("location", "location_"), ("farEnd", "far_end_")):
                for name, value in entry.get(part, {}).items():
                    self.assertEqual(row[prefix + name], value)
            for column, value in (("kind", entry["kind"]), ("identifier", entry["identifier"]),
                                  ("sector", entry.get("sector", "")), ("position", entry.get("position", "")),
                                  ("time", entry["time"].replace("Z", "+00:00")), ("verdict", entry["verdict"]),
                                  ("height_value", entry["height"]["value"]),
                                  ("height_source", str(entry["height"]["source"])),
                                  ("options_note", entry["options"]["note"]),
                                  ("options_tilt_inversion", entry["options"]["tiltInversion"]),
                                  ("options_roll_precision", entry["options"].get("rollPrecision")),
                                  ("options_thresholds_path_length", entry["options"]["thresholds"].get("pathLength"))):
                self.assertEqual(row[column], value, column)

    def test_places_are_geography(self):
        self.assertEqual(self.rows("SELECT DISTINCT ST_Y(place::geometry) AS y, ST_X(place::geometry) AS x, "
                                   "ST_Z(place::geometry) AS z FROM alignments WHERE kind = 'site'"),
                         [{"y": 59.318742, "x": 10.477905, "z": 38.4}])
        # By GeographicLib's GeodSolve -i.
        distances = self.rows(
            "SELECT DISTINCT ST_Distance(place, far_end) AS metres FROM alignments WHERE kind = 'path'")
        self.assertEqual(len(distances), 1)
        self.assertAlmostEqual(distances[0]["metres"], 3465.195, 2)

    def test_a_place_that_is_nowhere_on_earth_is_none(self):
        files = self.make_pair("far", [site("far", "A", 1, 0, 1)])
        run("sqlite3", files[0], "UPDATE Geolocation SET LatitudeDegreesNorth = 91")
        try:
            self.assertEqual(self.load(*files), ["mfar: 1 added, 0 already there"])
            self.assertEqual(self.rows("SELECT place FROM alignments WHERE identifier = 'far'"), [{"place": None}])
        finally:
            self.psql("DELETE FROM alignments WHERE identifier = 'far'")

    def test_a_file_of_version_1_is_loaded_without_thresholds(self):
        with open(os.path.join(HERE, "..", "golden", "version_1.sql"), encoding="utf-8") as dump:
            subprocess.run(["sqlite3", "old"], stdin=dump, check=True)
        uids = sorted(entry["uid"] for entry in json.loads(run(TOOL, "export", "old")))
        self.assertGreater(len(uids), 1)
        try:
            self.assertEqual(self.load("old", ""), ["old: %d added, 0 already there" % len(uids)])
            found = self.rows("SELECT uid FROM alignments WHERE verdict = 'none' AND options_thresholds_tilt = 0 "
                              "AND uid IN ('%s') ORDER BY uid::text" % "', '".join(uids))
            self.assertEqual([row["uid"] for row in found], uids)
        finally:
            self.psql("DELETE FROM alignments WHERE uid IN ('%s')" % "', '".join(uids))

    def test_without_postgis_all_but_places_is_there(self):
        self.psql("CREATE ROLE clerk LOGIN")
        self.psql("CREATE DATABASE plain OWNER clerk", PGDATABASE="postgres")
        plain = {"PGDATABASE": "plain", "PGUSER": "clerk"}
        self.schema(**plain)
        loaded = run(EXAMPLE + "/load", *self.pairs[:2], environment=dict(self.environment, **plain))
        self.assertEqual(loaded, "m0: 4 added, 0 already there\n")
        self.assertEqual(self.psql("SELECT count(*) FROM pg_extension WHERE extname = 'postgis'", **plain), "0\n")
        self.assertEqual(self.psql("SELECT count(*) FROM latest", **plain), "4\n")

    def test_a_pair_that_cannot_be_read_changes_nothing(self):
        with open("broken", "wb") as file:
            file.write(b"no database" * 100)
        before = self.psql("SELECT count(*) FROM alignments")
        self.assertEqual(self.load("broken", "t0", status=4), [])
        self.assertEqual(self.load("m0", status=2), [])
        self.assertEqual(self.psql("SELECT count(*) FROM alignments"), before)


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], "-v"])
