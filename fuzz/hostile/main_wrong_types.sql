-- Every value of another type, or out of range, that the columns let pass.
UPDATE Sites SET SiteIdentifier = x'ff00fe41' WHERE SiteKey = 1;
UPDATE Paths SET PathIdentifier = 'Path' || char(0) || '1' WHERE PathKey = 1;
UPDATE Orientation SET AzimuthDegrees = 9e999, TiltDegrees = -9e999, RollDegrees = 'steep';
UPDATE Geolocation SET LatitudeDegreesNorth = 1e300, LongitudeDegreesEast = x'00', ElevationMeters = '';
UPDATE Height SET HeightType = 9223372036854775807, HeightInMeters = 'tall';
UPDATE AntennaAlignment SET LinuxTimeUTC = -9223372036854775808, TiltInversionEnabled = 'yes',
  RollPrecision = -1, Note = zeroblob(4096);
UPDATE PathAlignment SET LinuxTimeUTC = 4294967295, TiltInversionEnabled = -1, Note = x'c080';
UPDATE Preferences SET DistanceUnits = 99, BluetoothEnabled = -99, BluetoothDisplayName = x'ff', GeoidFormat = 'none', Language = x'80';
UPDATE SiteScreenContents SET SiteIdentifier = x'eda080', TargetTilt = 9e999;
UPDATE PathScreenContents SET PathIdentifier = zeroblob(9), TargetLatitude = 'north';
UPDATE Version SET VersionNumber = 7.9;
