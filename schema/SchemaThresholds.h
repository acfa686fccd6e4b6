#pragma once

/// The thresholds file: no version record and no foreign keys. Its rows name rows of the main file by key.
namespace SchemaThresholds {

constexpr char preferencesPathLength[] =
    "PreferencesPathLength ( PathLengthThresholdEnabled INTEGER NOT NULL DEFAULT 0, "
    "PathLengthThreshold DOUBLE NOT NULL DEFAULT 1000.0)";

// SiteIdentifier holds the main file's SiteKey, not the site's name.
constexpr char antennaAlignmentThresholds[] =
    "AntennaAlignmentThresholds ( AntennaThresholdKey INTEGER PRIMARY KEY AUTOINCREMENT, "
    "AntennaAlignmentKey INTEGER NOT NULL, /* unique ID of the site entry */ "
    "SiteIdentifier INTEGER NOT NULL, /* ID of the site */ "
    "AzimuthThreshold DOUBLE, /* Azimuth threshold for reports */ "
    "TiltThreshold DOUBLE, /* Tilt threshold for reports */ "
    "RollThreshold DOUBLE /* Roll threshold for reports */);";

constexpr char pathAlignmentThresholds[] =
    "PathAlignmentThresholds ( PathThresholdKey INTEGER PRIMARY KEY AUTOINCREMENT, "
    "PathAlignmentKey INTEGER NOT NULL, /* ID connecting to the PATH_ALIGNMENT_TABLE */ "
    "PathKey INTEGER NOT NULL, /* key of the path name */ "
    "AzimuthThreshold DOUBLE, /* Azimuth threshold for reports */ "
    "TiltThreshold DOUBLE, /* Tilt threshold for reports */ "
    "PathLengthThreshold DOUBLE /* Path length threshold for reports */);";

}  // namespace SchemaThresholds
