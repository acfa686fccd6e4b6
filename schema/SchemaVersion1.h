#pragma once

#include "schema/SchemaTexts.h"

// Fragments that later versions build on. A version's column order is always a prefix of the next one's.

// clang-format off
#define ANTENNA_ALIGNMENT_COLUMNS                                                               \
  "AntennaAlignment ( AntennaAlignmentKey INTEGER PRIMARY KEY AUTOINCREMENT, "                  \
  "SiteKey INTEGER NOT NULL, /* ID of the site */ "                                             \
  "SectorName TEXT NOT NULL, /* name of the sector */ "                                         \
  "AntennaPosition TEXT NOT NULL, /* Antenna position indicator */ "                            \
  "AzimuthOffsetDegrees DOUBLE NOT NULL, /* Azimuth offset for this site in degrees */ "        \
  "TargetOrientationKey INTEGER NOT NULL, /* ID of the orientation corresponding to the target */ " \
  "LocationKey INTEGER NOT NULL, /* ID of the geolocation of the site*/ "                       \
  "LinuxTimeUTC INTEGER NOT NULL, /* Seconds since Jan 1 1970 UTC*/ "                           \
  "MeasuredOrientationKey INTEGER NOT NULL, "                                                   \
  "/* ID of the actual measured orientation during the alignment */ "                           \
  "SiteHeightKey INTEGER NOT NULL, /* ID of the height value and type during the alignment*/ "
#define ANTENNA_ALIGNMENT_REFERENCES                                              \
  "FOREIGN KEY(SiteKey) REFERENCES Sites(SiteKey), "                              \
  "FOREIGN KEY(TargetOrientationKey) REFERENCES Orientation(OrientationKey), "    \
  "FOREIGN KEY(MeasuredOrientationKey) REFERENCES Orientation(OrientationKey), "  \
  "FOREIGN KEY(SiteHeightKey) REFERENCES Height(HeightKey) ON DELETE CASCADE"
#define PATH_ALIGNMENT_COLUMNS                                                                      \
  "PathAlignment ( PathAlignmentKey INTEGER PRIMARY KEY AUTOINCREMENT, "                            \
  "PathKey INTEGER NOT NULL, /* key of the path name */ "                                           \
  "SectorName TEXT NOT NULL, /* name of the sector */ "                                             \
  "AntennaPosition TEXT NOT NULL, /* Antenna position indicator */ "                                \
  "AzimuthOffset DOUBLE NOT NULL, /* Azimuth offset applied to this path */ "                       \
  "PathLocationKey INTEGER NOT NULL, /* key of the location information */ "                        \
  "TargetOrientationKey INTEGER NOT NULL, /* ID of the orientation corresponding to the target */ " \
  "LocationKey INTEGER NOT NULL, /* ID of the geolocation of the site*/ "                           \
  "LinuxTimeUTC INTEGER NOT NULL, /* Seconds since Jan 1 1970 UTC*/ "                               \
  "MeasuredOrientationKey INTEGER NOT NULL, "                                                       \
  "/* ID of the actual measured orientation during the alignment */ "                               \
  "SiteHeightKey INTEGER NOT NULL, /* ID of the height value and type during alignment */ "
#define PREFERENCES_TABLE_1                                                                             \
  "Preferences (DistanceUnits INTEGER NOT NULL, AzimuthOffset INTEGER NOT NULL, "                       \
  "DateFormat INTEGER NOT NULL, CoordinateFormat INTEGER NOT NULL, DatumFormat INTEGER NOT NULL, "      \
  "HeightSource INTEGER NOT NULL, AutoShutoffDelay INTEGER NOT NULL, ShowCrosshairs INTEGER NOT NULL, " \
  "ShowTarget INTEGER NOT NULL, CameraEnabled INTEGER NOT NULL, BluetoothEnabled INTEGER NOT NULL, "    \
  "AzimuthThreshold DOUBLE NOT NULL, TiltThreshold DOUBLE NOT NULL, RollThreshold DOUBLE NOT NULL, "    \
  "AccelerometerXOffset DOUBLE NOT NULL, AccelerometerYOffset DOUBLE NOT NULL, "                        \
  "CalibrationDate TEXT NOT NULL, SerialNumber INTEGER NOT NULL, TimeZone INTEGER NOT NULL, "           \
  "SerialNumberValid INTEGER NOT NULL, SoundEnabled INTEGER NOT NULL, "                                 \
  "AccelerometerXGain DOUBLE NOT NULL, DaylightSavingsEnabled INTEGER NOT NULL, "                       \
  "AccelerometerZOffset DOUBLE NOT NULL, AccelerometerZGain DOUBLE NOT NULL"

#define INSERT_ANTENNA_ALIGNMENT                                                                       \
  "INSERT INTO AntennaAlignment (SiteKey, SectorName, AntennaPosition, AzimuthOffsetDegrees, "         \
  "TargetOrientationKey, LocationKey, LinuxTimeUTC, MeasuredOrientationKey, SiteHeightKey"
#define INSERT_PATH_ALIGNMENT                                                                          \
  "INSERT INTO PathAlignment (PathKey, SectorName, AntennaPosition, AzimuthOffset, PathLocationKey, "  \
  "TargetOrientationKey, LocationKey, LinuxTimeUTC, MeasuredOrientationKey, SiteHeightKey"
#define SELECT_SITE_REPORTS                                                                            \
  "SELECT a.AntennaAlignmentKey, s.SiteIdentifier, a.SectorName, a.AntennaPosition, "                  \
  "a.AzimuthOffsetDegrees, t.AzimuthDegrees, t.TiltDegrees, t.RollDegrees, g.LatitudeDegreesNorth, "   \
  "g.LongitudeDegreesEast, g.ElevationMeters, a.LinuxTimeUTC, "                                        \
  "m.AzimuthDegrees,m.TiltDegrees,m.RollDegrees,h.HeightInMeters,h.HeightType"
#define FROM_SITE_REPORTS                                                                              \
  " FROM AntennaAlignment a INNER JOIN Sites s ON s.SiteKey=a.SiteKey AND s.SiteIdentifier=? "         \
  "LEFT JOIN Orientation t ON t.OrientationKey=a.TargetOrientationKey "                                \
  "LEFT JOIN Geolocation g ON g.GeolocationKey=a.LocationKey "                                         \
  "LEFT JOIN Orientation m ON m.OrientationKey=a.MeasuredOrientationKey "                              \
  "LEFT JOIN Height h ON h.HeightKey=a.SiteHeightKey "
#define SELECT_PATH_REPORTS                                                                            \
  "SELECT a.PathAlignmentKey, p.PathIdentifier, a.SectorName, a.AntennaPosition, a.AzimuthOffset, "    \
  "t.AzimuthDegrees, t.TiltDegrees, t.RollDegrees, g.LatitudeDegreesNorth, g.LongitudeDegreesEast, "   \
  "g.ElevationMeters, c.LatitudeDegreesNorth, c.LongitudeDegreesEast, c.ElevationMeters, "             \
  "a.LinuxTimeUTC, m.AzimuthDegrees,m.TiltDegrees,m.RollDegrees, h.HeightInMeters,h.HeightType"
#define FROM_PATH_REPORTS                                                                              \
  " FROM PathAlignment a INNER JOIN Paths p ON p.PathKey=a.PathKey AND p.PathIdentifier=? "            \
  "LEFT JOIN Orientation t ON t.OrientationKey=a.TargetOrientationKey "                                \
  "LEFT JOIN Geolocation g ON g.GeolocationKey=a.LocationKey "                                         \
  "LEFT JOIN Orientation m ON m.OrientationKey=a.MeasuredOrientationKey "                              \
  "LEFT JOIN Geolocation c ON c.GeolocationKey=a.PathLocationKey "                                     \
  "LEFT JOIN Height h ON h.HeightKey=a.SiteHeightKey"

/// The columns of a row that selectSiteReports yields. A version that adds one adds it behind the last.
namespace SiteReportColumn {
enum : int {
  AlignmentKey, SiteIdentifier, SectorName, AntennaPosition, AzimuthOffset,
  TargetAzimuth, TargetTilt, TargetRoll,
  Latitude, Longitude, Elevation, Time,
  MeasuredAzimuth, MeasuredTilt, MeasuredRoll,
  HeightInMeters, HeightType
};
}  // namespace SiteReportColumn

/// The same for selectPathReports.
namespace PathReportColumn {
enum : int {
  AlignmentKey, PathIdentifier, SectorName, AntennaPosition, AzimuthOffset,
  TargetAzimuth, TargetTilt, TargetRoll,
  Latitude, Longitude, Elevation,
  FarEndLatitude, FarEndLongitude, FarEndElevation, Time,
  MeasuredAzimuth, MeasuredTilt, MeasuredRoll,
  HeightInMeters, HeightType
};
}  // namespace PathReportColumn
// clang-format on

// Row 1 is named in the text. A column that is not named falls back to its default on every save.
// clang-format off
#define PREFERENCES_COLUMNS_1                                                                          \
  "DistanceUnits,AzimuthOffset,DateFormat, CoordinateFormat, DatumFormat, HeightSource, "              \
  "AutoShutoffDelay,ShowCrosshairs,ShowTarget, CameraEnabled, BluetoothEnabled, AzimuthThreshold, "    \
  "TiltThreshold, RollThreshold, AccelerometerXOffset, AccelerometerYOffset, CalibrationDate, "        \
  "SerialNumber, TimeZone, SerialNumberValid, SoundEnabled, AccelerometerXGain, "                      \
  "DaylightSavingsEnabled, AccelerometerZOffset, AccelerometerZGain"
#define PREFERENCES_VALUES_1 "?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?"
#define SAVE_PREFERENCES(columns, values) \
  "INSERT OR REPLACE INTO Preferences (RowID," columns " ) VALUES (1," values ")"
#define RESTORE_PREFERENCES(columns) "SELECT " columns " FROM Preferences WHERE (RowID=1)"
// clang-format on

/// The first version. Required behaviour: the far end of a path refers to Orientation, as it does in files in
/// the field.
constexpr SchemaTexts SchemaVersion1() {
  SchemaTexts texts{};
  texts.sites =
      "Sites ( SiteKey INTEGER PRIMARY KEY AUTOINCREMENT, "
      "SiteIdentifier TEXT UNIQUE NOT NULL /* human readable name of the site */)";
  texts.paths =
      "Paths ( PathKey INTEGER PRIMARY KEY AUTOINCREMENT, "
      "PathIdentifier TEXT UNIQUE NOT NULL /* human readable/editable path identifier*/)";
  texts.orientation =
      "Orientation ( OrientationKey INTEGER PRIMARY KEY AUTOINCREMENT, "
      "AzimuthDegrees DOUBLE NOT NULL, /* Azimuth measured in degrees */ "
      "TiltDegrees DOUBLE NOT NULL, /* Tilt measured in degrees */ "
      "RollDegrees DOUBLE NOT NULL /* Roll measured in degrees */)";
  texts.geolocation =
      "Geolocation ( GeolocationKey INTEGER PRIMARY KEY AUTOINCREMENT, "
      "LatitudeDegreesNorth DOUBLE NOT NULL, /* Azimuth measured in degrees */ "
      "LongitudeDegreesEast DOUBLE NOT NULL, /* Longitude measured in degrees */ "
      "ElevationMeters DOUBLE NOT NULL /* Elevation measured in meters */)";
  texts.height =
      "Height ( HeightKey INTEGER PRIMARY KEY AUTOINCREMENT, "
      "HeightInMeters DOUBLE NOT NULL, /* Height measured in meters */ "
      "HeightType INTEGER NOT NULL /* Enumerated height type */)";
  texts.antennaAlignment = ANTENNA_ALIGNMENT_COLUMNS ANTENNA_ALIGNMENT_REFERENCES " );";
  texts.pathAlignment = PATH_ALIGNMENT_COLUMNS
      "FOREIGN KEY(PathKey) REFERENCES Paths(PathKey), "
      "FOREIGN KEY(PathLocationKey) REFERENCES Orientation(OrientationKey), "
      "FOREIGN KEY(TargetOrientationKey) REFERENCES Orientation(OrientationKey), "
      "FOREIGN KEY(MeasuredOrientationKey) REFERENCES Orientation(OrientationKey), "
      "FOREIGN KEY(SiteHeightKey) REFERENCES Height(HeightKey) )";
  texts.preferences = PREFERENCES_TABLE_1 ")";
  texts.siteScreenContents =
      "SiteScreenContents ( SiteIdentifier TEXT NOT NULL, SectorIdentifier TEXT NOT NULL, "
      "AntennaPosition TEXT NOT NULL, TargetTilt DOUBLE NOT NULL, TargetRoll DOUBLE NOT NULL, "
      "TargetAzimuth DOUBLE NOT NULL )";
  texts.pathScreenContents =
      "PathScreenContents ( PathIdentifier TEXT NOT NULL, TargetLatitude DOUBLE NOT NULL, "
      "TargetLongittude DOUBLE NOT NULL, TargetHeight DOUBLE NOT NULL )";
  texts.antennaAlignmentCopy = texts.antennaAlignment;
  texts.pathAlignmentCopy = texts.pathAlignment;
  texts.insertAntennaAlignment = INSERT_ANTENNA_ALIGNMENT " ) VALUES (?,?,?,?,?,?,?,?,?)";
  texts.insertPathAlignment = INSERT_PATH_ALIGNMENT " ) VALUES (?,?,?,?,?,?,?,?,?,?) ";
  texts.selectSiteReports = SELECT_SITE_REPORTS FROM_SITE_REPORTS;
  texts.selectPathReports = SELECT_PATH_REPORTS FROM_PATH_REPORTS;
  texts.savePreferences = SAVE_PREFERENCES(PREFERENCES_COLUMNS_1, PREFERENCES_VALUES_1);
  texts.restorePreferences = RESTORE_PREFERENCES(PREFERENCES_COLUMNS_1);
  return texts;
}
