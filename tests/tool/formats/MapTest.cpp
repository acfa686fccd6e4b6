#include <gtest/gtest.h>

#include <QJsonDocument>
#include <QJsonObject>
#include <QXmlStreamReader>
#include <cmath>

#include "tests/support/PrintQt.h"
#include "tests/tool/formats/Samples.h"
#include "tool/formats/AlignmentMap.h"

namespace {

// The ends of geodesics are GeodSolve's, the distances in degrees at most a centimetre.
void ExpectNear(const MapPoint& point, double longitude, double latitude) {
  constexpr double centimetre = 0.9e-7;
  EXPECT_NEAR(point.latitude, latitude, centimetre);
  EXPECT_NEAR(point.longitude, longitude, centimetre / std::cos(latitude * 3.14159265358979 / 180));
}

void ExpectSame(const MapPoint& point, double longitude, double latitude) {
  EXPECT_EQ(point.longitude, longitude);
  EXPECT_EQ(point.latitude, latitude);
}

TEST(MapLineTest, AShortRayHasTwoPoints) {
  const MapLine ray = Geodesics::Ray({10.477905, 59.318742}, 120, 1000);
  ASSERT_EQ(ray.size(), 1U);
  ASSERT_EQ(ray.front().size(), 2U);
  ExpectSame(ray.front().front(), 10.477905, 59.318742);
  ExpectNear(ray.front().back(), 10.49311158, 59.31425281);
}

TEST(MapLineTest, ALongRayFollowsTheGeodesic) {
  const MapLine ray = Geodesics::Ray({0, 0}, 45, 3'000'000);
  ASSERT_EQ(ray.size(), 1U);
  EXPECT_GE(ray.front().size(), 60U);
  ExpectNear(ray.front().back(), 19.77851644, 18.80778874);
}

TEST(MapLineTest, BearingsBeyondTheCircle) {
  const MapPoint here{10.477905, 59.318742};
  ExpectNear(Geodesics::Ray(here, -240, 1000).front().back(), 10.49311158, 59.31425281);
  ExpectNear(Geodesics::Ray(here, 480, 1000).front().back(), 10.49311158, 59.31425281);
}

TEST(MapLineTest, ALineIsCutAtTheAntimeridianEastward) {
  const MapLine ray = Geodesics::Ray({179.995, -16.5}, 90, 2000);
  ASSERT_EQ(ray.size(), 2U);
  EXPECT_EQ(ray[0].back().longitude, 180);
  EXPECT_EQ(ray[1].front().longitude, -180);
  EXPECT_EQ(ray[0].back().latitude, ray[1].front().latitude);
  ExpectNear(ray[1].back(), -179.98626712, -16.49999916);
}

TEST(MapLineTest, ALineIsCutAtTheAntimeridianWestward) {
  const MapLine line = Geodesics::LineBetween({-179.9, -16.5}, {179.9, -16.5});
  ASSERT_EQ(line.size(), 2U);
  ExpectSame(line[0].front(), -179.9, -16.5);
  EXPECT_EQ(line[0].back().longitude, -180);
  EXPECT_EQ(line[1].front().longitude, 180);
  ExpectSame(line[1].back(), 179.9, -16.5);
}

TEST(MapLineTest, ALineThatBeginsOnTheAntimeridianIsInOnePart) {
  for (const double side : {-180.0, 180.0}) {
    for (const double bearing : {0.0, 90.0, 180.0, 270.0}) {
      const MapLine ray = Geodesics::Ray({side, 10}, bearing, 1000);
      ASSERT_EQ(ray.size(), 1U) << side << " " << bearing;
      EXPECT_LT(std::fabs(ray[0][0].longitude - ray[0][1].longitude), 1) << side << " " << bearing;
    }
  }
}

TEST(MapLineTest, ALineOverThePoleIsCutThere) {
  const MapLine ray = Geodesics::Ray({10, 89.995}, 0, 1000);
  ASSERT_EQ(ray.size(), 2U);
  ExpectSame(ray[0].front(), 10, 89.995);
  ExpectSame(ray[0].back(), 10, 90);
  ExpectSame(ray[1].front(), -170, 90);
  EXPECT_EQ(ray[1].back().longitude, -170);
  EXPECT_NEAR(ray[1].back().latitude, 89.99604697, 1e-7);
  EXPECT_EQ(Geodesics::Ray({10, -89.995}, 180, 1000).size(), 2U);
}

TEST(MapLineTest, NoStepIsWideNearThePole) {
  const MapLine ray = Geodesics::Ray({170, 89.99}, 70, 4000);
  ASSERT_FALSE(ray.empty());
  for (const std::vector<MapPoint>& part : ray) {
    ASSERT_GT(part.size(), 1U);
    for (std::size_t number = 1; number < part.size(); ++number) {
      EXPECT_LE(std::fabs(part[number].longitude - part[number - 1].longitude), 1);
      EXPECT_LE(std::fabs(part[number].longitude), 180);
    }
  }
}

TEST(MapLineTest, ALineWithoutLengthIsOne) {
  const MapLine line = Geodesics::LineBetween({7, 8}, {7, 8});
  ASSERT_EQ(line.size(), 1U);
  EXPECT_EQ(line[0].size(), 2U);
}

TEST(MapLineTest, LongitudesBeyondTheCircleAreBroughtBack) {
  ExpectSame(Geodesics::OnMap({190, 5}), -170, 5);
  ExpectSame(Geodesics::Ray({370, 0}, 0, 1000).front().front(), 10, 0);
}

TEST(MapLineTest, CourseToTheFarEnd) {
  // By GeodSolve -i.
  Geodesics::Course course = Geodesics::Between({19.404528, 54.183316}, {19.408831, 54.152287});
  EXPECT_NEAR(course.bearingDegrees, 175.34630616, 1e-8);
  EXPECT_NEAR(course.distanceMeters, 3465.195, 0.0005);
  course = Geodesics::Between({-7.888194, 37.152611}, {-7.93044, 37.019355});
  EXPECT_NEAR(course.bearingDegrees, 360 - 165.73613218, 1e-8);
  EXPECT_NEAR(course.distanceMeters, 15258.206, 0.0005);
}

QJsonArray Features(const std::vector<Alignment>& alignments) {
  Written written;
  GeoJsonWriter writer(written.Sink(), 1000);
  for (const Alignment& alignment : alignments) writer.Write(ReportsOf({alignment}));
  writer.End();
  QJsonParseError error{};
  const QJsonObject collection = QJsonDocument::fromJson(written.Text(), &error).object();
  EXPECT_EQ(error.error, QJsonParseError::NoError) << written.Text().constData();
  EXPECT_EQ(collection.keys(), (QStringList{"features", "type"}));
  EXPECT_EQ(collection["type"].toString(), "FeatureCollection");
  return collection["features"].toArray();
}

TEST(GeoJsonTest, Nothing) { EXPECT_EQ(Features({}), QJsonArray()); }

QJsonObject Expected(const char* role, const QJsonObject& geometry, const QJsonValue& sector) {
  return {{"type", "Feature"},
          {"geometry", geometry},
          {"properties", QJsonObject{{"role", role},
                                     {"kind", sector.isNull() ? "path" : "site"},
                                     {"identifier", sector.isNull() ? "Żuławy" : "Åsgård"},
                                     {"sector", sector},
                                     {"position", sector.isNull() ? QJsonValue() : QJsonValue("Høyt")},
                                     {"time", "2024-05-14T07:12:33Z"},
                                     {"verdict", "fail"},
                                     {"note", "Grüße, \"Ole\"\nline 2"}}}};
}

TEST(GeoJsonTest, ASiteIsAPointAndTwoRays) {
  const QJsonArray features = Features({SampleSite()});
  ASSERT_EQ(features.size(), 3);
  EXPECT_EQ(features[0].toObject(),
            Expected("instrument", {{"type", "Point"}, {"coordinates", QJsonArray{10.477905, 59.318742}}},
                     "Alpha"));
  for (const auto& [number, role] : {std::pair(1, "target"), std::pair(2, "measured")}) {
    const QJsonObject feature = features[number].toObject();
    EXPECT_EQ(feature, Expected(role, feature["geometry"].toObject(), "Alpha"));
    EXPECT_EQ(feature["geometry"].toObject()["type"], "LineString");
  }
  // GeodSolve: the rays to 0.5 and to 359.75 degrees.
  const auto end = [&features](int number) {
    return features[number].toObject()["geometry"].toObject()["coordinates"].toArray()[1].toArray();
  };
  ExpectNear({end(1)[0].toDouble(), end(1)[1].toDouble()}, 10.47805829, 59.32771826);
  ExpectNear({end(2)[0].toDouble(), end(2)[1].toDouble()}, 10.47782835, 59.32771852);
}

TEST(GeoJsonTest, APathHasALineToItsFarEnd) {
  const QJsonArray features = Features({SamplePath()});
  ASSERT_EQ(features.size(), 4);
  const QJsonObject line = features[3].toObject();
  EXPECT_EQ(line, Expected("path", line["geometry"].toObject(), QJsonValue()));
  const QJsonArray points = line["geometry"].toObject()["coordinates"].toArray();
  EXPECT_EQ(points.first().toArray(), (QJsonArray{10.477905, 59.318742}));
  EXPECT_EQ(points.last().toArray(), (QJsonArray{19.408831, 54.152287}));
}

TEST(GeoJsonTest, ALineInPartsIsAMultiLineString) {
  Alignment a = SampleSite();
  a.longitude = 179.9999;
  a.targetAzimuth = 90;
  const QJsonObject geometry = Features({a})[1].toObject()["geometry"].toObject();
  EXPECT_EQ(geometry["type"], "MultiLineString");
  EXPECT_EQ(geometry["coordinates"].toArray().size(), 2);
}

TEST(GeoJsonTest, WhatLiesNowhereOnEarthHasNoGeometry) {
  Alignment a = SamplePath();
  a.farLatitude = 90.5;
  EXPECT_EQ(Features({a}).size(), 3);
  a.latitude = -91;
  const QJsonArray features = Features({a});
  ASSERT_EQ(features.size(), 1);
  EXPECT_TRUE(features[0].toObject()["geometry"].isNull());
  EXPECT_EQ(features[0].toObject()["properties"].toObject()["role"], "instrument");
}

QString Kml(const std::vector<Alignment>& alignments) {
  Written written;
  KmlWriter writer(written.Sink(), 1000);
  for (const Alignment& alignment : alignments) writer.Write(ReportsOf({alignment}));
  writer.End();
  QXmlStreamReader reader(written.Text());
  while (!reader.atEnd()) reader.readNext();
  EXPECT_EQ(reader.errorString(), "");
  return QString::fromUtf8(written.Text());
}

// The texts of all elements of that name, in their order.
QStringList TextsOf(const QString& kml, const char* element) {
  QStringList texts;
  QXmlStreamReader reader(kml);
  while (!reader.atEnd()) {
    if (reader.readNext() != QXmlStreamReader::StartElement) continue;
    if (reader.name() == QLatin1String(element)) texts.append(reader.readElementText());
  }
  return texts;
}

TEST(KmlTest, FoldersPlacemarksAndStyles) {
  const QString kml = Kml({SampleSite(), SamplePath()});
  EXPECT_EQ(kml.count("<Folder>"), 2);
  EXPECT_EQ(kml.count("<Placemark>"), 7);
  EXPECT_EQ(kml.count("<Point>"), 2);
  EXPECT_EQ(kml.count("<LineString>"), 5);
  EXPECT_EQ(TextsOf(kml, "styleUrl"),
            (QStringList{"#fail", "#fail-target", "#fail", "#fail", "#fail-target", "#fail", "#fail"}));
  EXPECT_EQ(
      TextsOf(kml, "name"),
      (QStringList{"Antenna alignments", "Åsgård", "Alpha Høyt", "Alpha Høyt: target", "Alpha Høyt: measured",
                   "Żuławy", "Żuławy", "Żuławy: target", "Żuławy: measured", "Żuławy: path"}));
  EXPECT_EQ(TextsOf(kml, "coordinates").value(0), "10.477905,59.318742");
  // Lines follow the ground, points have nothing that could.
  EXPECT_EQ(kml.simplified().count("<LineString> <tessellate>1</tessellate> <coordinates>"), 5);
  EXPECT_EQ(kml.simplified().count("<Point> <coordinates>"), 2);
}

// Colours are opacity, blue, green and red.
TEST(KmlTest, PassIsGreenFailIsRedNoneIsGrey) {
  QString head =
      "<?xml version=\"1.0\" encoding=\"UTF-8\"?> <kml xmlns=\"http://www.opengis.net/kml/2.2\"> <Document> "
      "<name>Antenna alignments</name> ";
  for (const auto& [verdict, color] :
       {std::pair("pass", "ff487f1a"), std::pair("fail", "ff2626be"), std::pair("none", "ff808080")}) {
    for (const auto& [target, width] : {std::pair("", "4"), std::pair("-target", "1.5")}) {
      head += QString(
                  "<Style id=\"%1%2\"> <IconStyle> <color>%3</color> </IconStyle> "
                  "<LineStyle> <color>%3</color> <width>%4</width> </LineStyle> </Style> ")
                  .arg(verdict, target, color, width);
    }
  }
  EXPECT_EQ(Kml({SampleSite()}).simplified().section("<Folder>", 0, 0), head);
}

TEST(KmlTest, ExtendedData) {
  EXPECT_EQ(Kml({SamplePath()}).section("<ExtendedData>", 1, 1).section("</ExtendedData>", 0, 0).simplified(),
            "<Data name=\"role\"> <value>instrument</value> </Data> "
            "<Data name=\"kind\"> <value>path</value> </Data> "
            "<Data name=\"identifier\"> <value>Żuławy</value> </Data> "
            "<Data name=\"sector\"> <value></value> </Data> "
            "<Data name=\"position\"> <value></value> </Data> "
            "<Data name=\"time\"> <value>2024-05-14T07:12:33Z</value> </Data> "
            "<Data name=\"note\"> <value>Grüße, &quot;Ole&quot; line 2</value> </Data> "
            "<Data name=\"verdict\"> <value>fail</value> </Data>");
}

TEST(KmlTest, CharactersThatXmlCannotHoldAreReplaced) {
  Alignment a = SampleSite();
  a.note = QStringLiteral("a<b>&\x01\x1f\t") + QChar(0xFFFF) + QChar(0xD800) + QLatin1Char('x') +
           QChar(0xDC00) + QString::fromUtf8("🗼");
  constexpr int place = 6;
  EXPECT_EQ(TextsOf(Kml({a}), "value").value(place),
            QString::fromUtf8("a<b>&\uFFFD\uFFFD\t\uFFFD\uFFFDx\uFFFD🗼"));
}

TEST(KmlTest, ALineInPartsIsAMultiGeometry) {
  Alignment a = SampleSite();
  a.longitude = 179.9999;
  a.targetAzimuth = 90;
  EXPECT_EQ(Kml({a}).count("<MultiGeometry>"), 1);
}

}  // namespace
