// Reports in all forms.
#include <sys/stat.h>

#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QRegularExpression>

#include "tests/tool/ToolTest.h"

namespace {

class ReportTest : public ToolTest {
 protected:
  void SetUp() override { CreateFilesWith({SiteEntry(), SiteEntry(QStringLiteral("B")), PathEntry()}); }

  QString Report(const QString& option, const QString& identifier, const QString& format) {
    return RunWell({"report", "m", "t", option, identifier, "--format", format});
  }
};

TEST_F(ReportTest, TableOfASite) {
  EXPECT_EQ(
      RunWell({"report", "m", "t", "--site", "Åsgård"}),
      QString("Site Åsgård: 1 report\n"
              "\n"
              "Report 0 (alignment key 1)\n"
              "  identifier           Åsgård\n"
              "  sector               Alpha\n"
              "  position             Høyt\n"
              "  time                 2024-05-14T07:12:33Z\n"
              "  target               azimuth 0.5 °             tilt -2.25 °              roll 0.125 °\n"
              "  measured             azimuth 359.75 °          tilt -2.5 °               roll 0.375 °\n"
              "  location             latitude 59.318742 °N     longitude 10.477905 °E    elevation 38.5 m\n"
              "  height               value 31.5 m              source gps\n"
              "  options              azimuthOffset 90 °        tiltInversion true        "
              "rollPrecision 2           note Grüße, \"Ole\"\\nline 2\n"
              "  options.thresholds   azimuth 1.5 °             tilt 0.125 °              roll 0 °\n"
              "  deviation            azimuth -0.75 °: pass     tilt -0.25 °: fail        "
              "roll +0.25 °: no threshold\n"));
}

TEST_F(ReportTest, TableOfAPath) {
  EXPECT_EQ(
      RunWell({"report", "m", "t", "--path", "Żuławy"}),
      QString("Path Żuławy: 1 report\n"
              "\n"
              "Report 0 (alignment key 1)\n"
              "  identifier           Żuławy\n"
              "  time                 2024-05-14T07:12:33Z\n"
              "  target               azimuth 0.5 °             tilt -2.25 °              roll 0.125 °\n"
              "  measured             azimuth 359.75 °          tilt -2.5 °               roll 0.375 °\n"
              "  location             latitude 59.318742 °N     longitude 10.477905 °E    elevation 38.5 m\n"
              "  farEnd               latitude 54.152287 °N     longitude 19.408831 °E    elevation 27.75 m\n"
              "  height               value 31.5 m              source gps\n"
              "  options              azimuthOffset 90 °        tiltInversion true        "
              "note Grüße, \"Ole\"\\nline 2\n"
              "  options.thresholds   azimuth 1.5 °             tilt 0.25 °               pathLength 1000.5\n"
              "  deviation            azimuth -0.75 °: pass     tilt -0.25 °: pass\n"));
}

TEST_F(ReportTest, CsvOfASite) {
  EXPECT_EQ(Report("--site", "Åsgård", "csv"),
            QString("index,key,kind,identifier,sector,position,time,target.azimuth [°],target.tilt [°],"
                    "target.roll [°],measured.azimuth [°],measured.tilt [°],measured.roll [°],"
                    "location.latitude [°N],location.longitude [°E],location.elevation [m],height.value [m],"
                    "height.source,options.azimuthOffset [°],options.tiltInversion,options.rollPrecision,"
                    "options.note,options.thresholds.azimuth [°],options.thresholds.tilt [°],"
                    "options.thresholds.roll [°],deviation.azimuth,deviation.tilt,deviation.roll,verdict\r\n"
                    "0,1,site,Åsgård,Alpha,Høyt,2024-05-14T07:12:33Z,0.5,-2.25,0.125,359.75,-2.5,0.375,"
                    "59.318742,10.477905,38.5,31.5,gps,90,true,2,\"Grüße, \"\"Ole\"\"\nline 2\",1.5,0.125,0,"
                    "-0.75,-0.25,0.25,fail\r\n"));
}

TEST_F(ReportTest, CsvOfAllIsThatOfExportWithUnitsAndIndex) {
  const QStringList lines = RunWell({"report", "m", "t", "--all", "--format", "csv"}).split("\r\n");
  const QStringList exported = RunWell({"export", "m", "t", "--format", "csv"}).split("\r\n");
  ASSERT_EQ(lines.size(), 1 + 3 + 1);
  ASSERT_EQ(exported.size(), lines.size());
  EXPECT_EQ(QString(lines.at(0)).remove(QRegularExpression(" \\[[^]]+\\]")) + ",uid",
            "index," + exported.at(0));
  for (const int number : {1, 2, 3}) {
    EXPECT_EQ(lines.at(number), "0," + exported.at(number).section(',', 0, -2));
  }
}

// The one object of the array, without its verdicts.
QJsonObject WithoutVerdicts(const QString& json) {
  QJsonObject object = QJsonDocument::fromJson(json.toUtf8()).array().at(0).toObject();
  object.remove("judgement");
  object.remove("verdict");
  return object;
}

TEST_F(ReportTest, JsonIsWhatWasImported) {
  EXPECT_EQ(WithoutVerdicts(Report("--site", "Åsgård", "json")),
            With(SiteEntry(), "time", "2024-05-14T07:12:33Z"));
  EXPECT_EQ(WithoutVerdicts(Report("--path", "Żuławy", "json")),
            With(PathEntry(), "time", "2024-05-14T07:12:33Z"));
}

TEST_F(ReportTest, JsonCanBeImportedAgain) {
  const QString json = Report("--path", "Żuławy", "json");
  WriteFile("again.json", json.toUtf8());
  RunWell({"create", "m2", "t2"});
  EXPECT_EQ(RunWell({"import", "m2", "t2", "again.json"}), "1 alignment saved, 0 of sites and 1 of paths\n");
  EXPECT_EQ(RunWell({"report", "m2", "t2", "--path", "Żuławy", "--format", "json"}), json);
}

TEST_F(ReportTest, UnknownIdentifier) {
  ExpectFailure({"report", "m", "t", "--site", "Żuławy"}, "m: there is no site Żuławy");
  ExpectFailure({"report", "m", "t", "--path", "nowhere"}, "m: there is no path nowhere");
}

// The other end of the pipe is closed before the program begins.
TEST_F(ReportTest, OutputThatNobodyTakesIsAFailure) {
  const Outcome outcome = RunProgram(
      "sh", {"-c", "mkfifo gone && { cat gone; \"$0\" list m t; echo $? >status; } | { exec <&-; : >gone; }",
             TARNBEAM_TOOL});
  EXPECT_EQ(ReadFile("status"), "1\n");
  EXPECT_EQ(outcome.err, "tarnbeam-db: standard output cannot be written\n");
}

// Two connections stay open: that is required of the library.
TEST_F(ReportTest, DebugLinesAreShownWhereAskedFor) {
  const QString line =
      "tarnbeam-db: sqlite3_close failed with  5 unable to close due to unfinalized statements or unfinished "
      "backups\n";
  const QStringList words{"report", "m", "t", "--path", "Żuławy"};
  const Outcome outcome = Run(words + QStringList{"--verbose"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.err, line + line);
  EXPECT_EQ(outcome.out, RunWell(words));
}

#ifdef TARNBEAM_TOOL_DRAWS

TEST_F(ReportTest, PageIsNamedByTheContainer) {
  EXPECT_EQ(RunWell({"report", "m", "t", "--site", "Åsgård", "--pdf", "."}), "./Åsgård-A-Report.pdf\n");
  EXPECT_EQ(RunWell({"report", "m", "t", "--path", "Żuławy", "--pdf", "."}), "./Żuławy-M-Report.pdf\n");
  const QByteArray page = ReadFile("Åsgård-A-Report.pdf");
  EXPECT_TRUE(page.startsWith("%PDF-"));
  EXPECT_TRUE(page.trimmed().endsWith("%%EOF"));
  EXPECT_EQ(page.count("/Type /Page\n"), 1);
}

// The pages are there, but nothing that a database holds was changed.
TEST_F(ReportTest, NamesOfPagesThatCannotBeToldAreAFailure) {
  const Outcome outcome = RunInShell("exec \"$0\" \"$@\" >&-", {"report", "m", "t", "--all", "--pdf", "."});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err, "tarnbeam-db: standard output cannot be written\n");
}

TEST_F(ReportTest, ManyReportsTakeSeveralPages) {
  QJsonArray entries;
  for (int number = 0; number < 20; ++number) entries.append(SiteEntry("B", QString::number(number)));
  WriteJson("more.json", entries);
  RunWell({"import", "m", "t", "more.json"});
  RunWell({"report", "m", "t", "--site", "B", "--pdf", "."});
  // 21 blocks of which between three and seven fit.
  const auto pages = ReadFile("B-A-Report.pdf").count("/Type /Page\n");
  EXPECT_GE(pages, 3);
  EXPECT_LE(pages, 7);
}

TEST_F(ReportTest, AFolderInTheIdentifierIsNone) {
  WriteJson("slash.json", {SiteEntry("../a/b")});
  RunWell({"import", "m", "t", "slash.json"});
  EXPECT_EQ(RunWell({"report", "m", "t", "--site", "../a/b", "--pdf", "."}), "./.._a_b-A-Report.pdf\n");
}

TEST_F(ReportTest, PageThatCannotBeWritten) {
  ExpectFailure({"report", "m", "t", "--site", "B", "--pdf", "none"}, "none: no such folder");
  ASSERT_TRUE(QDir().mkpath(Path("out/B-A-Report.pdf")));
  ExpectFailure({"report", "m", "t", "--site", "B", "--pdf", "out"},
                "out/B-A-Report.pdf: is there and is not a file");
  ASSERT_TRUE(QDir().mkpath(Path("closed")));
  ASSERT_EQ(chmod(Path("closed").toUtf8().constData(), 0555), 0);
  const Outcome outcome = RunUnprivileged({"report", "m", "t", "--site", "B", "--pdf", "closed"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err, "tarnbeam-db: closed/B-A-Report.pdf: cannot be written (Permission denied)\n");
}

// Where it was replaced, it could be a device.
TEST_F(ReportTest, ALinkToWhatIsNotAFileStays) {
  ASSERT_EQ(mkfifo(Path("pipe").toUtf8().constData(), 0600), 0);
  ASSERT_TRUE(QFile::link("pipe", Path("B-A-Report.pdf")));
  ExpectFailure({"report", "m", "t", "--site", "B", "--pdf", "."},
                "./B-A-Report.pdf: is there and is not a file");
  struct stat status {};
  ASSERT_EQ(stat(Path("pipe").toUtf8().constData(), &status), 0);
  EXPECT_TRUE(S_ISFIFO(status.st_mode));
  QFile::remove(Path("pipe"));
}

TEST_F(ReportTest, LongIdentifiersAreCutInNames) {
  // Each character has two bytes.
  const QString start(100, QChar(0xE9));
  WriteJson("long.json", {SiteEntry(start + "1"), SiteEntry(start + "2")});
  RunWell({"import", "m", "t", "long.json"});
  const QStringList written = RunWell({"report", "m", "t", "--all", "--pdf", "."}).split('\n');
  EXPECT_EQ(written.filter(QChar(0xE9)),
            (QStringList{"./" + start + "-A-Report.pdf", "./" + start + "-A-Report-2.pdf"}));
}

#else

TEST_F(ReportTest, ThereAreNoPagesWithoutQtGui) {
  ExpectFailure({"report", "m", "t", "--site", "B", "--pdf", "."},
                "this program was built without Qt GUI, so it cannot write PDF");
}

#endif

}  // namespace
