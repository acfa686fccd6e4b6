#pragma once

#include <QDateTime>
#include <QString>

#include "schema/SchemaTexts.h"

class IGeolocation;
class IHeight;
class IOrientation;
struct sqlite3;

/// Row writers and look-ups, each on an open connection. They report success; null arguments are refused, and
/// binds and prepares that fail are logged. A key that is found or made is written through its pointer.
namespace StoreRows {

/// A row of AntennaAlignment. A column that the version lacks is not written.
struct SiteAlignment {
  long long siteKey;
  QString sectorName;
  QString antennaPosition;
  float azimuthOffset;
  long long targetOrientationKey;
  long long measuredOrientationKey;
  long long locationKey;
  long long heightKey;
  QDateTime time;
  bool tiltInversionEnabled;
  QString note;
  int rollPrecision;
};

/// A row of PathAlignment; as SiteAlignment.
struct PathAlignment {
  long long pathKey;
  float azimuthOffset;
  long long pathLocationKey;
  long long targetOrientationKey;
  long long measuredOrientationKey;
  long long locationKey;
  long long heightKey;
  QDateTime time;
  bool tiltInversionEnabled;
  QString note;
};

// An unknown identifier is a success with key 0, and so is a step that fails.
bool FindSite(sqlite3* db, const QString& identifier, long long* siteKey);
bool FindPath(sqlite3* db, const QString& identifier, long long* pathKey);

// The key of the row with that identifier, which is inserted if there is none yet.
bool SaveSite(sqlite3* db, const QString& identifier, long long* siteKey);
bool SavePath(sqlite3* db, const QString& identifier, long long* pathKey);

bool SaveOrientation(sqlite3* db, IOrientation* orientation, long long* key);
bool SaveGeolocation(sqlite3* db, IGeolocation* location, long long* key);
bool SaveHeight(sqlite3* db, IHeight* height, long long* key);

bool SaveSiteAlignment(sqlite3* db, const SchemaTexts& texts, const SiteAlignment& alignment, long long* key);
bool SavePathAlignment(sqlite3* db, const SchemaTexts& texts, const PathAlignment& alignment, long long* key);

bool SaveSiteThresholds(sqlite3* db, long long alignmentKey, long long* thresholdKey, long long siteKey,
                        double azimuthThreshold, double tiltThreshold, double rollThreshold);
bool SavePathThresholds(sqlite3* db, long long alignmentKey, long long* thresholdKey, long long pathKey,
                        float azimuthThreshold, float tiltThreshold, float pathLengthThreshold);

}  // namespace StoreRows
