// Saving site and path alignments: the row writers, and the two transactions of a save.
#include "core/Connection.h"
#include "core/Statement.h"
#include "model/AntennaAlignmentReportData.h"
#include "model/IGeolocation.h"
#include "model/IHeight.h"
#include "model/IMeasurementOptions.h"
#include "model/IOrientation.h"
#include "model/IPathInformation.h"
#include "model/ISiteInformation.h"
#include "model/PathAlignmentReportData.h"
#include "store/AlignmentDatabaseStore.h"
#include "store/StoreDescription.h"

#include <sqlite3.h>

namespace {

constexpr auto passOver = Statement::OnFailure::PassOver;

/// An unknown identifier is a success with key 0, and so is a step that fails.
bool FindKey(sqlite3* db, const char* sql, const char* label, const QString& identifier, long long* key) {
  if (key == nullptr || db == nullptr) return false;
  *key = -1;
  Statement statement(db, sql, label);
  if (!statement || !statement.Text(identifier, "SQL bind failed with ").Bound()) return false;
  *key = statement.Step() == SQLITE_ROW ? statement.IntColumn(0) : 0;
  return true;
}

/// The key is taken from the connection's last row even when nothing was inserted: callers rely on the
/// result alone.
bool InsertIdentifier(sqlite3* db, const char* sql, const char* label, const QString& identifier,
                      long long* key) {
  Statement statement(db, sql, label);
  if (!statement) return false;
  const bool inserted = statement.Text(identifier, "SQL bind failed with ").Run();
  statement.Finalize();
  *key = sqlite3_last_insert_rowid(db);
  return inserted;
}

/// Runs the one step of an insert whose failed step is logged, as those of path alignments are.
bool InsertOrLog(sqlite3* db, Statement* statement, long long* key) {
  if (!statement->Bound()) return false;
  const int result = statement->Step();
  if (result != SQLITE_DONE) {
    Sql::LogFailure("SQL last step failed with ", result, db);
    return false;
  }
  *key = sqlite3_last_insert_rowid(db);
  return true;
}

}  // namespace

bool AlignmentDatabaseStore::GetIDForSiteIdentifier(sqlite3* db, QString& identifier, long long* siteKey) {
  return FindKey(db, "SELECT  SiteKey  FROM Sites WHERE (SiteIdentifier=?)",
                 "Select SiteKey for Site Identifier", identifier, siteKey);
}

bool AlignmentDatabaseStore::GetIDForPathIdentifier(sqlite3* db, QString& identifier, long long* pathKey) {
  return FindKey(db, "SELECT  PathKey  FROM Paths WHERE (PathIdentifier=?)",
                 "Select PathKey for Path Identifier", identifier, pathKey);
}

bool AlignmentDatabaseStore::SaveSiteIdentifier(sqlite3* db, QString& identifier, long long* siteKey) {
  if (!GetIDForSiteIdentifier(db, identifier, siteKey)) return false;
  return *siteKey >= 1 || InsertIdentifier(db, "INSERT INTO Sites (SiteIdentifier) VALUES (?)",
                                           "Insert Site Identifier", identifier, siteKey);
}

bool AlignmentDatabaseStore::SavePathIdentifier(sqlite3* db, QString& identifier, long long* pathKey) {
  if (!GetIDForPathIdentifier(db, identifier, pathKey)) return false;
  return *pathKey >= 1 || InsertIdentifier(db, "INSERT INTO Paths (PathIdentifier) VALUES (?)",
                                           "Insert Path Identifier", identifier, pathKey);
}

bool AlignmentDatabaseStore::SaveOrientation(sqlite3* db, IOrientation* orientation, long long* key) {
  if (key == nullptr || orientation == nullptr || db == nullptr) return false;
  Statement statement(db, "INSERT INTO Orientation (AzimuthDegrees,TiltDegrees,RollDegrees) VALUES (?,?,?)",
                      "Insert Orientation");
  return statement &&
         statement.Double(orientation->AzimuthDegrees(), "SQL bind AzimuthInDegrees failed with ")
             .Double(orientation->TiltDegrees(), "SQL bind TiltInDegrees failed with ")
             .Double(orientation->RollDegrees(), "SQL bind RollInDegrees failed with ")
             .Insert(key);
}

bool AlignmentDatabaseStore::SaveGeolocation(sqlite3* db, IGeolocation* location, long long* key) {
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

// A height value that cannot be bound is passed over on purpose; its type is not.
bool AlignmentDatabaseStore::SaveHeight(sqlite3* db, IHeight* height, long long* key) {
  if (key == nullptr || height == nullptr || db == nullptr) return false;
  Statement statement(db, "INSERT INTO Height (HeightInMeters,HeightType) VALUES (?,?)", "Insert Height");
  bool valid = false;
  return statement &&
         statement.Double(height->HeightInMeters(&valid), "SQL bind Height Value failed with ", passOver)
             .Int(static_cast<int>(height->HeightType()), "SQL bind HeightSourceKey failed with ")
             .Insert(key);
}

bool AlignmentDatabaseStore::SaveAntennaAlignment(sqlite3* db, long long siteKey, QString& sectorName,
                                                  QString& antennaPosition, float azimuthOffset,
                                                  long long targetOrientationKey,
                                                  long long measuredOrientationKey, long long locationKey,
                                                  long long heightKey, QDateTime& time,
                                                  long long* alignmentKey, bool tiltInversionEnabled,
                                                  QString note, int rollPrecision) {
  if (alignmentKey == nullptr || db == nullptr) return false;
  const StoreDescription& store = Description();
  Statement statement(db, store.texts.insertAntennaAlignment, "Insert Antenna Alignment");
  if (!statement) return false;
  statement.Key(siteKey, "SQL bind SiteKey failed with ")
      .Text(sectorName, "SQL bind SectorName failed with ")
      .Text(antennaPosition, "SQL bind AntennaPosition failed with ")
      .Double(azimuthOffset, "SQL bind AzimuthOffsetDegrees failed with ")
      .Key(targetOrientationKey, "SQL bind TargetOrientationKey failed with ")
      .Key(locationKey, "SQL bind SiteGeolocationKey failed with ")
      .Int(static_cast<int>(QDateToUnixUtc(time)), "SQL bind LinuxTimeUTC failed with ")
      .Key(measuredOrientationKey, "SQL bind MeasuredOrientationKey failed with ")
      .Key(heightKey, "SQL bind SiteHeightKey failed with ", passOver);
  if (store.hasTiltInversion) {
    statement.Int(tiltInversionEnabled ? 1 : 0, "SQL bind TiltInversionValue failed with ", passOver);
  }
  if (store.hasSiteNote) statement.Text(note, "SQL bind Note failed with ");
  if (store.hasRollPrecision) statement.Int(rollPrecision, "SQL bind RollPrecision failed with ", passOver);
  return statement.Insert(alignmentKey);
}

// A key of -1 passes: the thresholds of a save that failed midway are kept under it.
bool AlignmentDatabaseStore::SaveAntennaAlignmentThresholds(sqlite3* db, long long alignmentKey,
                                                            long long* thresholdKey, long long siteKey,
                                                            double azimuthThreshold, double tiltThreshold,
                                                            double rollThreshold) {
  if (alignmentKey == 0 || db == nullptr) return false;
  Statement statement(db,
                      "INSERT INTO AntennaAlignmentThresholds (AntennaAlignmentKey, SiteIdentifier, "
                      "AzimuthThreshold, TiltThreshold, RollThreshold) VALUES (?,?,?,?,?)",
                      "Insert Antenna Alignment Thresholds");
  return statement && statement.Key(alignmentKey, "SQL bind AntennaAlignmentKey failed with ")
                          .Key(siteKey, "SQL bind SiteKey failed with ")
                          .Double(azimuthThreshold, "SQL bind AzimuthThreshold failed with ")
                          .Double(tiltThreshold, "SQL bind TiltThreshold failed with ")
                          .Double(rollThreshold, "SQL bind RollThreshold failed with ")
                          .Insert(thresholdKey);
}

// A path has neither sector nor antenna position, but the columns want a text. No bind is passed over
// here, and the antenna position reports itself as the sector name.
bool AlignmentDatabaseStore::SavePathAlignment(sqlite3* db, long long pathKey, float azimuthOffset,
                                               long long pathLocationKey, long long targetOrientationKey,
                                               long long measuredOrientationKey, long long locationKey,
                                               long long heightKey, QDateTime& time, long long* alignmentKey,
                                               bool tiltInversionEnabled, QString note) {
  if (alignmentKey == nullptr || db == nullptr) return false;
  const StoreDescription& store = Description();
  const QString none = QStringLiteral("ZZZ");
  Statement statement(db, store.texts.insertPathAlignment, "Save Path Info");
  if (!statement) return false;
  statement.Key(pathKey, "SQL bind PathKey failed with ")
      .Text(none, "SQL bind SectorName failed with ")
      .Text(none, "SQL bind SectorName failed with ")
      .Double(azimuthOffset, "SQL bind AzimuthOffset failed with ")
      .Key(pathLocationKey, "SQL bind PathGeolocationKey failed with ")
      .Key(targetOrientationKey, "SQL bind TargetOrientationKey failed with ")
      .Key(locationKey, "SQL bind SiteGeolocationKey failed with ")
      .Int(static_cast<int>(QDateToUnixUtc(time)), "SQL bind LinuxTimeUTC failed with ")
      .Key(measuredOrientationKey, "SQL bind MeasuredOrientationKey failed with ")
      .Key(heightKey, "SQL bind SiteHeightKey failed with ");
  if (store.hasTiltInversion) {
    statement.Int(tiltInversionEnabled ? 1 : 0, "SQL bind TiltInversionEnabled failed with ");
  }
  if (store.hasPathNote) statement.Text(note, "SQL bind Note failed with ");
  return InsertOrLog(db, &statement, alignmentKey);
}

bool AlignmentDatabaseStore::SavePathAlignmentThresholds(sqlite3* db, long long alignmentKey,
                                                         long long* thresholdKey, long long pathKey,
                                                         float azimuthThreshold, float tiltThreshold,
                                                         float pathLengthThreshold) {
  if (alignmentKey == 0 || db == nullptr) return false;
  Statement statement(db,
                      "INSERT INTO PathAlignmentThresholds (PathAlignmentKey, PathKey, AzimuthThreshold, "
                      "TiltThreshold, PathLengthThreshold ) VALUES (?,?,?,?,?) ",
                      "Save Path Threshold Info");
  if (!statement) return false;
  statement.Key(alignmentKey, "SQL bind PathAlignmentKey failed with ")
      .Key(pathKey, "SQL bind PathKey failed with ")
      .Double(azimuthThreshold, "SQL bind AzimuthThreshold failed with ")
      .Double(tiltThreshold, "SQL bind TiltThreshold failed with ")
      .Double(pathLengthThreshold, "SQL bind PathLengthThreshold failed with ");
  return InsertOrLog(db, &statement, thresholdKey);
}

/// Writes thresholds in a transaction of their own, after the main file is finished and closed: the two
/// files are never changed together.
template <typename Write>
bool AlignmentDatabaseStore::InThresholdsTransaction(Write write) {
  const Connection db(OpenSecondDatabase(false));
  if (!db || !BeginTransaction(db)) return false;
  if (!write(db)) {
    RollBack(db);
    return false;
  }
  EndTransaction(db);
  return true;
}

/// False when the alignment row itself failed, which undoes everything. A failure before it commits what
/// was written and leaves the alignment key as it was; the difference is meant.
bool AlignmentDatabaseStore::SaveSiteRows(sqlite3* db, ISiteInformation* site, IGeolocation* location,
                                          IOrientation* measured, IHeight* height, QDateTime& time,
                                          IMeasurementOptions* options, long long* siteKey,
                                          long long* alignmentKey) {
  long long targetKey = -1;
  long long measuredKey = -1;
  long long locationKey = -1;
  long long heightKey = -1;
  QString identifier = site->SiteIdentifier();
  if (SaveSiteIdentifier(db, identifier, siteKey) &&
      SaveOrientation(db, site->TargetOrientation(), &targetKey) &&
      SaveOrientation(db, measured, &measuredKey) && SaveGeolocation(db, location, &locationKey) &&
      SaveHeight(db, height, &heightKey)) {
    QString sectorName = site->SectorName();
    QString antennaPosition = site->AntennaPosition();
    const float azimuthOffset = options->AzimuthOffset();
    const bool tiltInversion = options->TiltInversionEnabled();
    const QString note = options->Note();
    if (!SaveAntennaAlignment(db, *siteKey, sectorName, antennaPosition, azimuthOffset, targetKey,
                              measuredKey, locationKey, heightKey, time, alignmentKey, tiltInversion, note,
                              options->RollPrecision())) {
      RollBack(db);
      return false;
    }
  }
  EndTransaction(db);
  return true;
}

IAntennaAlignmentReportData* AlignmentDatabaseStore::SaveAlignmentReportData(ISiteInformation* site,
                                                                             IGeolocation* location,
                                                                             IOrientation* measured,
                                                                             IHeight* height, QDateTime time,
                                                                             IMeasurementOptions* options) {
  if (location == nullptr || site == nullptr || height == nullptr || measured == nullptr) return nullptr;
  Connection db(OpenDatabase(false));
  if (!db) return nullptr;
  long long siteKey = -1;
  long long alignmentKey = -1;
  const bool kept = !BeginTransaction(db) || SaveSiteRows(db, site, location, measured, height, time, options,
                                                          &siteKey, &alignmentKey);
  db.Close();
  if (!kept) return nullptr;
  const auto writeThresholds = [&](sqlite3* thresholds) {
    long long thresholdKey = -1;
    const double azimuth = options->AzimuthThreshold();
    const double tilt = options->TiltThreshold();
    const double roll = options->RollThreshold();
    return SaveAntennaAlignmentThresholds(thresholds, alignmentKey, &thresholdKey, siteKey, azimuth, tilt,
                                          roll);
  };
  if (Description().hasThresholdsFile && !InThresholdsTransaction(writeThresholds)) return nullptr;
  return new AntennaAlignmentReportData(static_cast<unsigned int>(alignmentKey), site, location, measured,
                                        height, time, options);
}

/// As SaveSiteRows().
bool AlignmentDatabaseStore::SavePathRows(sqlite3* db, IPathInformation* path, IGeolocation* location,
                                          IOrientation* target, IOrientation* measured, IHeight* height,
                                          QDateTime& time, IMeasurementOptions* options, long long* pathKey,
                                          long long* alignmentKey) {
  long long farEndKey = -1;
  long long targetKey = -1;
  long long measuredKey = -1;
  long long locationKey = -1;
  long long heightKey = -1;
  QString identifier = path->PathIdentifier();
  if (SavePathIdentifier(db, identifier, pathKey) && SaveGeolocation(db, path->PathLocation(), &farEndKey) &&
      SaveOrientation(db, target, &targetKey) && SaveOrientation(db, measured, &measuredKey) &&
      SaveGeolocation(db, location, &locationKey) && SaveHeight(db, height, &heightKey)) {
    const float azimuthOffset = options->AzimuthOffset();
    const bool tiltInversion = options->TiltInversionEnabled();
    if (!SavePathAlignment(db, *pathKey, azimuthOffset, farEndKey, targetKey, measuredKey, locationKey,
                           heightKey, time, alignmentKey, tiltInversion, options->Note())) {
      RollBack(db);
      return false;
    }
  }
  EndTransaction(db);
  return true;
}

IPathAlignmentReportData* AlignmentDatabaseStore::SavePathReportData(
    IPathInformation* path, IGeolocation* location, IOrientation* target, IOrientation* measured,
    IHeight* height, QDateTime time, IMeasurementOptions* options) {
  if (measured == nullptr || location == nullptr || path == nullptr) return nullptr;
  Connection db(OpenDatabase(false));
  if (!db) return nullptr;
  long long pathKey = -1;
  long long alignmentKey = -1;
  const bool kept = !BeginTransaction(db) || SavePathRows(db, path, location, target, measured, height, time,
                                                          options, &pathKey, &alignmentKey);
  db.Close();
  if (!kept) return nullptr;
  const auto writeThresholds = [&](sqlite3* thresholds) {
    long long thresholdKey = -1;
    const float azimuth = options->AzimuthThreshold();
    const float tilt = options->TiltThreshold();
    const float pathLength = options->PathLengthThreshold();
    return SavePathAlignmentThresholds(thresholds, alignmentKey, &thresholdKey, pathKey, azimuth, tilt,
                                       pathLength);
  };
  if (Description().hasThresholdsFile && !InThresholdsTransaction(writeThresholds)) return nullptr;
  return new PathAlignmentReportData(static_cast<unsigned int>(alignmentKey), path, location, measured,
                                     height, target, time, options);
}
