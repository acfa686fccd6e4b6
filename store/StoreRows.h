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

/// The rows that every alignment refers to.
struct PartKeys {
  long long targetOrientation = -1;
  long long measuredOrientation = -1;
  long long location = -1;
  long long height = -1;
};

/// What rows of AntennaAlignment and PathAlignment have in common. A column that the version lacks is not
/// written.
struct Alignment {
  long long ownerKey;
  float azimuthOffset;
  PartKeys parts;
  QDateTime time;
  bool tiltInversionEnabled;
  QString note;
};
struct SiteAlignment {
  QString sectorName;
  QString antennaPosition;
  Alignment common;
  int rollPrecision;
};
struct PathAlignment {
  Alignment common;
  long long pathLocationKey;
};

// Required behaviour: an unknown identifier is a success with key 0, and so is a step that fails.
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
