#include <gtest/gtest.h>

#include "tests/support/PrintQt.h"
#include "tests/tool/formats/Samples.h"
#include "tool/formats/AlignmentCsv.h"

namespace {

QByteArray LineOf(const CsvForm& form, const QString& text) {
  CsvLine line(form);
  line.AddText(text);
  line.AddValue("-1");
  return line.Bytes();
}

TEST(CsvTest, CellsAreQuotedWhereTheyHaveTo) {
  const CsvForm form;
  EXPECT_EQ(LineOf(form, "a b"), "a b,-1\r\n");
  EXPECT_EQ(LineOf(form, ""), ",-1\r\n");
  EXPECT_EQ(LineOf(form, "a,b"), "\"a,b\",-1\r\n");
  EXPECT_EQ(LineOf(form, "a\"b"), "\"a\"\"b\",-1\r\n");
  EXPECT_EQ(LineOf(form, "a\nb"), "\"a\nb\",-1\r\n");
  EXPECT_EQ(LineOf(form, "a\rb"), "\"a\rb\",-1\r\n");
}

TEST(CsvTest, AnotherSeparatorIsQuotedInstead) {
  const CsvForm form{QLatin1Char(';'), false, false};
  EXPECT_EQ(LineOf(form, "a,b"), "a,b;-1\r\n");
  EXPECT_EQ(LineOf(form, "a;b"), "\"a;b\";-1\r\n");
}

TEST(CsvTest, TextsThatLookLikeFormulasAreGuarded) {
  const CsvForm form{QLatin1Char(','), false, true};
  EXPECT_EQ(LineOf(form, "=1+1"), "'=1+1,-1\r\n");
  EXPECT_EQ(LineOf(form, "+1"), "'+1,-1\r\n");
  EXPECT_EQ(LineOf(form, "-1"), "'-1,-1\r\n");
  EXPECT_EQ(LineOf(form, "@a"), "'@a,-1\r\n");
  EXPECT_EQ(LineOf(form, "\ta"), "'\ta,-1\r\n");
  EXPECT_EQ(LineOf(form, "\ra"), "\"'\ra\",-1\r\n");
  EXPECT_EQ(LineOf(form, "a=1"), "a=1,-1\r\n");
  EXPECT_EQ(LineOf(CsvForm(), "=1+1"), "=1+1,-1\r\n");
}

TEST(CsvTest, ReportOfASite) {
  Written written;
  AlignmentCsvWriter writer(written.Sink(), CsvForm(), AlignmentColumns::OfReport(Kind::Site));
  writer.Write(ReportsOf({SampleSite()}));
  EXPECT_EQ(written.Text(),
            "index,key,kind,identifier,sector,position,time,target.azimuth [°],target.tilt [°],"
            "target.roll [°],measured.azimuth [°],measured.tilt [°],measured.roll [°],"
            "location.latitude [°N],location.longitude [°E],location.elevation [m],height.value [m],"
            "height.source,options.azimuthOffset [°],options.tiltInversion,options.rollPrecision,"
            "options.note,options.thresholds.azimuth [°],options.thresholds.tilt [°],"
            "options.thresholds.roll [°],deviation.azimuth,deviation.tilt,deviation.roll,verdict\r\n"
            "3,7,site,Åsgård,Alpha,Høyt,2024-05-14T07:12:33Z,0.5,-2.25,0.125,359.75,-2.1,0.375,"
            "59.318742,10.477905,38.4,31.5,gps,90,true,2,\"Grüße, \"\"Ole\"\"\nline 2\",1.5,0.125,0,"
            "-0.75,0.15,0.25,fail\r\n");
}

TEST(CsvTest, ReportOfAPath) {
  Written written;
  AlignmentCsvWriter writer(written.Sink(), CsvForm(), AlignmentColumns::OfReport(Kind::Path));
  writer.Write(ReportsOf({SamplePath()}));
  EXPECT_EQ(
      written.Text(),
      "index,key,kind,identifier,time,target.azimuth [°],target.tilt [°],target.roll [°],"
      "measured.azimuth [°],measured.tilt [°],measured.roll [°],location.latitude [°N],"
      "location.longitude [°E],location.elevation [m],farEnd.latitude [°N],farEnd.longitude [°E],"
      "farEnd.elevation [m],height.value [m],height.source,options.azimuthOffset [°],"
      "options.tiltInversion,options.note,options.thresholds.azimuth [°],options.thresholds.tilt [°],"
      "options.thresholds.pathLength,deviation.azimuth,deviation.tilt,deviation.roll,verdict\r\n"
      "3,7,path,Żuławy,2024-05-14T07:12:33Z,0.5,-2.25,0.125,359.75,-2.1,0.375,59.318742,10.477905,38.4,"
      "54.152287,19.408831,27.75,31.5,gps,90,true,\"Grüße, \"\"Ole\"\"\nline 2\",1.5,0.125,1000.5,-0.75,"
      "0.15,,fail\r\n");
}

TEST(CsvTest, ExportHasTheColumnsOfBothKinds) {
  Written written;
  AlignmentCsvWriter writer(written.Sink(), CsvForm{QLatin1Char(';'), true, false},
                            AlignmentColumns::OfExport());
  Alignment path = SamplePath();
  path.note = QStringLiteral("=1");
  writer.Write(ReportsOf({path}));
  EXPECT_EQ(written.Text(),
            "\xEF\xBB\xBFkey;kind;identifier;sector;position;time;target.azimuth;target.tilt;target.roll;"
            "measured.azimuth;measured.tilt;measured.roll;location.latitude;location.longitude;"
            "location.elevation;farEnd.latitude;farEnd.longitude;farEnd.elevation;height.value;"
            "height.source;options.azimuthOffset;options.tiltInversion;options.rollPrecision;options.note;"
            "options.thresholds.azimuth;options.thresholds.tilt;options.thresholds.roll;"
            "options.thresholds.pathLength;deviation.azimuth;deviation.tilt;deviation.roll;verdict;uid\r\n"
            "7;path;Żuławy;;;2024-05-14T07:12:33Z;0.5;-2.25;0.125;359.75;-2.1;0.375;59.318742;10.477905;38.4;"
            "54.152287;19.408831;27.75;31.5;gps;90;true;;=1;1.5;0.125;;1000.5;-0.75;0.15;;fail;"
            "a65bc655-f8ab-55a9-a10f-f6a63d8810c3\r\n");
}

}  // namespace
