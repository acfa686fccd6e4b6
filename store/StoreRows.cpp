#include "store/StoreRows.h"

#include <sqlite3.h>

#include "core/Sql.h"
#include "core/Statement.h"
#include "model/IGeolocation.h"
#include "model/IHeight.h"
#include "model/IOrientation.h"

namespace {

constexpr auto passOver = Statement::OnFailure::PassOver;

bool FindKey(sqlite3* db, const char* sql, const char* label, const QString& identifier, long long* key) {
  if (key == nullptr || db == nullptr) return false;
  *key = -1;
  Statement statement(db, sql, label);
  if (!statement.Text(identifier, "SQL bind failed with ").Bound()) return false;
  *key = statement.Step() == SQLITE_ROW ? statement.IntColumn(0) : 0;
  return true;
}

/// Required behaviour: the key is taken from the connection's last row even if nothing was inserted. Callers
/// rely on the result alone.
bool InsertIdentifier(sqlite3* db, const char* sql, const char* label, const QString& identifier,
                      long long* key) {
  Statement statement(db, sql, label);
  if (!statement) return false;
  const bool inserted = statement.Text(identifier, "SQL bind failed with ").Run();
  statement.Finalize();
  *key = sqlite3_last_insert_rowid(db);
  return inserted;
}

struct Thresholds {
  double azimuth;
  double tilt;
  double rollOrPathLength;
};

struct ThresholdTexts {
  const char* insert;
  const char* label;
  const char* alignmentFailure;
  const char* ownerFailure;
  const char* lastFailure;
};

/// Required behaviour: only the insert for a path logs its failure, so the caller passes `insert`. A key of
/// -1 passes: the thresholds of a save that failed half-way are kept under it.
bool InsertThresholds(sqlite3* db, const ThresholdTexts& texts, long long alignmentKey, long long ownerKey,
                      const Thresholds& thresholds, bool (Statement::*insert)(long long* key),
                      long long* thresholdKey) {
  if (alignmentKey == 0 || db == nullptr) return false;
  Statement statement(db, texts.insert, texts.label);
  statement.Key(alignmentKey, texts.alignmentFailure)
      .Key(ownerKey, texts.ownerFailure)
      .Double(thresholds.azimuth, "SQL bind AzimuthThreshold failed with ")
      .Double(thresholds.tilt, "SQL bind TiltThreshold failed with ")
      .Double(thresholds.rollOrPathLength, texts.lastFailure);
  return (statement.*insert)(thresholdKey);
}

}  // namespace

namespace StoreRows {

bool FindSite(sqlite3* db, const QString& identifier, long long* siteKey) {
  return FindKey(db, "SELECT  SiteKey  FROM Sites WHERE (SiteIdentifier=?)",
                 "Select SiteKey for Site Identifier", identifier, siteKey);
}

bool FindPath(sqlite3* db, const QString& identifier, long long* pathKey) {
  return FindKey(db, "SELECT  PathKey  FROM Paths WHERE (PathIdentifier=?)",
                 "Select PathKey for Path Identifier", identifier, pathKey);
}

bool SaveSite(sqlite3* db, const QString& identifier, long long* siteKey) {
  if (!FindSite(db, identifier, siteKey)) return false;
  return *siteKey >= 1 || InsertIdentifier(db, "INSERT INTO Sites (SiteIdentifier) VALUES (?)",
                                           "Insert Site Identifier", identifier, siteKey);
}

bool SavePath(sqlite3* db, const QString& identifier, long long* pathKey) {
  if (!FindPath(db, identifier, pathKey)) return false;
  return *pathKey >= 1 || InsertIdentifier(db, "INSERT INTO Paths (PathIdentifier) VALUES (?)",
                                           "Insert Path Identifier", identifier, pathKey);
}

bool SaveOrientation(sqlite3* db, IOrientation* orientation, long long* key) {
  if (key == nullptr || orientation == nullptr || db == nullptr) return false;
  Statement statement(db, "INSERT INTO Orientation (AzimuthDegrees,TiltDegrees,RollDegrees) VALUES (?,?,?)",
                      "Insert Orientation");
  return statement &&
         statement.Double(orientation->AzimuthDegrees(), "SQL bind AzimuthInDegrees failed with ")
             .Double(orientation->TiltDegrees(), "SQL bind TiltInDegrees failed with ")
             .Double(orientation->RollDegrees(), "SQL bind RollInDegrees failed with ")
             .Insert(key);
}

bool SaveGeolocation(sqlite3* db, IGeolocation* location, long long* key) {
  if (key == nullptr || location == nullptr || db == nullptr) return false;
  Statement statement(
      db,
      "INSERT INTO Geolocation (LatitudeDegreesNorth,LongitudeDegreesEast,ElevationMeters) VALUES (?,?,?)",
      "Insert Geolocation");
  return statement &&
         statement.Double(location->LatitudeDegreesNorth(), "SQL bind LatitudeInDegreesNorth failed with ")
             .Double(location->LongitudeDegreesEast(), "SQL bind LongitudeInDegreesEast failed with ")
             .Double(location->ElevationMeters(), "SQL bind ElevationInMeters failed with ")
             .Insert(key);
}

// Required behaviour: a height value that cannot be bound is passed over; its type is not.
bool SaveHeight(sqlite3* db, IHeight* height, long long* key) {
  if (key == nullptr || height == nullptr || db == nullptr) return false;
  Statement statement(db, "INSERT INTO Height (HeightInMeters,HeightType) VALUES (?,?)", "Insert Height");
  bool valid = false;
  return statement &&
         statement.Double(height->HeightInMeters(&valid), "SQL bind Height Value failed with ", passOver)
             .Int(static_cast<int>(height->HeightType()), "SQL bind HeightSourceKey failed with ")
             .Insert(key);
}

bool SaveSiteAlignment(sqlite3* db, const SchemaTexts& texts, const SiteAlignment& alignment,
                       long long* key) {
  if (key == nullptr || db == nullptr) return false;
  const auto& [owner, azimuthOffset, parts, time, tiltInversionEnabled, note] = alignment.common;
  Statement statement(db, texts.insertAntennaAlignment, "Insert Antenna Alignment");
  statement.Key(owner, "SQL bind SiteKey failed with ")
      .Text(alignment.sectorName, "SQL bind SectorName failed with ")
      .Text(alignment.antennaPosition, "SQL bind AntennaPosition failed with ")
      .Double(azimuthOffset, "SQL bind AzimuthOffsetDegrees failed with ")
      .Key(parts.targetOrientation, "SQL bind TargetOrientationKey failed with ")
      .Key(parts.location, "SQL bind SiteGeolocationKey failed with ")
      .Int(static_cast<int>(Sql::ToUnixUtc(time)), "SQL bind LinuxTimeUTC failed with ")
      .Key(parts.measuredOrientation, "SQL bind MeasuredOrientationKey failed with ")
      .Key(parts.height, "SQL bind SiteHeightKey failed with ", passOver);
  if (texts.hasTiltInversion) {
    statement.Int(tiltInversionEnabled ? 1 : 0, "SQL bind TiltInversionValue failed with ", passOver);
  }
  if (texts.hasSiteNote) statement.Text(note, "SQL bind Note failed with ");
  if (texts.hasRollPrecision)
    statement.Int(alignment.rollPrecision, "SQL bind RollPrecision failed with ", passOver);
  return statement.Insert(key);
}

bool SaveSiteThresholds(sqlite3* db, long long alignmentKey, long long* thresholdKey, long long siteKey,
                        double azimuthThreshold, double tiltThreshold, double rollThreshold) {
  static constexpr ThresholdTexts texts{
      "INSERT INTO AntennaAlignmentThresholds (AntennaAlignmentKey, SiteIdentifier, "
      "AzimuthThreshold, TiltThreshold, RollThreshold) VALUES (?,?,?,?,?)",
      "Insert Antenna Alignment Thresholds", "SQL bind AntennaAlignmentKey failed with ",
      "SQL bind SiteKey failed with ", "SQL bind RollThreshold failed with "};
  const Thresholds thresholds{azimuthThreshold, tiltThreshold, rollThreshold};
  return InsertThresholds(db, texts, alignmentKey, siteKey, thresholds, &Statement::Insert, thresholdKey);
}

// A path has neither sector nor antenna position, but the columns need a text. Required behaviour: no bind is
// passed over here, and the antenna position reports itself as the sector name.
bool SavePathAlignment(sqlite3* db, const SchemaTexts& texts, const PathAlignment& alignment,
                       long long* key) {
  if (key == nullptr || db == nullptr) return false;
  const auto& [owner, azimuthOffset, parts, time, tiltInversionEnabled, note] = alignment.common;
  const QString none = QStringLiteral("ZZZ");
  Statement statement(db, texts.insertPathAlignment, "Save Path Info");
  statement.Key(owner, "SQL bind PathKey failed with ")
      .Text(none, "SQL bind SectorName failed with ")
      .Text(none, "SQL bind SectorName failed with ")
      .Double(azimuthOffset, "SQL bind AzimuthOffset failed with ")
      .Key(alignment.pathLocationKey, "SQL bind PathGeolocationKey failed with ")
      .Key(parts.targetOrientation, "SQL bind TargetOrientationKey failed with ")
      .Key(parts.location, "SQL bind SiteGeolocationKey failed with ")
      .Int(static_cast<int>(Sql::ToUnixUtc(time)), "SQL bind LinuxTimeUTC failed with ")
      .Key(parts.measuredOrientation, "SQL bind MeasuredOrientationKey failed with ")
      .Key(parts.height, "SQL bind SiteHeightKey failed with ");
  if (texts.hasTiltInversion) {
    statement.Int(tiltInversionEnabled ? 1 : 0, "SQL bind TiltInversionEnabled failed with ");
  }
  if (texts.hasPathNote) statement.Text(note, "SQL bind Note failed with ");
  return statement.InsertOrLog(key);
}

bool SavePathThresholds(sqlite3* db, long long alignmentKey, long long* thresholdKey, long long pathKey,
                        float azimuthThreshold, float tiltThreshold, float pathLengthThreshold) {
  static constexpr ThresholdTexts texts{
      "INSERT INTO PathAlignmentThresholds (PathAlignmentKey, PathKey, AzimuthThreshold, "
      "TiltThreshold, PathLengthThreshold ) VALUES (?,?,?,?,?) ",
      "Save Path Threshold Info", "SQL bind PathAlignmentKey failed with ", "SQL bind PathKey failed with ",
      "SQL bind PathLengthThreshold failed with "};
  const Thresholds thresholds{azimuthThreshold, tiltThreshold, pathLengthThreshold};
  return InsertThresholds(db, texts, alignmentKey, pathKey, thresholds, &Statement::InsertOrLog,
                          thresholdKey);
}

}  // namespace StoreRows
