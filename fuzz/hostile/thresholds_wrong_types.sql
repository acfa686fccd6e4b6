-- Values of other types and out of range.
UPDATE AntennaAlignmentThresholds SET AzimuthThreshold = 9e999, TiltThreshold = 'tight', RollThreshold = x'00';
UPDATE PathAlignmentThresholds SET AzimuthThreshold = 1e300, TiltThreshold = -9e999, PathLengthThreshold = '';
UPDATE PreferencesPathLength SET PathLengthThresholdEnabled = 'maybe', PathLengthThreshold = 9e999;
