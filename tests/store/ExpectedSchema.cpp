#include "tests/store/ExpectedSchema.h"

#include <gtest/gtest.h>

#include <QStringList>

namespace {

struct PreferencesColumn {
  const char* name;
  const char* declaration;
  unsigned int firstVersion;
};

const PreferencesColumn preferencesColumns[] = {
    {"DistanceUnits", "INTEGER NOT NULL", 1},
    {"AzimuthOffset", "INTEGER NOT NULL", 1},
    {"DateFormat", "INTEGER NOT NULL", 1},
    {"CoordinateFormat", "INTEGER NOT NULL", 1},
    {"DatumFormat", "INTEGER NOT NULL", 1},
    {"HeightSource", "INTEGER NOT NULL", 1},
    {"AutoShutoffDelay", "INTEGER NOT NULL", 1},
    {"ShowCrosshairs", "INTEGER NOT NULL", 1},
    {"ShowTarget", "INTEGER NOT NULL", 1},
    {"CameraEnabled", "INTEGER NOT NULL", 1},
    {"BluetoothEnabled", "INTEGER NOT NULL", 1},
    {"AzimuthThreshold", "DOUBLE NOT NULL", 1},
    {"TiltThreshold", "DOUBLE NOT NULL", 1},
    {"RollThreshold", "DOUBLE NOT NULL", 1},
    {"AccelerometerXOffset", "DOUBLE NOT NULL", 1},
    {"AccelerometerYOffset", "DOUBLE NOT NULL", 1},
    {"CalibrationDate", "TEXT NOT NULL", 1},
    {"SerialNumber", "INTEGER NOT NULL", 1},
    {"TimeZone", "INTEGER NOT NULL", 1},
    {"SerialNumberValid", "INTEGER NOT NULL", 1},
    {"SoundEnabled", "INTEGER NOT NULL", 1},
    {"AccelerometerXGain", "DOUBLE NOT NULL", 1},
    {"DaylightSavingsEnabled", "INTEGER NOT NULL", 1},
    {"AccelerometerZOffset", "DOUBLE NOT NULL", 1},
    {"AccelerometerZGain", "DOUBLE NOT NULL", 1},
    {"AccelerometerCalibrated", "INTEGER NOT NULL", 2},
    {"GNSSFileCRC", "INTEGER NOT NULL DEFAULT 0", 2},
    {"TiltIndicatorEnabled", "INTEGER NOT NULL DEFAULT 1", 2},
    {"RollIndicatorEnabled", "INTEGER NOT NULL DEFAULT 1", 2},
    {"TiltInversionEnabled", "INTEGER NOT NULL DEFAULT 0", 3},
    {"BluetoothDisplayName", "TEXT NOT NULL DEFAULT 'Tarnbeam'", 3},
    {"Language", "INTEGER NOT NULL DEFAULT 0", 4},
    {"RollPrecision", "INTEGER NOT NULL DEFAULT 0", 5},
    {"GeoidFormat", "INTEGER NOT NULL DEFAULT 0", 6},
    {"UserTechId", "TEXT NOT NULL DEFAULT 'tbm001'", 7},
};

QString PreferencesStatement(unsigned int version) {
  QStringList columns;
  for (const PreferencesColumn& column : preferencesColumns) {
    if (column.firstVersion <= version) {
      columns.append(QLatin1String(column.name) + QLatin1Char(' ') + QLatin1String(column.declaration));
    }
  }
  return QStringLiteral("CREATE TABLE IF NOT EXISTS Preferences (") + columns.join(QStringLiteral(", ")) +
         QLatin1Char(')');
}

// Replaces what must occur exactly once.
void Replace(QString* text, const char* before, const char* after) {
  EXPECT_EQ(text->count(QLatin1String(before)), 1) << before;
  text->replace(QLatin1String(before), QLatin1String(after));
}

// A column that is added later comes after the last declared one, in front of its comment.
void AddTiltInversion(QString* statement) {
  Replace(statement, "SiteHeightKey INTEGER NOT NULL, ",
          "SiteHeightKey INTEGER NOT NULL, TiltInversionEnabled INTEGER NOT NULL DEFAULT 0, ");
}

void TakeBackAntennaAlignment(QString* statement, unsigned int version) {
  if (version < 5) Replace(statement, "RollPrecision INTEGER NOT NULL DEFAULT 0, ", "");
  if (version < 4) {
    Replace(statement, "Note TEXT NOT NULL DEFAULT '', ", "");
    Replace(statement, "TiltInversionEnabled INTEGER NOT NULL DEFAULT 0, ", "");
  }
  if (version == 3) AddTiltInversion(statement);
  if (version < 3) {
    Replace(statement, ", FOREIGN KEY(LocationKey) REFERENCES Geolocation(GeolocationKey)", "");
  }
}

void TakeBackPathAlignment(QString* statement, unsigned int version) {
  if (version < 7) {
    Replace(statement,
            "TiltInversionEnabled INTEGER NOT NULL DEFAULT 0, "
            "/* Flag tracking whether tilt inversio is enabled*/ ",
            "");
    Replace(statement, "Note TEXT NOT NULL DEFAULT '', /* user note note */ ", "");
  }
  if (version >= 3 && version < 7) AddTiltInversion(statement);
  if (version < 3) {
    Replace(statement, "FOREIGN KEY(LocationKey) REFERENCES Geolocation(GeolocationKey), ", "");
    Replace(statement, "FOREIGN KEY(PathLocationKey) REFERENCES Geolocation(GeolocationKey)",
            "FOREIGN KEY(PathLocationKey) REFERENCES Orientation(OrientationKey)");
    Replace(statement, " ON DELETE CASCADE", "");
  }
}

}  // namespace

QString StoredText(const QString& statement) {
  QString text = statement;
  Replace(&text, "CREATE TABLE IF NOT EXISTS ", "CREATE TABLE ");
  if (text.endsWith(QLatin1Char(';'))) text.chop(1);
  return text;
}

std::vector<CreatedTable> MainTables() {
  return {
      {"Version", "CreateVersionTable",
       "CREATE TABLE IF NOT EXISTS Version ( VersionNumber INTEGER NOT NULL)"},
      {"Sites", "Create Sites Table",
       "CREATE TABLE IF NOT EXISTS Sites ( SiteKey INTEGER PRIMARY KEY AUTOINCREMENT, "
       "SiteIdentifier TEXT UNIQUE NOT NULL /* human readable name of the site */)"},
      {"Paths", "Create Path Table",
       "CREATE TABLE IF NOT EXISTS Paths ( PathKey INTEGER PRIMARY KEY AUTOINCREMENT, "
       "PathIdentifier TEXT UNIQUE NOT NULL /* human readable/editable path identifier*/)"},
      {"Orientation", "Create Orientation Table",
       "CREATE TABLE IF NOT EXISTS Orientation ( OrientationKey INTEGER PRIMARY KEY AUTOINCREMENT, "
       "AzimuthDegrees DOUBLE NOT NULL, /* Azimuth measured in degrees */ TiltDegrees DOUBLE NOT "
       "NULL, /* Tilt measured in degrees */ RollDegrees DOUBLE NOT NULL /* Roll measured in "
       "degrees */)"},
      {"Geolocation", "Create Geolocation Table",
       "CREATE TABLE IF NOT EXISTS Geolocation ( GeolocationKey INTEGER PRIMARY KEY AUTOINCREMENT, "
       "LatitudeDegreesNorth DOUBLE NOT NULL, /* Azimuth measured in degrees */ "
       "LongitudeDegreesEast DOUBLE NOT NULL, /* Longitude measured in degrees */ ElevationMeters "
       "DOUBLE NOT NULL /* Elevation measured in meters */)"},
      {"Height", "Create Height Table",
       "CREATE TABLE IF NOT EXISTS Height ( HeightKey INTEGER PRIMARY KEY AUTOINCREMENT, "
       "HeightInMeters DOUBLE NOT NULL, /* Height measured in meters */ HeightType INTEGER NOT NULL "
       "/* Enumerated height type */)"},
      {"AntennaAlignment", "Create Antenna Alignment Table",
       "CREATE TABLE IF NOT EXISTS AntennaAlignment ( AntennaAlignmentKey INTEGER PRIMARY KEY "
       "AUTOINCREMENT, SiteKey INTEGER NOT NULL, /* ID of the site */ SectorName TEXT NOT NULL, /* "
       "name of the sector */ AntennaPosition TEXT NOT NULL, /* Antenna position indicator */ "
       "AzimuthOffsetDegrees DOUBLE NOT NULL, /* Azimuth offset for this site in degrees */ "
       "TargetOrientationKey INTEGER NOT NULL, /* ID of the orientation corresponding to the target "
       "*/ LocationKey INTEGER NOT NULL, /* ID of the geolocation of the site*/ LinuxTimeUTC "
       "INTEGER NOT NULL, /* Seconds since Jan 1 1970 UTC*/ MeasuredOrientationKey INTEGER NOT "
       "NULL, /* ID of the actual measured orientation during the alignment */ SiteHeightKey "
       "INTEGER NOT NULL, /* ID of the height value and type during the alignment*/ "
       "TiltInversionEnabled INTEGER NOT NULL DEFAULT 0, Note TEXT NOT NULL DEFAULT '', "
       "RollPrecision INTEGER NOT NULL DEFAULT 0, FOREIGN KEY(SiteKey) REFERENCES Sites(SiteKey), "
       "FOREIGN KEY(TargetOrientationKey) REFERENCES Orientation(OrientationKey), FOREIGN "
       "KEY(MeasuredOrientationKey) REFERENCES Orientation(OrientationKey), FOREIGN "
       "KEY(SiteHeightKey) REFERENCES Height(HeightKey) ON DELETE CASCADE, FOREIGN KEY(LocationKey) "
       "REFERENCES Geolocation(GeolocationKey) );"},
      {"PathAlignment", "Create Path Alignment Table",
       "CREATE TABLE IF NOT EXISTS PathAlignment ( PathAlignmentKey INTEGER PRIMARY KEY "
       "AUTOINCREMENT, PathKey INTEGER NOT NULL, /* key of the path name */ SectorName TEXT NOT "
       "NULL, /* name of the sector */ AntennaPosition TEXT NOT NULL, /* Antenna position indicator "
       "*/ AzimuthOffset DOUBLE NOT NULL, /* Azimuth offset applied to this path */ PathLocationKey "
       "INTEGER NOT NULL, /* key of the location information */ TargetOrientationKey INTEGER NOT "
       "NULL, /* ID of the orientation corresponding to the target */ LocationKey INTEGER NOT NULL, "
       "/* ID of the geolocation of the site*/ LinuxTimeUTC INTEGER NOT NULL, /* Seconds since Jan "
       "1 1970 UTC*/ MeasuredOrientationKey INTEGER NOT NULL, /* ID of the actual measured "
       "orientation during the alignment */ SiteHeightKey INTEGER NOT NULL, /* ID of the height "
       "value and type during alignment */ TiltInversionEnabled INTEGER NOT NULL DEFAULT 0, /* Flag "
       "tracking whether tilt inversio is enabled*/ Note TEXT NOT NULL DEFAULT '', /* user note "
       "note */ FOREIGN KEY(PathKey) REFERENCES Paths(PathKey), FOREIGN KEY(LocationKey) REFERENCES "
       "Geolocation(GeolocationKey), FOREIGN KEY(PathLocationKey) REFERENCES "
       "Geolocation(GeolocationKey), FOREIGN KEY(TargetOrientationKey) REFERENCES "
       "Orientation(OrientationKey), FOREIGN KEY(MeasuredOrientationKey) REFERENCES "
       "Orientation(OrientationKey), FOREIGN KEY(SiteHeightKey) REFERENCES Height(HeightKey) ON "
       "DELETE CASCADE )"},
      {"Preferences", "Create Preferences Table", PreferencesStatement(7)},
      {"SiteScreenContents", "Create Site Screen Contents Table",
       "CREATE TABLE IF NOT EXISTS SiteScreenContents ( SiteIdentifier TEXT NOT NULL, "
       "SectorIdentifier TEXT NOT NULL, AntennaPosition TEXT NOT NULL, TargetTilt DOUBLE NOT NULL, "
       "TargetRoll DOUBLE NOT NULL, TargetAzimuth DOUBLE NOT NULL )"},
      {"PathScreenContents", "Create Path Screen Contents Table",
       "CREATE TABLE IF NOT EXISTS PathScreenContents ( PathIdentifier TEXT NOT NULL, "
       "TargetLatitude DOUBLE NOT NULL, TargetLongittude DOUBLE NOT NULL, TargetHeight DOUBLE NOT "
       "NULL )"},
  };
}

std::vector<CreatedTable> ThresholdTables() {
  return {
      {"PreferencesPathLength", "Create Preferences with Path Length Table",
       "CREATE TABLE IF NOT EXISTS PreferencesPathLength ( PathLengthThresholdEnabled INTEGER NOT "
       "NULL DEFAULT 0, PathLengthThreshold DOUBLE NOT NULL DEFAULT 1000.0)"},
      {"AntennaAlignmentThresholds", "Create Antenna Thresholds Table",
       "CREATE TABLE IF NOT EXISTS AntennaAlignmentThresholds ( AntennaThresholdKey INTEGER PRIMARY "
       "KEY AUTOINCREMENT, AntennaAlignmentKey INTEGER NOT NULL, /* unique ID of the site entry */ "
       "SiteIdentifier INTEGER NOT NULL, /* ID of the site */ AzimuthThreshold DOUBLE, /* Azimuth "
       "threshold for reports */ TiltThreshold DOUBLE, /* Tilt threshold for reports */ "
       "RollThreshold DOUBLE /* Roll threshold for reports */);"},
      {"PathAlignmentThresholds", "Create Path Thresholds Table",
       "CREATE TABLE IF NOT EXISTS PathAlignmentThresholds ( PathThresholdKey INTEGER PRIMARY KEY "
       "AUTOINCREMENT, PathAlignmentKey INTEGER NOT NULL, /* ID connecting to the "
       "PATH_ALIGNMENT_TABLE */ PathKey INTEGER NOT NULL, /* key of the path name */ "
       "AzimuthThreshold DOUBLE, /* Azimuth threshold for reports */ TiltThreshold DOUBLE, /* Tilt "
       "threshold for reports */ PathLengthThreshold DOUBLE /* Path length threshold for reports "
       "*/);"},
  };
}

std::vector<CreatedTable> MainTables(unsigned int version) {
  std::vector<CreatedTable> tables = MainTables();
  for (CreatedTable& table : tables) {
    if (table.name == QLatin1String("AntennaAlignment")) TakeBackAntennaAlignment(&table.statement, version);
    if (table.name == QLatin1String("PathAlignment")) TakeBackPathAlignment(&table.statement, version);
    if (table.name == QLatin1String("Preferences")) table.statement = PreferencesStatement(version);
  }
  return tables;
}
