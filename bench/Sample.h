#pragma once

#include <QDateTime>
#include <QString>
#include <string>
#include <type_traits>

/// The files that every contender works on. Conversions use the scratch file that the library uses.
namespace Paths {
constexpr char main[] = "/opt/tarnbeam/database/bench.sqlite";
constexpr char thresholds[] = "/opt/tarnbeam/database/bench-thresholds.sqlite";
constexpr char scratch[] = "/opt/tarnbeam/database/TemporaryDB.sqlite";
constexpr char folder[] = "/opt/tarnbeam/database";
}  // namespace Paths

/// The alignment that is saved, as the values that SampleSiteAlignment and SamplePathAlignment number 1 of
/// the tests have: the library's contender saves those, and all files come out alike.
template <typename Text>
struct Sample {
  Text site = Make("Site 1");
  Text path = Make("Path 1");
  Text sector = Make("Sector 1");
  Text position = Make("Position 1");
  Text note = Make("note 1");
  Text none = Make("ZZZ");
  double target[3] = {91.5, -6.75, 4.125};
  double pathTarget[3] = {201.25, -8.5, 6.875};
  double measured[3] = {121.5, -4.25, 2.75};
  double location[3] = {52.5, -1.125, 36.25};
  double farEnd[3] = {49.75, 12.625, 520.5};
  double height = 23.5;
  int heightType = 2;
  double azimuthOffset = 1.375;
  int tiltInversion = 0;
  int rollPrecision = 11;
  double siteThresholds[3] = {3.5, 5.5, 7.5};
  double pathThresholds[3] = {3.5, 5.5, 9.5};
  unsigned int time = 1500000001U;

  static Text Make(const char* text) {
    if constexpr (std::is_same_v<Text, QString>) {
      return QString::fromUtf8(text);
    } else {
      return text;
    }
  }
};
