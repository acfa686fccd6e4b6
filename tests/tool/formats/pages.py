#!/usr/bin/env python3
"""Pages as poppler shows them: what is on them, and that nothing is cut off or overlaps.

pages.py TOOL SURVEY: SURVEY is a JSON file whose first entries are copied.
"""
import contextlib
import copy
import glob
import json
import os
import re
import sqlite3
import subprocess
import sys
import tempfile
import unicodedata
import unittest
from xml.etree import ElementTree

TOOL, SURVEY = os.path.abspath(sys.argv[1]), os.path.abspath(sys.argv[2])
TITLE = "Acceptance protocol of the second stage of the northern valley, copy for the operator of the network"
LONG_NAME = "From the mast at the north-western end of the valley to the one at its south-eastern end"
JAPANESE, POLISH, ARABIC = "東京タワー", "Księży Młyn – Łódź", "برج المدينة"
LONG_NOTE = "The bracket was loose. " * 300 + "\n\n" + "x" * 400 + "\nlast"
# The same on every machine, whatever fonts there are besides.
FONTS = """<?xml version="1.0"?>
<fontconfig>
  <dir>/usr/share/fonts/truetype/noto</dir>
  <dir>/usr/share/fonts/opentype/noto</dir>
  <cachedir>%s/font-cache</cachedir>
  <alias><family>Sans</family><prefer>
    <family>Noto Sans</family><family>Noto Sans Arabic</family><family>Noto Sans CJK JP</family>
  </prefer></alias>
</fontconfig>
"""
MARGIN, WIDTH, HEIGHT = 42, 595, 842
RED, GREEN = (190, 38, 38), (26, 127, 72)


def run(*words):
    done = subprocess.run(words, stdout=subprocess.PIPE, stderr=subprocess.PIPE, check=False)
    assert done.returncode == 0 and done.stderr == b"", (words, done.stderr)
    return done.stdout


def changed(entry, **values):
    """A copy with other values; two underscores stand between the names of nested objects."""
    entry = copy.deepcopy(entry)
    for name, value in values.items():
        *objects, last = name.split("__")
        place = entry
        for each in objects:
            place = place[each]
        place[last] = value
    return entry


def survey():
    with open(SURVEY, encoding="utf-8") as file:
        entries = json.load(file)
    site = next(entry for entry in entries if entry["kind"] == "site")
    path = next(entry for entry in entries if entry["kind"] == "path")
    site = changed(site, time="2024-01-31T20:00:00Z", options__note="", target={"azimuth": 10, "tilt": -2, "roll": 0},
                   measured={"azimuth": 10.5, "tilt": -2.25, "roll": 0},
                   options__thresholds={"azimuth": 1, "tilt": 0.5, "roll": 1})
    made = [changed(site, identifier="Many", sector="S%d" % number, target__azimuth=12 * number)
            for number in range(30)]
    made += [changed(site, identifier="Twenty", time="2024-01-%02dT12:00:00Z" % (number + 1)) for number in range(20)]
    made += [changed(site, identifier="Notes", options__note=LONG_NOTE),
             changed(site, identifier="Notes", sector="A" * 40, position="B" * 60),
             changed(site, identifier=JAPANESE, sector="北東", options__note="ボルトを締め直した。" * 30),
             changed(site, identifier=POLISH, sector="Północ", options__note="Zażółć gęślą jaźń"),
             changed(site, identifier=ARABIC, sector="شمال", options__note="تم شد البراغي. " * 30),
             changed(site, identifier="None", options__thresholds={"azimuth": 0, "tilt": 0, "roll": 0}),
             changed(site, identifier="Passing"),
             changed(site, identifier="Failing", measured__tilt=7),
             changed(path, identifier=LONG_NAME, height__value=12345.67, options__tiltInversion=True,
                     target__roll=-170.5, measured__roll=-171.25, options__thresholds__pathLength=1000.5)]
    return made


def store_preferences():
    """As an instrument does; what does not matter here is 0."""
    with contextlib.closing(sqlite3.connect("m", isolation_level=None)) as main:
        columns = [row[1] for row in main.execute("PRAGMA table_info(Preferences)")]
        known = {"SerialNumber": 734211, "SerialNumberValid": 1, "CalibrationDate": "2024-01-08", "UserTechId": "ż-07"}
        main.execute("INSERT INTO Preferences (%s) VALUES (%s)" % (", ".join(columns), ", ".join("?" * len(columns))),
                     [known.get(column, 0) for column in columns])


class Pages(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.TemporaryDirectory()
        os.chdir(cls.folder.name)
        with open("fonts.conf", "w", encoding="utf-8") as file:
            file.write(FONTS % cls.folder.name)
        os.environ["FONTCONFIG_FILE"] = cls.folder.name + "/fonts.conf"
        with open("in.json", "w", encoding="utf-8") as file:
            json.dump(survey(), file)
        run(TOOL, "create", "m", "t")
        run(TOOL, "import", "m", "t", "in.json")
        store_preferences()
        run(TOOL, "report", "m", "t", "--all", "--pdf", ".", "--title", TITLE, "--time-zone", "Asia/Kolkata")

    @classmethod
    def tearDownClass(cls):
        os.chdir("/")
        cls.folder.cleanup()

    @staticmethod
    def text(name):
        """All words of the file, one blank between them; forms of letters are as they are typed."""
        shown = run("pdftotext", name + "-A-Report.pdf", "-").decode()
        return " ".join(unicodedata.normalize("NFKC", shown).split())

    def test_the_head(self):
        shown = self.text("Passing")
        self.assertTrue(shown.startswith(TITLE + " Site alignment report Passing PASS"), shown)
        for fact in ("Measurements 1 ", "Instrument 734211 ", "Calibrated 2024-01-08 ", "Technician ż-07 "):
            self.assertIn(fact, shown + " ")
        # The next day begins at 18:30 UTC there.
        self.assertIn("Measured 2024-02-01 ", shown)
        self.assertIn("2024-02-01 01:30:00 UTC+05:30", shown)

    def test_without_preferences_the_head_has_no_instrument(self):
        run(TOOL, "create", "m2", "t2")
        run(TOOL, "import", "m2", "t2", "in.json")
        os.mkdir("plain")
        run(TOOL, "report", "m2", "t2", "--site", "Passing", "--pdf", "plain")
        shown = self.text("plain/Passing")
        self.assertTrue(shown.startswith("Site alignment report Passing PASS"), shown)
        self.assertIn("2024-01-31 20:00:00 UTC ", shown)
        for fact in ("Instrument", "Calibrated", "Technician"):
            self.assertNotIn(fact, shown)

    def test_a_path_has_its_course_and_nothing_of_it_is_cut_off(self):
        shown = " ".join(run("pdftotext", LONG_NAME + "-M-Report.pdf", "-").decode().split())
        self.assertIn(LONG_NAME + " ", shown)
        # By GeographicLib's GeodSolve -i.
        self.assertIn("Course bearing 175.35°, distance 3.465 km", shown)
        self.assertIn("tilt inverted · roll -171.25° of -170.50° · path length threshold 1000.5", shown)

    def test_every_report_is_there(self):
        shown = self.text("Twenty")
        for number in range(20):
            self.assertEqual(shown.count("2024-01-%02d 17:30:00 UTC+05:30" % (number + 1)), 1, number)
        pages = [int(page) for page in re.findall(r"page (\d+)", shown)]
        self.assertGreaterEqual(len(pages), 3)
        self.assertEqual(pages, list(range(1, len(pages) + 1)))
        many = self.text("Many")
        for number in range(30):
            self.assertEqual(many.count("Sector S%d, position Top" % number), 1, number)
        self.assertEqual(len(re.findall(r"Sector S\d+(?!,|\d)", many)) + int(re.search(r"and (\d+) more", many)[1]), 30)

    def test_nothing_of_long_texts_is_lost(self):
        shown = self.text("Notes")
        self.assertEqual(len(re.findall(r"\bloose\.", shown)), 300)
        self.assertEqual(sum(len(word) for word in shown.split() if set(word) == {"x"}), 400)
        self.assertIn(" last ", shown)
        joined = shown.replace(" ", "")
        self.assertIn("Sector" + "A" * 40 + ",position" + "B" * 60, joined)

    def test_letters_of_all_scripts(self):
        joined = self.text(JAPANESE).replace(" ", "")
        self.assertIn(JAPANESE, joined)
        self.assertEqual(joined.count("締め直した"), 30)
        self.assertIn(POLISH, self.text(POLISH))
        self.assertIn("Zażółć gęślą jaźń", self.text(POLISH))
        # What poppler takes for gaps between words depends on the font.
        joined = self.text(ARABIC).replace(" ", "")
        self.assertIn(ARABIC.replace(" ", ""), joined)
        self.assertEqual(joined.count("البراغي"), 30)

    def test_verdicts_have_their_colours(self):
        forms = (("Passing", "PASS", GREEN), ("Failing", "FAIL", RED), ("None", "NO THRESHOLD", None))
        for name, badge, color in forms:
            self.assertEqual(self.text(name).count(badge), 2, name)
            run("pdftoppm", "-r", "72", "-singlefile", name + "-A-Report.pdf", "page")
            with open("page.ppm", "rb") as file:
                pixels = file.read()
            # Two badges of 86 by 16 points, less their letters and corners.
            for seen in (RED, GREEN):
                count = pixels.count(bytes(seen))
                self.assertTrue(count > 1500 if seen == color else count < 150, (name, seen, count))

    def test_a_line_stands_over_the_footer(self):
        run("pdftoppm", "-r", "72", "-singlefile", "Passing-A-Report.pdf", "page")
        with open("page.ppm", "rb") as file:
            magic, size, _, pixels = file.read().split(b"\n", 3)
        self.assertEqual((magic, size), (b"P6", b"%d %d" % (WIDTH, HEIGHT)))
        # Down the middle, where neither the name nor the page's number stands.
        column = [pixels[3 * (row * WIDTH + WIDTH // 2):][:3] for row in range(HEIGHT)]
        marked = [row for row in range(HEIGHT // 2, HEIGHT) if column[row] != b"\xff\xff\xff"]
        self.assertTrue(marked and all(abs(row - (HEIGHT - MARGIN - 14)) <= 1 for row in marked), marked)

    def test_nothing_is_cut_off_or_lies_on_something_else(self):
        names = glob.glob("*.pdf")
        self.assertEqual(len(names), 10)
        for name in names:
            tree = ElementTree.fromstring(run("pdftotext", "-bbox", name, "-"))
            for page in tree.iter("{http://www.w3.org/1999/xhtml}page"):
                words = [(word.text, *(float(word.get(side)) for side in ("xMin", "yMin", "xMax", "yMax")))
                         for word in page.iter("{http://www.w3.org/1999/xhtml}word")]
                self.assertGreater(len(words), 2)
                self.check_places(name, words)

    def check_places(self, name, words):
        for text, left, top, right, bottom in words:
            self.assertTrue(left > MARGIN - 1 and right < WIDTH - MARGIN + 1, (name, text, left, right))
            self.assertTrue(top > MARGIN - 10 and bottom < HEIGHT - MARGIN + 10, (name, text, top, bottom))
        for number, (text, left, top, right, bottom) in enumerate(words):
            for other, left2, top2, right2, bottom2 in words[number + 1:]:
                # Boxes have room for the highest letters of a font, so those of two lines may touch.
                wide = min(right, right2) - max(left, left2)
                high = min(bottom, bottom2) - max(top, top2)
                lower = min(bottom - top, bottom2 - top2)
                self.assertFalse(wide > 1 and high > 0.4 * lower, (name, text, other))


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], "-v"])
