#pragma once

// The SQL that the contenders share: what the library runs, in its order. Longer texts come from schema/.
namespace Statements {

struct Owner {
  const char* find;
  const char* insert;
};

constexpr Owner site{"SELECT  SiteKey  FROM Sites WHERE (SiteIdentifier=?)",
                     "INSERT INTO Sites (SiteIdentifier) VALUES (?)"};
constexpr Owner path{"SELECT  PathKey  FROM Paths WHERE (PathIdentifier=?)",
                     "INSERT INTO Paths (PathIdentifier) VALUES (?)"};

constexpr char insertVersion[] = "INSERT OR REPLACE INTO Version (rowID,VersionNumber) values (1,?)";
constexpr char createVersion[] = "CREATE TABLE IF NOT EXISTS Version ( VersionNumber INTEGER NOT NULL)";
constexpr char insertOrientation[] =
    "INSERT INTO Orientation (AzimuthDegrees,TiltDegrees,RollDegrees) VALUES (?,?,?)";
constexpr char insertGeolocation[] =
    "INSERT INTO Geolocation (LatitudeDegreesNorth,LongitudeDegreesEast,ElevationMeters) VALUES (?,?,?)";
constexpr char insertHeight[] = "INSERT INTO Height (HeightInMeters,HeightType) VALUES (?,?)";
constexpr char insertSiteThresholds[] =
    "INSERT INTO AntennaAlignmentThresholds (AntennaAlignmentKey, SiteIdentifier, AzimuthThreshold, "
    "TiltThreshold, RollThreshold) VALUES (?,?,?,?,?)";
constexpr char insertPathThresholds[] =
    "INSERT INTO PathAlignmentThresholds (PathAlignmentKey, PathKey, AzimuthThreshold, "
    "TiltThreshold, PathLengthThreshold ) VALUES (?,?,?,?,?) ";

constexpr char selectSiteThresholds[] =
    "SELECT AntennaAlignmentKey, SiteIdentifier, AzimuthThreshold, TiltThreshold, RollThreshold FROM "
    "AntennaAlignmentThresholds WHERE (SiteIdentifier = ?)";
constexpr char selectSites[] = "SELECT SiteIdentifier FROM Sites";

constexpr char selectKeysOfSite[] =
    "SELECT TargetOrientationKey, MeasuredOrientationKey, LocationKey, SiteHeightKey FROM "
    "AntennaAlignment WHERE SiteKey=?";
constexpr char selectKeysOfReport[] =
    "SELECT TargetOrientationKey, MeasuredOrientationKey, LocationKey, SiteHeightKey FROM "
    "AntennaAlignment WHERE AntennaAlignmentKey=?";
constexpr char deleteReportsOfSite[] = "DELETE FROM AntennaAlignment WHERE SiteKey = ?";
constexpr char deleteSite[] = "DELETE FROM Sites WHERE SiteKey = ?";
constexpr char deleteThresholdsOfSite[] = "DELETE FROM AntennaAlignmentThresholds WHERE SiteIdentifier = ?";
constexpr char deleteReport[] = "DELETE FROM AntennaAlignment WHERE SiteKey = ? AND AntennaAlignmentKey = ?";
constexpr char deleteThresholds[] =
    "DELETE FROM AntennaAlignmentThresholds WHERE SiteIdentifier = ? AND AntennaAlignmentKey = ?";
constexpr char deleteOrientation[] = "DELETE FROM Orientation WHERE OrientationKey=?";
constexpr char deleteGeolocation[] = "DELETE FROM Geolocation WHERE GeolocationKey=?";
constexpr char deleteHeight[] = "DELETE FROM Height WHERE HeightKey=?";

constexpr char savePathLength[] =
    "INSERT OR REPLACE INTO PreferencesPathLength (RowID, PathLengthThresholdEnabled, "
    "PathLengthThreshold ) VALUES (1,?,?)";
constexpr char restorePathLength[] =
    "SELECT PathLengthThresholdEnabled, PathLengthThreshold FROM PreferencesPathLength WHERE (RowID=1)";
/// How each column of a preferences row is bound and read: integer, real or text. The column marked 's' is
/// an integer that is saved and never restored.
constexpr char preferenceKinds[] = "isiiiiiiiiidddddtiiiididdiiiiitiit";
constexpr char pathLengthKinds[] = "id";
constexpr char siteScreenKinds[] = "tttddd";
constexpr char pathScreenKinds[] = "tddd";
constexpr char reportKinds[] = "itttdddddddiddddiiti";

constexpr char saveSiteScreen[] =
    "INSERT OR REPLACE INTO SiteScreenContents (RowID, SiteIdentifier, SectorIdentifier, "
    "AntennaPosition, TargetTilt, TargetRoll, TargetAzimuth ) VALUES (1,?,?,?,?,?,?)";
constexpr char savePathScreen[] =
    "INSERT OR REPLACE INTO PathScreenContents (RowID, PathIdentifier, TargetLatitude, "
    "TargetLongittude, TargetHeight ) VALUES (1,?,?,?,?)";
constexpr char restoreSiteScreen[] =
    "SELECT SiteIdentifier,SectorIdentifier,AntennaPosition, TargetTilt, TargetRoll, TargetAzimuth "
    "FROM SiteScreenContents WHERE (RowID=1)";
constexpr char restorePathScreen[] =
    "SELECT PathIdentifier, TargetLatitude, TargetLongittude, TargetHeight FROM PathScreenContents "
    "WHERE (RowID=1)";

}  // namespace Statements
