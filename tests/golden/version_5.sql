-- A main database file as the store of schema version 5 leaves it.
BEGIN;

CREATE TABLE Version ( VersionNumber INTEGER NOT NULL);
CREATE TABLE Sites ( SiteKey INTEGER PRIMARY KEY AUTOINCREMENT, SiteIdentifier TEXT UNIQUE NOT NULL /* human readable name of the site */);
CREATE TABLE Paths ( PathKey INTEGER PRIMARY KEY AUTOINCREMENT, PathIdentifier TEXT UNIQUE NOT NULL /* human readable/editable path identifier*/);
CREATE TABLE Orientation ( OrientationKey INTEGER PRIMARY KEY AUTOINCREMENT, AzimuthDegrees DOUBLE NOT NULL, /* Azimuth measured in degrees */ TiltDegrees DOUBLE NOT NULL, /* Tilt measured in degrees */ RollDegrees DOUBLE NOT NULL /* Roll measured in degrees */);
CREATE TABLE Geolocation ( GeolocationKey INTEGER PRIMARY KEY AUTOINCREMENT, LatitudeDegreesNorth DOUBLE NOT NULL, /* Azimuth measured in degrees */ LongitudeDegreesEast DOUBLE NOT NULL, /* Longitude measured in degrees */ ElevationMeters DOUBLE NOT NULL /* Elevation measured in meters */);
CREATE TABLE Height ( HeightKey INTEGER PRIMARY KEY AUTOINCREMENT, HeightInMeters DOUBLE NOT NULL, /* Height measured in meters */ HeightType INTEGER NOT NULL /* Enumerated height type */);
CREATE TABLE AntennaAlignment ( AntennaAlignmentKey INTEGER PRIMARY KEY AUTOINCREMENT, SiteKey INTEGER NOT NULL, /* ID of the site */ SectorName TEXT NOT NULL, /* name of the sector */ AntennaPosition TEXT NOT NULL, /* Antenna position indicator */ AzimuthOffsetDegrees DOUBLE NOT NULL, /* Azimuth offset for this site in degrees */ TargetOrientationKey INTEGER NOT NULL, /* ID of the orientation corresponding to the target */ LocationKey INTEGER NOT NULL, /* ID of the geolocation of the site*/ LinuxTimeUTC INTEGER NOT NULL, /* Seconds since Jan 1 1970 UTC*/ MeasuredOrientationKey INTEGER NOT NULL, /* ID of the actual measured orientation during the alignment */ SiteHeightKey INTEGER NOT NULL, /* ID of the height value and type during the alignment*/ TiltInversionEnabled INTEGER NOT NULL DEFAULT 0, Note TEXT NOT NULL DEFAULT '', RollPrecision INTEGER NOT NULL DEFAULT 0, FOREIGN KEY(SiteKey) REFERENCES Sites(SiteKey), FOREIGN KEY(TargetOrientationKey) REFERENCES Orientation(OrientationKey), FOREIGN KEY(MeasuredOrientationKey) REFERENCES Orientation(OrientationKey), FOREIGN KEY(SiteHeightKey) REFERENCES Height(HeightKey) ON DELETE CASCADE, FOREIGN KEY(LocationKey) REFERENCES Geolocation(GeolocationKey) );
CREATE TABLE PathAlignment ( PathAlignmentKey INTEGER PRIMARY KEY AUTOINCREMENT, PathKey INTEGER NOT NULL, /* key of the path name */ SectorName TEXT NOT NULL, /* name of the sector */ AntennaPosition TEXT NOT NULL, /* Antenna position indicator */ AzimuthOffset DOUBLE NOT NULL, /* Azimuth offset applied to this path */ PathLocationKey INTEGER NOT NULL, /* key of the location information */ TargetOrientationKey INTEGER NOT NULL, /* ID of the orientation corresponding to the target */ LocationKey INTEGER NOT NULL, /* ID of the geolocation of the site*/ LinuxTimeUTC INTEGER NOT NULL, /* Seconds since Jan 1 1970 UTC*/ MeasuredOrientationKey INTEGER NOT NULL, /* ID of the actual measured orientation during the alignment */ SiteHeightKey INTEGER NOT NULL, /* ID of the height value and type during alignment */ FOREIGN KEY(PathKey) REFERENCES Paths(PathKey), FOREIGN KEY(LocationKey) REFERENCES Geolocation(GeolocationKey), FOREIGN KEY(PathLocationKey) REFERENCES Geolocation(GeolocationKey), FOREIGN KEY(TargetOrientationKey) REFERENCES Orientation(OrientationKey), FOREIGN KEY(MeasuredOrientationKey) REFERENCES Orientation(OrientationKey), FOREIGN KEY(SiteHeightKey) REFERENCES Height(HeightKey) ON DELETE CASCADE );
ALTER TABLE PathAlignment ADD TiltInversionEnabled INTEGER NOT NULL DEFAULT 0;
CREATE TABLE Preferences (DistanceUnits INTEGER NOT NULL, AzimuthOffset INTEGER NOT NULL, DateFormat INTEGER NOT NULL, CoordinateFormat INTEGER NOT NULL, DatumFormat INTEGER NOT NULL, HeightSource INTEGER NOT NULL, AutoShutoffDelay INTEGER NOT NULL, ShowCrosshairs INTEGER NOT NULL, ShowTarget INTEGER NOT NULL, CameraEnabled INTEGER NOT NULL, BluetoothEnabled INTEGER NOT NULL, AzimuthThreshold DOUBLE NOT NULL, TiltThreshold DOUBLE NOT NULL, RollThreshold DOUBLE NOT NULL, AccelerometerXOffset DOUBLE NOT NULL, AccelerometerYOffset DOUBLE NOT NULL, CalibrationDate TEXT NOT NULL, SerialNumber INTEGER NOT NULL, TimeZone INTEGER NOT NULL, SerialNumberValid INTEGER NOT NULL, SoundEnabled INTEGER NOT NULL, AccelerometerXGain DOUBLE NOT NULL, DaylightSavingsEnabled INTEGER NOT NULL, AccelerometerZOffset DOUBLE NOT NULL, AccelerometerZGain DOUBLE NOT NULL, AccelerometerCalibrated INTEGER NOT NULL, GNSSFileCRC INTEGER NOT NULL DEFAULT 0, TiltIndicatorEnabled INTEGER NOT NULL DEFAULT 1, RollIndicatorEnabled INTEGER NOT NULL DEFAULT 1, TiltInversionEnabled INTEGER NOT NULL DEFAULT 0, BluetoothDisplayName TEXT NOT NULL DEFAULT 'Tarnbeam', Language INTEGER NOT NULL DEFAULT 0, RollPrecision INTEGER NOT NULL DEFAULT 0);
CREATE TABLE SiteScreenContents ( SiteIdentifier TEXT NOT NULL, SectorIdentifier TEXT NOT NULL, AntennaPosition TEXT NOT NULL, TargetTilt DOUBLE NOT NULL, TargetRoll DOUBLE NOT NULL, TargetAzimuth DOUBLE NOT NULL );
CREATE TABLE PathScreenContents ( PathIdentifier TEXT NOT NULL, TargetLatitude DOUBLE NOT NULL, TargetLongittude DOUBLE NOT NULL, TargetHeight DOUBLE NOT NULL );

INSERT INTO Version (RowID, VersionNumber) VALUES
  (1, 5);

-- No alignment names site 6.
INSERT INTO Sites (SiteKey, SiteIdentifier) VALUES
  (1, 'Zürich Höhe'),
  (2, 'O''Brien "Hill"'),
  (5, 'Łódź 北'),
  (6, 'Site without alignments');

-- No alignment names paths 3 and 7.
INSERT INTO Paths (PathKey, PathIdentifier) VALUES
  (1, 'Trasse Süd–Nord'),
  (3, 'Path without alignments'),
  (4, 'Θ''path"'),
  (7, 'Another path without alignments');

-- No alignment names orientations 8, 17 and 20 as target or measured.
INSERT INTO Orientation (OrientationKey, AzimuthDegrees, TiltDegrees, RollDegrees) VALUES
  (1, 10.5, -1.25, 0.0),
  (2, 10.75, -1.5, 0.125),
  (3, 120.0, 2.25, -0.5),
  (4, 119.5, 2.5, -0.625),
  (5, 240.25, -3.75, 1.5),
  (6, 240.875, -3.5, 1.75),
  (7, 359.9375, 12.0, -7.25),
  (8, 88.0, 8.125, -8.0),
  (9, 0.0625, 11.5, -7.5),
  (10, 45.0, -45.25, 30.5),
  (11, 181.5, 0.75, -2.0),
  (12, 181.25, 0.5, -2.25),
  (13, 1.375, -0.375, 0.375),
  (14, 1.625, -0.25, 0.25),
  (15, 270.0, 5.5, 15.25),
  (16, 269.625, 5.25, 15.75),
  (17, 170.5, -17.0, 17.5),
  (18, 44.5, -44.75, 31.0),
  (20, 200.5, -20.0, 20.25);

-- No alignment names locations 4, 12 and 16; 8, 10 and 13 are named as PathLocationKey alone.
INSERT INTO Geolocation (GeolocationKey, LatitudeDegreesNorth, LongitudeDegreesEast, ElevationMeters) VALUES
  (1, 47.3768866, 8.541694, 408.5),
  (2, 47.3769012, 8.5416551, 409.25),
  (3, 47.3768123, 8.5417321, 407.75),
  (4, 4.25, -4.5, 4.0),
  (5, -33.8567844, 151.2152967, -2.5),
  (6, 51.7592485, 19.4559833, 219.0),
  (8, 46.5196535, 6.6322734, 495.125),
  (9, 46.2043907, 6.1431577, 375.5),
  (10, 46.519651, 6.632281, 496.25),
  (11, 46.2043888, 6.14316, 376.0),
  (12, 12.5, -12.75, 12.125),
  (13, -1.25e-05, -179.9999875, 8848.5),
  (14, 64.1465819, -21.9426354, 0.0),
  (16, 16.0, -16.25, 1600.75);

-- No alignment names heights 5 and 12.
INSERT INTO Height (HeightKey, HeightInMeters, HeightType) VALUES
  (1, 25.5, 1),
  (2, 26.25, 0),
  (3, 27.125, 2),
  (4, 30.0, 3),
  (5, 5.5, 1),
  (6, 61.75, 1),
  (8, 80.25, 1),
  (9, 9.875, 2),
  (10, -1.5, 0),
  (12, 12.0, 3);

INSERT INTO AntennaAlignment (AntennaAlignmentKey, SiteKey, SectorName, AntennaPosition, AzimuthOffsetDegrees, TargetOrientationKey, LocationKey, LinuxTimeUTC, MeasuredOrientationKey, SiteHeightKey, TiltInversionEnabled, Note, RollPrecision) VALUES
  (1, 1, 'Sektor Ä', 'A1', -1.5, 1, 1, 1400000001, 2, 1, 1, 'first line
second line

Über "alles" & it''s done', 0),
  (2, 1, 'Sektor Ä', 'A1', 0.25, 3, 2, 1400000102, 4, 2, 0, '', 1),
  (3, 1, 'β', 'Mast "B"/2', 0.0, 5, 3, 1400000203, 6, 3, 1, 'ß | 測定', 0),
  (5, 2, 'it''s sector 1', 'C3', 359.5, 7, 5, 1500000305, 9, 4, 0, 'trailing line break
', 1),
  (7, 5, '北', 'Dach', -0.125, 10, 6, 2147483647, 18, 6, 1, 'x', 1);

INSERT INTO PathAlignment (PathAlignmentKey, PathKey, SectorName, AntennaPosition, AzimuthOffset, PathLocationKey, TargetOrientationKey, LocationKey, LinuxTimeUTC, MeasuredOrientationKey, SiteHeightKey, TiltInversionEnabled) VALUES
  (1, 1, 'ZZZ', 'ZZZ', 3.5, 8, 11, 9, 1400010001, 12, 8, 1),
  (2, 1, 'ZZZ', 'ZZZ', -4.75, 10, 13, 11, 1400010102, 14, 9, 0),
  (4, 4, 'Sektor Ω', 'P''4"', 0.625, 13, 15, 14, 1500010204, 16, 10, 1);

INSERT INTO Preferences (RowID, DistanceUnits, AzimuthOffset, DateFormat, CoordinateFormat, DatumFormat, HeightSource, AutoShutoffDelay, ShowCrosshairs, ShowTarget, CameraEnabled, BluetoothEnabled, AzimuthThreshold, TiltThreshold, RollThreshold, AccelerometerXOffset, AccelerometerYOffset, CalibrationDate, SerialNumber, TimeZone, SerialNumberValid, SoundEnabled, AccelerometerXGain, DaylightSavingsEnabled, AccelerometerZOffset, AccelerometerZGain, AccelerometerCalibrated, GNSSFileCRC, TiltIndicatorEnabled, RollIndicatorEnabled, TiltInversionEnabled, BluetoothDisplayName, Language, RollPrecision) VALUES
  (1, 101, 102, 103, 104, 105, 106, 107, 108, 109, 110, 111, 112.25, 113.5, 114.75, -0.015, 0.016, '2019-03-07 ''Zürich''', 1180042, 119, 120, 121, 1.0225, 123, -0.024, 0.9875, 126, -2023406815, 128, 129, 130, 'Peiler „Nord“', 132, 133);

INSERT INTO SiteScreenContents (RowID, SiteIdentifier, SectorIdentifier, AntennaPosition, TargetTilt, TargetRoll, TargetAzimuth) VALUES
  (1, 'Zürich "neu"', 'Sektor Ä', 'A''1', -2.5, 0.75, 123.25);

INSERT INTO PathScreenContents (RowID, PathIdentifier, TargetLatitude, TargetLongittude, TargetHeight) VALUES
  (1, 'Trasse ''Süd''', -33.8567844, 151.2152967, -12.5);

-- Keys that were given once and whose rows are gone.
UPDATE sqlite_sequence SET seq = 8 WHERE name = 'Sites';
UPDATE sqlite_sequence SET seq = 8 WHERE name = 'Paths';
UPDATE sqlite_sequence SET seq = 22 WHERE name = 'Orientation';
UPDATE sqlite_sequence SET seq = 17 WHERE name = 'Geolocation';
UPDATE sqlite_sequence SET seq = 13 WHERE name = 'Height';
UPDATE sqlite_sequence SET seq = 9 WHERE name = 'AntennaAlignment';
UPDATE sqlite_sequence SET seq = 6 WHERE name = 'PathAlignment';

COMMIT;
