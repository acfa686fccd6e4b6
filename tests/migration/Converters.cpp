#include "tests/migration/Converters.h"

#include "migration/AllConverters.h"

namespace {

template <typename T>
bool ConvertBy(QString& path) {
  return T().Convert(path);
}

const std::vector<AddedChange> changes = {
    {1, "Preferences",
     "ALTER TABLE TemporaryDB.Preferences ADD AccelerometerCalibrated INTEGER NOT NULL DEFAULT 0",
     "Add accel calibration column to preferences table", false, nullptr},
    {1, "Preferences", "ALTER TABLE TemporaryDB.Preferences ADD GNSSFileCRC INTEGER NOT NULL DEFAULT 0",
     "Add GNSS file CRC column to preferences table", false, nullptr},
    {1, "Preferences",
     "ALTER TABLE TemporaryDB.Preferences ADD TiltIndicatorEnabled INTEGER NOT NULL DEFAULT 1",
     "Add tilt indicator enabled to preferences table", false, nullptr},
    {1, "Preferences",
     "ALTER TABLE TemporaryDB.Preferences ADD RollIndicatorEnabled INTEGER NOT NULL DEFAULT 1",
     "Add roll indicator enabled to preferences table", false, nullptr},
    {2, "AntennaAlignment",
     "ALTER TABLE TemporaryDB.AntennaAlignment ADD TiltInversionEnabled INTEGER NOT NULL DEFAULT 0",
     "Add tilt inversion column to path alignment table", true, nullptr},
    {2, "PathAlignment",
     "ALTER TABLE TemporaryDB.PathAlignment ADD TiltInversionEnabled INTEGER NOT NULL DEFAULT 0",
     "Add accel calibration column to preferences table", true, nullptr},
    {2, "Preferences",
     "ALTER TABLE TemporaryDB.Preferences ADD TiltInversionEnabled INTEGER NOT NULL DEFAULT 0",
     "Add accel calibration column to preferences table", false, nullptr},
    {2, "Preferences",
     "ALTER TABLE TemporaryDB.Preferences ADD BluetoothDisplayName TEXT NOT NULL DEFAULT 'Tarnbeam'",
     "Add bluetooth display name column to preferences table", false, nullptr},
    {3, "AntennaAlignment", "ALTER TABLE TemporaryDB.AntennaAlignment ADD Note TEXT NOT NULL DEFAULT ''",
     "Add notes column to antenna alignment table", true, nullptr},
    {3, "Preferences", "ALTER TABLE TemporaryDB.Preferences ADD Language INTEGER NOT NULL DEFAULT 0",
     "Add language column to preferences table", true, nullptr},
    {4, "AntennaAlignment",
     "ALTER TABLE TemporaryDB.AntennaAlignment ADD RollPrecision INTEGER NOT NULL DEFAULT 0",
     "Add notes column to antenna alignment table", true, nullptr},
    {4, "Preferences", "ALTER TABLE TemporaryDB.Preferences ADD RollPrecision INTEGER NOT NULL DEFAULT 0",
     "Add language column to preferences table", true, nullptr},
    {5, "Height", "UPDATE TemporaryDB.Height SET HeightType = 3 WHERE HeightType=1", "Update Height Table",
     true, "Failed to update GPS HeightType values"},
    {5, "Preferences", "ALTER TABLE TemporaryDB.Preferences ADD GeoidFormat INTEGER NOT NULL DEFAULT 0",
     "Add language column to preferences table", true, nullptr},
    {6, "PathAlignment", "ALTER TABLE TemporaryDB.PathAlignment ADD Note TEXT NOT NULL DEFAULT ''",
     "Add notes column to path alignment table", false, nullptr},
    {6, "Preferences", "ALTER TABLE TemporaryDB.Preferences ADD UserTechId TEXT NOT NULL DEFAULT 'tbm001' ",
     "Add language column to preferences table", true, nullptr},
};

QStringList Ended(const Converter& converter, QStringList lines) {
  if (converter.namesRemoval) lines.append("Success false, deleting temp database");
  return lines;
}

}  // namespace

const char* const selectSiteKeys =
    "SELECT TargetOrientationKey, LocationKey, MeasuredOrientationKey, SiteHeightKey, SiteKey FROM "
    "TemporaryDB.AntennaAlignment";
const char* const selectPathKeys =
    "SELECT  TargetOrientationKey, LocationKey, MeasuredOrientationKey, PathLocationKey, SiteHeightKey, "
    "PathKey FROM TemporaryDB.PathAlignment";

const std::vector<Converter>& Converters() {
  static const std::vector<Converter> converters = [] {
    int source = 0;
    const auto all = AllConverters::Table([&source](auto converter) {
      ++source;
      return Converter{source,      &ConvertBy<typename decltype(converter)::Type>,
                       source >= 5, source >= 2,
                       source >= 2, source >= 5,
                       source >= 2};
    });
    return std::vector<Converter>(all.begin(), all.end());
  }();
  return converters;
}

const Converter& ConverterFrom(int source) { return Converters()[static_cast<std::size_t>(source - 1)]; }

const std::vector<CopiedTableTexts>& CopiedTables() {
  static const char* const noSites = "Unable to create new sites table";
  static const std::vector<CopiedTableTexts> tables = {
      {"Sites", "Create Sites Table", "Copy Sites Table", noSites, nullptr, 0, "UpdateSitesTable"},
      {"Paths", "Create Paths Table", "Copy Paths Table", noSites, nullptr, 0, "UpdatePathsTable"},
      {"Orientation", "Create Orientation Table", "Copy Orientation Table", noSites, nullptr, 0,
       "UpdateOrientationTable"},
      {"Geolocation", "Create Geolocation Table", "Copy Geolocation Table", noSites, nullptr, 0,
       "UpdateGeolocationTable"},
      {"Height", "Create Height Table", "Copy Height Table", noSites, "Unable to copy height data", 5,
       "UpdateHeightTable"},
      {"AntennaAlignment", "Create Antenna Alignment Table", "Copy Antenna Alignment Table", noSites,
       "Unable to create new paths table", 2, "UpdateAntennaAlignmentTabble"},
      {"PathAlignment", "Create Path Alignment Table", "Copy Path Alignment Table",
       "Unable to create new paths table", "Unable to copy paths table contents", 2,
       "UpdatePathAlignmentTable"},
      {"Preferences", "Create Preferences Table", "Copy Preferences Table", noSites,
       "Unable to copy paths table contents", 3, "UpdatePreferencesTable"},
      {"SiteScreenContents", "Create Site Scren Contents Table", "Copy Site Scren Contents Table", noSites,
       nullptr, 0, "UpdateSiteScreenContentsTable"},
      {"PathScreenContents", "Create Path Screen Contents Table", "Copy Path Screen Contents Table", noSites,
       nullptr, 0, "UpdatePathScreenContentsTable"},
  };
  return tables;
}

const CopiedTableTexts& TextsOf(const char* table) {
  for (const CopiedTableTexts& texts : CopiedTables()) {
    if (qstrcmp(texts.table, table) == 0) return texts;
  }
  qFatal("no table %s", table);
}

QStringList CopiedTableTexts::CreateFailure(const Converter& converter) const {
  return {ExecuteFailed(createLabel),
          converter.source == 1 ? "Unable to create new sites table" : createFailure};
}

QStringList CopiedTableTexts::CopyFailure(const Converter& converter) const {
  QStringList lines{ExecuteFailed(copyLabel)};
  if (copyFailure && converter.source >= copyFailureSince) lines.append(copyFailure);
  return lines;
}

std::vector<AddedChange> ChangesOf(const Converter& converter, const char* table) {
  std::vector<AddedChange> found;
  for (const AddedChange& change : changes) {
    if (change.source == converter.source && qstrcmp(change.table, table) == 0) found.push_back(change);
  }
  return found;
}

const std::vector<CleanupTexts>& Cleanups() {
  static const char* const bindFailure = "SQL bind OrientationKey (record delete) failed with ";
  static const std::vector<CleanupTexts> cleanups = {
      {"Orientation",
       "OrientationKey",
       "SELECT OrientationKey FROM TemporaryDB.Orientation",
       "Get orientation keys",
       "Failed to create orientation key collect statement",
       "Unused orientation keys vector length: ",
       "Deleting record with key",
       "DELETE FROM TemporaryDB.Orientation WHERE OrientationKey=?",
       "Orientation key delete",
       bindFailure,
       {"8", "17", "20"}},
      {"Geolocation",
       "GeolocationKey",
       "SELECT GeolocationKey FROM TemporaryDB.Geolocation",
       "Get geolocation keys",
       "Failed to create geolocation key collection statement",
       "Unused geolocation keys vector length: ",
       "Deleting record with key: ",
       "DELETE FROM TemporaryDB.Geolocation WHERE GeolocationKey=?",
       "Geolocation key delete",
       "SQL bind GeolocationKey (geolocation record delete) failed with ",
       {"4", "12", "16"}},
      {"Height",
       "HeightKey",
       "SELECT HeightKey FROM TemporaryDB.Height",
       "Get height keys",
       "Failed to create height key collect statement",
       "Unused height record count: ",
       "Deleting record with key",
       "DELETE FROM TemporaryDB.Height WHERE HeightKey=?",
       "height key delete",
       bindFailure,
       {"5", "12"}},
      {"Sites",
       "SiteKey",
       "SELECT SiteKey FROM TemporaryDB.Sites",
       "Get site keys",
       "Failed to create height key collect statement",
       "Unused site record count: ",
       "Deleting record with key",
       "DELETE FROM TemporaryDB.Sites WHERE SiteKey=?",
       "height key delete",
       bindFailure,
       {"6"}},
      {"Paths",
       "PathKey",
       "SELECT PathKey FROM TemporaryDB.Paths",
       "Get path keys",
       "Failed to create height key collect statement",
       "Unused path record count: ",
       "Deleting record with key",
       "DELETE FROM TemporaryDB.Paths WHERE PathKey=?",
       "path key delete",
       bindFailure,
       {"3", "7"}},
  };
  return cleanups;
}

QStringList CleanupTexts::Lines(const QStringList& keys, bool onlyFirst) const {
  QStringList lines{QStringLiteral("%1 %2").arg(count).arg(keys.size())};
  for (const QString& unusedKey : keys.mid(0, onlyFirst ? 1 : -1)) {
    lines.append(QStringLiteral("%1 %2").arg(deleting, unusedKey));
  }
  return lines;
}

QStringList CleanupLines(const char* upTo) {
  QStringList lines;
  for (const CleanupTexts& texts : Cleanups()) {
    if (qstrcmp(texts.table, upTo) == 0) break;
    lines += texts.Lines(texts.unused);
  }
  return lines;
}

QString ExecuteFailed(const char* label) {
  return QStringLiteral("SQL  %1  failed with  10 : disk I/O error").arg(label);
}

QString PrepareFailed(const char* label) {
  return QStringLiteral("SQL prepare  %1  failed with  10 : disk I/O error").arg(label);
}

QString BindFailed(const char* text) { return QStringLiteral("%1 10 : disk I/O error").arg(text); }

QStringList Aborted(const Converter& converter, const QStringList& lines, const char* step) {
  QStringList ended = lines;
  if (converter.namesSteps) ended.append(QStringLiteral("Aborting conversion, %1 failed").arg(step));
  return Ended(converter, ended);
}

QStringList CheckFailed(const Converter& converter, const QStringList& lines, const char* check) {
  return Ended(converter, lines + QStringList{check});
}
